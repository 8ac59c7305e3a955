#include "vomsg/charset/detect/VoMsgGroupDetector.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "vomsg/foundation/VoMsgGuard.h"

VoMsgGroupDetectorSession::VoMsgGroupDetectorSession(VoMsgGroupDetector* group) : VoMsgDetectorSession(group) {}

VoMsgGroupDetectorSession::~VoMsgGroupDetectorSession() = default;

// False: all members have theirs. One whose session memory does not suffice for is not in play.
bool VoMsgGroupDetectorSession::addNext() {
  const auto& members = static_cast<VoMsgGroupDetector*>(getDetector())->getMembers();
  if (mAdded == members.size()) return false;
  sessions.reserve(members.size());
  std::unique_ptr<VoMsgDetectorSession> session(members[mAdded++]->createSession());
  if (session) sessions.push_back(std::move(session));
  return true;
}

const std::vector<std::unique_ptr<VoMsgDetectorSession>>& VoMsgGroupDetectorSession::getSessions() {
  while (addNext()) continue;
  return sessions;
}

void VoMsgGroupDetectorSession::feedMembers(const char* data, unsigned length) {
  for (std::size_t i = 0; getState() == kDetecting && (i < sessions.size() || addNext());) {
    if (i == sessions.size()) continue;  // no memory for that one
    std::unique_ptr<VoMsgDetectorSession>& session = sessions[i];
    VoMsgDetectorSession* const next = session->getDetector()->handleData(data, length, session.get());
    if (next != session.get()) session.reset(next);
    if (!next || next->getState() == kNotMe || next->getState() == kError) {
      sessions.erase(sessions.begin() + static_cast<std::ptrdiff_t>(i));
      continue;
    }
    if (next->getState() == kFound) setPrefSession(next);
    ++i;
  }
}

int VoMsgGroupDetectorSession::calculateState() {
  if (getState() == kDetecting && getSessions().empty()) setState(kNotMe);
  return getState();
}

int VoMsgGroupDetectorSession::setPrefSession(VoMsgDetectorSession* session) {
  if (!session || getState() != kDetecting) return -1;
  prefSession = session;
  setState(kFound);
  return 0;
}

VoMsgGroupDetector::~VoMsgGroupDetector() = default;

VoMsgDetectorSession* VoMsgGroupDetector::handleData(const char* data, unsigned length, VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  auto* const group = static_cast<VoMsgGroupDetectorSession*>(session);
  // Without memory for a member's session the group is of no use.
  return vomsg::detail::guardedOr<VoMsgDetectorSession*>(nullptr, [&] {
    group->feedMembers(data, length);
    group->calculateState();
    return group;
  });
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
  for (const auto& member : group->getSessions()) greatest = std::max(greatest, member->getConfidence());
  return greatest;
}

void VoMsgGroupDetector::addMember(std::unique_ptr<VoMsgCharSetDetector> member) {
  members.push_back(std::move(member));
}
