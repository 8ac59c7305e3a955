#include "gateway/Engine.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "vomsg/anomaly/VoMsgAnomalyList.h"

namespace gateway {

namespace {

// What one rule sees: the delivery, and the message as the rules before it left it.
class Matcher {
 public:
  Matcher(const Policy& policy, const Delivery& delivery, const vomsg::Message& message, VoErrorCode code,
          std::uint64_t bytes, const VoMsgAnomalyList* anomalies)
      : mPolicy(policy), mDelivery(delivery), mMessage(message), mCode(code), mBytes(bytes), mAnomalies(anomalies) {}

  bool hits(const Conditions& when) const {
    if (!hitsCode(when.codes) || !hitsDirection(when.direction)) return false;
    if (mBytes <= when.largerThan && when.largerThan > 0) return false;
    if (when.smallerThan && mBytes >= *when.smallerThan) return false;
    if (!when.senders.empty() && !matchesOne(when.senders, mDelivery.sender)) return false;
    if (!when.recipients.empty() && !hitsRecipients(when)) return false;
    if (!when.field.empty() && !hitsField(when)) return false;
    if (when.anomaly && !hitsAnomaly(*when.anomaly)) return false;
    return !when.attachment.isAsked || !attachments(when.attachment).empty();
  }

  std::vector<vomsg::Part> attachments(const Attachment& wanted) const {
    std::vector<vomsg::Part> found;
    for (const vomsg::Part& part : mMessage.attachments()) {
      if (!wanted.names.empty() && !matchesOne(wanted.names, part.name().value_or(""))) continue;
      if (!wanted.types.empty() && !matchesOne(wanted.types, part.type())) continue;
      if (!wanted.firstBytes.empty() && !begins(part, wanted.firstBytes)) continue;
      found.push_back(part);
    }
    return found;
  }

 private:
  bool hitsCode(const std::vector<VoErrorCode>& codes) const {
    if (codes.empty()) return !voFailed(mCode);
    return std::find(codes.begin(), codes.end(), mCode) != codes.end();
  }

  bool hitsAnomaly(VoMsgAnomalyLevel level) const {
    return mAnomalies != nullptr && mAnomalies->countAll() > 0 && mAnomalies->highestLevel() >= level;
  }

  bool isInsideAddress(const std::string& address) const {
    const auto at = address.rfind('@');
    return at != address.npos && matchesOne(mPolicy.insideDomains, address.substr(at + 1));
  }
  bool hitsDirection(const std::string& direction) const {
    if (direction.empty()) return true;
    // Who connects tells more than what a sender calls itself.
    const bool fromInside = !mDelivery.client.empty() && !mPolicy.insideNetworks.empty()
                                ? liesInOne(mPolicy.insideNetworks, mDelivery.client)
                                : isInsideAddress(mDelivery.sender);
    const auto& all = mDelivery.recipients;
    const bool toInside =
        std::all_of(all.begin(), all.end(), [this](const std::string& each) { return isInsideAddress(each); });
    if (direction == "in") return !fromInside;
    return fromInside && (direction == "inside") == toInside;
  }
  bool hitsRecipients(const Conditions& when) const {
    const auto& all = mDelivery.recipients;
    const auto hit = [&](const std::string& each) { return matchesOne(when.recipients, each); };
    if (all.empty()) return false;
    return when.anyRecipient ? std::any_of(all.begin(), all.end(), hit) : std::all_of(all.begin(), all.end(), hit);
  }
  bool hitsField(const Conditions& when) const {
    for (const vomsg::Field& field : mMessage.fields()) {
      if (!matches(when.field, field.name)) continue;
      if (when.fieldValues.empty() || matchesOne(when.fieldValues, field.value)) return true;
    }
    return false;
  }
  static bool begins(const vomsg::Part& part, const std::vector<std::string>& firstBytes) {
    const vomsg::Result<std::string> bytes = part.bytes();
    if (!bytes) return false;
    return std::any_of(firstBytes.begin(), firstBytes.end(),
                       [&](const std::string& each) { return bytes->compare(0, each.size(), each) == 0; });
  }

  const Policy& mPolicy;
  const Delivery& mDelivery;
  const vomsg::Message& mMessage;
  VoErrorCode mCode;
  std::uint64_t mBytes;
  const VoMsgAnomalyList* mAnomalies;  // of the message as it came
};

// "%n" in a notice is the attachment's name.
std::string filledIn(std::string text, const std::string& name) {
  for (std::size_t at = 0; (at = text.find("%n", at)) != text.npos; at += name.size()) text.replace(at, 2, name);
  return text + "\r\n";
}

// A file of its own in the quarantine, there completely or not at all.
vomsg::Status quarantine(const std::string& folder, const std::string& id, const vomsg::Message& message) {
  std::string name = vomsg::safeFileName(id, "message/rfc822");
  std::string path = folder + "/." + name + "-XXXXXX";
  const int fd = ::mkostemp(path.data(), O_CLOEXEC);
  if (fd < 0) return vomsg::Error(kVoWriteFailed);
  vomsg::Status done = message.write(fd);
  if (done && ::fsync(fd) != 0) done = vomsg::Error(kVoWriteFailed);
  if (::close(fd) != 0 && done) done = vomsg::Error(kVoWriteFailed);
  const std::string kept = folder + "/" + name + path.substr(path.size() - 7) + ".eml";
  if (done && ::rename(path.c_str(), kept.c_str()) != 0) done = vomsg::Error(kVoWriteFailed);
  if (!done) ::unlink(path.c_str());
  return done;
}

vomsg::Status edit(const Action& action, const Conditions& when, const Matcher& matcher, vomsg::Message& message) {
  switch (action.what) {
    case Do::addField:
      return message.addHeader(action.name, action.text);
    case Do::setField:
      return message.setHeader(action.name, action.text);
    case Do::removeField:
      return message.removeHeader(action.name);
    case Do::disclaimer:
      return message.addDisclaimer(action.disclaimer);
    case Do::openWinmail:
      return message.isTnef() ? vomsg::Status() : vomsg::openWinmail(message);
    case Do::stripSignatures:
      return message.stripSignatures();
    case Do::tag: {
      const std::string subject = message.subject();
      if (subject.compare(0, action.text.size(), action.text) == 0) return {};
      return message.setSubject(action.text + " " + subject);
    }
    case Do::removeAttachments:
    case Do::replaceAttachments:
      for (vomsg::Part part : matcher.attachments(when.attachment)) {
        const vomsg::Status done =
            action.what == Do::removeAttachments && part != message.root()
                ? part.remove()
                : part.replaceWithText(filledIn(action.text.empty() ? "An attachment was removed: %n" : action.text,
                                                part.name().value_or(part.type())));
        if (!done) return done;
      }
      return {};
    case Do::quarantine:
    case Do::reject:
    case Do::pass:
      break;
  }
  return {};
}

const char* firstDanger(const VoMsgAnomalyList& anomalies) {
  for (unsigned i = 0; i < anomalies.count(); ++i) {
    if (anomalies.at(i)->level == kVoAnomalyDangerous) return voAnomalyName(anomalies.at(i)->code);
  }
  return "further down";
}

Outcome failed(OnFailure how, VoErrorCode code, const std::string& reason, Outcome&& outcome,
               std::optional<vomsg::Message> original) {
  outcome.code = code;
  outcome.reason = reason;
  outcome.message.reset();
  outcome.verdict = how == OnFailure::open && original ? Verdict::unread
                    : how == OnFailure::reject         ? Verdict::rejected
                                                       : Verdict::tryAgain;
  if (outcome.verdict == Verdict::unread) outcome.message = std::move(original);
  return std::move(outcome);
}

}  // namespace

const char* nameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::pass:
      return "passed";
    case Verdict::edited:
      return "edited";
    case Verdict::unread:
      return "passed-unread";
    case Verdict::quarantined:
      return "quarantined";
    case Verdict::rejected:
      return "rejected";
    case Verdict::tryAgain:
      return "try-again";
  }
  return "unknown";
}

Outcome treat(const Policy& policy, const Delivery& delivery, vomsg::Result<vomsg::Message> read) {
  Outcome outcome;
  vomsg::Message* const original = read.salvaged();
  const VoErrorCode code = read.code();
  // Without memory or space nothing is known about the message: it is for later, whatever the policy says of damage.
  const bool isShortage = original == nullptr || code == kVoNoMemory || code == kVoWriteFailed;
  if (isShortage) return failed(OnFailure::closed, code, read.error().text(), std::move(outcome), std::nullopt);

  const vomsg::Result<std::string> whole = original->toString();
  if (!whole) return failed(OnFailure::closed, whole.code(), whole.error().text(), std::move(outcome), std::nullopt);
  outcome.bytes = whole->size();
  if (policy.maxMessage > 0 && outcome.bytes > policy.maxMessage) {
    return failed(policy.onDamage, kVoOutOfRange, "the message is larger than the policy allows", std::move(outcome),
                  std::move(*original));
  }

  vomsg::Result<vomsg::Message> copy = original->copy();
  if (!copy) return failed(OnFailure::closed, copy.code(), copy.error().text(), std::move(outcome), std::nullopt);
  vomsg::Message& edited = *copy;
  const VoMsgAnomalyList* const anomalies = original->message()->getAnomalies();
  std::vector<std::string> folders;
  bool isDangerous = anomalies != nullptr && anomalies->highestLevel() == kVoAnomalyDangerous;
  bool isOver = false;
  bool isDecided = false;  // about damaged mail
  for (const Rule& rule : policy.rules) {
    if (isOver) break;
    const Matcher matcher(policy, delivery, edited, code, outcome.bytes, anomalies);
    if (!matcher.hits(rule.when)) continue;
    outcome.rules.push_back(rule.name);
    isDecided = true;
    if (rule.when.anomaly || !rule.when.codes.empty())
      isDangerous = false;  // the administrator has said what is to be done
    isOver = !rule.goesOn;
    for (const Action& action : rule.actions) {
      if (action.what == Do::reject) {
        outcome.verdict = Verdict::rejected;
        outcome.reason = action.text;
        return outcome;
      }
      if (action.what == Do::quarantine) folders.push_back(action.name);
      const vomsg::Status done = edit(action, rule.when, matcher, edited);
      if (!done) {
        return failed(policy.onEdit, done.code(), "rule \"" + rule.name + "\": " + done.error().text(),
                      std::move(outcome), std::move(*original));
      }
    }
  }
  if (voFailed(code) && !isDecided) {
    const auto found = policy.onCode.find(code);
    return failed(found != policy.onCode.end() ? found->second : policy.onDamage, code, read.error().text(),
                  std::move(outcome), std::move(*original));
  }
  if (isDangerous) {
    return failed(policy.onDangerous, code, std::string("dangerous: ") + firstDanger(*anomalies), std::move(outcome),
                  std::move(*original));
  }
  outcome.code = code;
  for (const std::string& folder : folders) {
    const vomsg::Status done = quarantine(folder, delivery.id, *original);
    if (!done)
      return failed(OnFailure::closed, done.code(), folder + ": " + done.error().text(), std::move(outcome),
                    std::nullopt);
    outcome.verdict = Verdict::quarantined;
  }
  if (outcome.verdict == Verdict::quarantined) return outcome;
  const bool isModified = edited.isModified();
  outcome.verdict = isModified ? Verdict::edited : voFailed(code) ? Verdict::unread : Verdict::pass;
  outcome.message = isModified ? std::move(edited) : std::move(*original);
  return outcome;
}

}  // namespace gateway
