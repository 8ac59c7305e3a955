#include "vomsg/entity/VoMsgSmtpSessionInfo.h"

#include <cstddef>

#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"

using vomsg::detail::guarded;
using vomsg::detail::guardedOr;
using vomsg::detail::logged;

namespace {

constexpr char kLogSource[] = "VoMsgSmtpSessionInfo";

// Makes an address of `text` and hands it to `take`; what `take` refuses is destroyed.
template <class Take>
VoErrorCode withAddress(const char* function, const char* text, Take&& take) {
  std::unique_ptr<VoMsgUserAddress> address(
      guardedOr<VoMsgUserAddress*>(nullptr, [text] { return new VoMsgUserAddress(text); }));
  if (!address) return logged(kVoNoMemory, kLogSource, function, __LINE__, [] { return ""; });
  const VoErrorCode code = take(address.get());
  if (!voFailed(code)) static_cast<void>(address.release());
  return code;
}

}  // namespace

VoMsgSmtpSessionInfo::VoMsgSmtpSessionInfo() = default;
VoMsgSmtpSessionInfo::~VoMsgSmtpSessionInfo() = default;

VoMsgSmtpSessionInfo* VoMsgSmtpSessionInfo::copy() const {
  return guardedOr<VoMsgSmtpSessionInfo*>(nullptr, [this]() -> VoMsgSmtpSessionInfo* {
    auto other = std::make_unique<VoMsgSmtpSessionInfo>();
    other->mConnectionHost = mConnectionHost;
    if (mSender) {
      other->mSender.reset(mSender->copy());
      if (!other->mSender) return nullptr;
    }
    for (const auto& recipient : mRecipients) {
      other->mRecipients.push_back(std::unique_ptr<VoMsgUserAddress>(recipient->copy()));
      if (!other->mRecipients.back()) return nullptr;
    }
    return other.release();
  });
}

VoErrorCode VoMsgSmtpSessionInfo::setConnectionHost(const char* host) {
  return VO_LOGGED("", guarded([&] {
                     mConnectionHost = host ? host : "";
                     mIsModified = true;
                     return kVoSuccess;
                   }));
}

VoErrorCode VoMsgSmtpSessionInfo::setSender(VoMsgUserAddress* address) {
  if (address != mSender.get()) mSender.reset(address);
  mIsModified = true;
  return kVoSuccess;
}

VoErrorCode VoMsgSmtpSessionInfo::setSender(const char* text) {
  return withAddress(__func__, text, [this](VoMsgUserAddress* address) { return setSender(address); });
}

unsigned VoMsgSmtpSessionInfo::countRecipient() const { return static_cast<unsigned>(mRecipients.size()); }

VoMsgUserAddress* VoMsgSmtpSessionInfo::getRecipientAt(unsigned i) const {
  return i < mRecipients.size() ? mRecipients[i].get() : nullptr;
}

VoErrorCode VoMsgSmtpSessionInfo::setRecipientAt(unsigned i, VoMsgUserAddress* address) {
  if (!address) return VO_LOGGED("", kVoBadArgument);
  if (i >= mRecipients.size()) return VO_LOGGED("", kVoOutOfRange);
  if (address != mRecipients[i].get()) mRecipients[i].reset(address);
  mIsModified = true;
  return kVoSuccess;
}

VoErrorCode VoMsgSmtpSessionInfo::setRecipientAt(unsigned i, const char* text) {
  if (!text) return VO_LOGGED("", kVoBadArgument);
  return withAddress(__func__, text, [&](VoMsgUserAddress* address) { return setRecipientAt(i, address); });
}

VoErrorCode VoMsgSmtpSessionInfo::appendRecipient(VoMsgUserAddress* address) {
  if (!address) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] {
                     mRecipients.emplace_back(address);  // what throws, throws before this takes the address over
                     mIsModified = true;
                     return kVoSuccess;
                   }));
}

VoErrorCode VoMsgSmtpSessionInfo::appendRecipient(const char* text) {
  if (!text) return VO_LOGGED("", kVoBadArgument);
  return withAddress(__func__, text, [this](VoMsgUserAddress* address) { return appendRecipient(address); });
}

VoErrorCode VoMsgSmtpSessionInfo::insertRecipientAt(unsigned i, VoMsgUserAddress* address) {
  if (!address) return VO_LOGGED("", kVoBadArgument);
  if (i >= mRecipients.size()) return VO_LOGGED("", kVoOutOfRange);
  return VO_LOGGED("", guarded([&] {
                     mRecipients.emplace(mRecipients.begin() + static_cast<std::ptrdiff_t>(i))->reset(address);
                     mIsModified = true;
                     return kVoSuccess;
                   }));
}

VoErrorCode VoMsgSmtpSessionInfo::insertRecipientAt(unsigned i, const char* text) {
  if (!text) return VO_LOGGED("", kVoBadArgument);
  return withAddress(__func__, text, [&](VoMsgUserAddress* address) { return insertRecipientAt(i, address); });
}

VoErrorCode VoMsgSmtpSessionInfo::removeRecipientAt(unsigned i) {
  if (i >= mRecipients.size()) return VO_LOGGED("", kVoOutOfRange);
  mRecipients.erase(mRecipients.begin() + static_cast<std::ptrdiff_t>(i));
  mIsModified = true;
  return kVoSuccess;
}

VoErrorCode VoMsgSmtpSessionInfo::removeRecipientAll() {
  mRecipients.clear();
  mIsModified = true;
  return kVoSuccess;
}
