#include "vomsg/charset/detect/VoMsgGroupDetector.h"

#include <algorithm>
#include <memory>

#include "vomsg/foundation/VoMsgGuard.h"

VoMsgGroupDetectorSession::VoMsgGroupDetectorSession(VoMsgGroupDetector* group) : VoMsgDetectorSession(group) {
  sessions.reserve(group->getMembers().size());
  for (VoMsgCharSetDetector* member : group->getMembers())
    if (VoMsgDetectorSession* const session = member->createSession()) sessions.push_back(session);
}

VoMsgGroupDetectorSession::~VoMsgGroupDetectorSession() {
  for (VoMsgDetectorSession* session : sessions) delete session;
  delete kept;
}

void VoMsgGroupDetectorSession::feedMembers(const char* data, unsigned length) {
  std::size_t stay = 0;
  for (VoMsgDetectorSession* const session : sessions) {
    VoMsgDetectorSession* const next = session->getDetector()->handleData(data, length, session);
    if (next != session) drop(session);
    if (!next) continue;
    if (next->getState() == kNotMe || next->getState() == kError) {
      drop(next);
      continue;
    }
    sessions[stay++] = next;
    // A rival with more confidence is offered too, and refused like all others: the choice is made once.
    const bool isBeaten = getState() == kFound && prefSession && prefSession->getConfidence() >= next->getConfidence();
    if (next->getState() == kFound && !isBeaten) setPrefSession(next);
  }
  sessions.resize(stay);
}

// The name that the group reports belongs to its choice, so that one stays although it is no longer asked.
void VoMsgGroupDetectorSession::drop(VoMsgDetectorSession* session) {
  if (session == prefSession)
    kept = session;
  else
    delete session;
}

int VoMsgGroupDetectorSession::calculateState() {
  if (getState() == kDetecting && sessions.empty()) setState(kNotMe);
  return getState();
}

int VoMsgGroupDetectorSession::setPrefSession(VoMsgDetectorSession* session) {
  if (!session || getState() != kDetecting) return -1;
  prefSession = session;
  setState(kFound);
  return 0;
}

VoMsgGroupDetector::~VoMsgGroupDetector() {
  for (VoMsgCharSetDetector* member : members) delete member;
}

VoMsgDetectorSession* VoMsgGroupDetector::handleData(const char* data, unsigned length, VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  auto* const group = static_cast<VoMsgGroupDetectorSession*>(session);
  group->feedMembers(data, length);
  group->calculateState();
  return group;
}

const char* VoMsgGroupDetector::getCharSetName(VoMsgDetectorSession* session) {
  auto* const group = static_cast<VoMsgGroupDetectorSession*>(session);
  return group && group->getPrefSession() ? group->getPrefSession()->getCharSet() : nullptr;
}

VoMsgDetectorSession* VoMsgGroupDetector::createSession() {
  return vomsg::detail::guardedOr<VoMsgDetectorSession*>(nullptr, [&] { return new VoMsgGroupDetectorSession(this); });
}

float VoMsgGroupDetector::getConfidence(VoMsgDetectorSession* session) {
  auto* const group = static_cast<VoMsgGroupDetectorSession*>(session);
  if (!group || group->getState() != VoMsgDetectorSession::kFound) return 0.0f;
  if (group->getPrefSession()) return group->getPrefSession()->getConfidence();
  float greatest = 0.0f;
  for (VoMsgDetectorSession* member : group->getSessions()) greatest = std::max(greatest, member->getConfidence());
  return greatest;
}

void VoMsgGroupDetector::addMember(VoMsgCharSetDetector* member) {
  std::unique_ptr<VoMsgCharSetDetector> owner(member);
  members.push_back(member);
  owner.release();
}
