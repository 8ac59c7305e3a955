// A detector made of detectors: it hands each chunk to its members, drops those that are out, and reports what the
// first member that finds its charset has found. Among members that find in the same chunk the order of members
// decides, never their confidence: so with the first find the choice is made, and nobody else is asked.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"

class VoMsgGroupDetector;

class VOMSG_API VoMsgGroupDetectorSession : public VoMsgDetectorSession {
 public:
  // A session of each member, in their order, made when the member's turn comes: mostly an earlier one decides.
  explicit VoMsgGroupDetectorSession(VoMsgGroupDetector* group);
  ~VoMsgGroupDetectorSession() override;

  // Gives the members still in play the chunk, until one has found its charset. Throws std::bad_alloc.
  void feedMembers(const char* data, unsigned length);
  // The state becomes kNotMe when nothing is decided and no member is left. Returns the state.
  int calculateState();
  // Makes `session` the group's choice and the state kFound; refused with -1 when it is null or the state is not
  // kDetecting. Else 0.
  int setPrefSession(VoMsgDetectorSession* session);
  VoMsgDetectorSession* getPrefSession() const { return prefSession; }  // null until one is found
  // The members still in play, in their order. Throws std::bad_alloc.
  const std::vector<std::unique_ptr<VoMsgDetectorSession>>& getSessions();

 private:
  bool addNext();

  std::vector<std::unique_ptr<VoMsgDetectorSession>> sessions;
  VoMsgDetectorSession* prefSession = nullptr;  // one of `sessions`
  std::size_t mAdded = 0;                       // members that got their session
};

class VOMSG_API VoMsgGroupDetector : public VoMsgCharSetDetector {
 public:
  ~VoMsgGroupDetector() override;

  // A null session gives null. The base does what all groups do with the chunk once they have prepared it.
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override = 0;
  const char* getCharSetName(VoMsgDetectorSession* session) override;  // of the choice
  VoMsgDetectorSession* createSession() override;
  // 0 unless the state is kFound; then that of the choice, without one the greatest of the members.
  float getConfidence(VoMsgDetectorSession* session) override;

  const std::vector<std::unique_ptr<VoMsgCharSetDetector>>& getMembers() const { return members; }

 protected:
  void addMember(std::unique_ptr<VoMsgCharSetDetector> member);  // throws std::bad_alloc

 private:
  std::vector<std::unique_ptr<VoMsgCharSetDetector>> members;
};
