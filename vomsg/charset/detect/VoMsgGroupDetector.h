// A detector made of detectors: it hands each chunk to its members, drops those that are out, and reports what the
// first member that finds its charset has found. Among members that find in the same chunk the order of members
// decides, never their confidence.
#pragma once

#include <vector>

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"

class VoMsgGroupDetector;

class VOMSG_API VoMsgGroupDetectorSession : public VoMsgDetectorSession {
 public:
  // A session of each member, in their order. Throws std::bad_alloc.
  explicit VoMsgGroupDetectorSession(VoMsgGroupDetector* group);
  ~VoMsgGroupDetectorSession() override;

  // Gives every member still in play the chunk. Stays without effect on a choice once made.
  void feedMembers(const char* data, unsigned length);
  // The state becomes kNotMe when nothing is decided and no member is left. Returns the state.
  int calculateState();
  // Makes `session` the group's choice and the state kFound; refused with -1 when it is null or the state is not
  // kDetecting. Else 0.
  int setPrefSession(VoMsgDetectorSession* session);
  VoMsgDetectorSession* getPrefSession() const { return prefSession; }  // null until one is found
  const std::vector<VoMsgDetectorSession*>& getSessions() const { return sessions; }

 private:
  void drop(VoMsgDetectorSession* session);

  std::vector<VoMsgDetectorSession*> sessions;  // owned: the members still in play, in their order
  VoMsgDetectorSession* prefSession = nullptr;  // one of `sessions`, or `kept`
  VoMsgDetectorSession* kept = nullptr;         // owned: the choice, should it leave the list afterwards
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

  const std::vector<VoMsgCharSetDetector*>& getMembers() const { return members; }

 protected:
  // Takes `member` over. Throws std::bad_alloc.
  void addMember(VoMsgCharSetDetector* member);

 private:
  std::vector<VoMsgCharSetDetector*> members;  // owned
};
