#include "cli/Editing.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>

#include "cli/Console.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Output.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

namespace cli {

namespace {

struct Assignment {
  std::string name, value;
};

Assignment splitAssignment(const std::string& argument) {
  const auto equals = argument.find('=');
  if (equals == 0 || equals == argument.npos) throw Failure(kUsage, "\"" + argument + "\" is not NAME=VALUE");
  return {argument.substr(0, equals), argument.substr(equals + 1)};
}

void checkFieldName(const std::string& name) {
  const auto allowed = [](char c) { return c > ' ' && c < 0x7F && c != ':'; };
  if (name.empty() || !std::all_of(name.begin(), name.end(), allowed)) {
    throw Failure(kUsage, "\"" + name + "\" is no header name");
  }
}

VoMsgEntity* partByNumber(VoMsgEntity* root, const std::string& number) {
  unsigned value = 0;
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, value);
  VoMsgEntity* const part = error == std::errc() && stop == end ? entityByNumber(root, value) : nullptr;
  if (part == nullptr) throw Failure(kUsage, "there is no part " + number);
  return part;
}

// Whether the bytes can stand in a message as they are.
bool isSevenBit(const VoMsgResourceLocator& content, const std::string& file) {
  const std::string bytes = readAll(content, file);
  std::size_t lineStart = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (c == '\0' || static_cast<unsigned char>(c) >= 0x80) return false;
    if (c == '\r' && (i + 1 == bytes.size() || bytes[i + 1] != '\n')) return false;
    if (c != '\r' && c != '\n' && i - lineStart >= 998) return false;
    if (c == '\n') lineStart = i + 1;
  }
  return true;
}

// The transfer encoding for new content: null keeps the part's own, which serves unless it changes nothing and the
// content is no plain text.
const char* encodingFor(const VoMsgEntity* part, const VoMsgResourceLocator& content, const std::string& file) {
  if (dynamic_cast<const VoMsgRfc822Entity*>(part) == nullptr) return nullptr;
  std::string own = part->getEncoding() != nullptr ? part->getEncoding() : "";
  std::transform(own.begin(), own.end(), own.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  for (const char* name : {"base64", "quoted-printable", "uuencode", "x-uuencode", "mac-binhex40"}) {
    if (own == name) return nullptr;
  }
  return isSevenBit(content, file) ? "7bit" : "base64";
}

void replacePart(VoMsgEntity* part, const std::string& number, const std::string& file) {
  const std::unique_ptr<VoMsgResourceLocator> content = openInput(file);
  check(part->replaceContent(content.get(), encodingFor(part, *content, file)), "part " + number);
}

void removePart(VoMsgEntity* part, const std::string& number) {
  VoMsgEntity* const parent = part->getParentEntity();
  if (parent == nullptr) throw Failure(kUsage, "the message itself cannot be removed");
  check(parent->removeChildEntityAt(part->getIndex()), "part " + number);
}

bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void editHeader(VoMsgEntity* message, const Edits& edits) {
  if (edits.headerPart != 0) message = partByNumber(message, std::to_string(edits.headerPart));
  for (const std::string& name : edits.removeHeader) {
    checkFieldName(name);
    check(message->removeHeader(name.c_str()), name);
  }
  for (const std::string& argument : edits.setHeader) {
    const auto [name, value] = splitAssignment(argument);
    checkFieldName(name);
    const char* const charset = isAscii(value) ? "us-ascii" : "utf-8";
    check(message->setHeaderValue(name.c_str(), value.c_str(), charset, charset), name);
  }
}

// Numbers mean the tree as it was read, so all parts are looked up before the first one changes.
void editParts(VoMsgEntity* message, const Edits& edits) {
  struct Edit {
    VoMsgEntity* part;
    std::string number, file;
  };
  std::vector<Edit> replacements, removals;
  for (const std::string& argument : edits.replacePart) {
    const auto [number, file] = splitAssignment(argument);
    replacements.push_back({partByNumber(message, number), number, file});
  }
  for (const std::string& number : edits.removePart) removals.push_back({partByNumber(message, number), number, {}});
  for (const Edit& edit : replacements) replacePart(edit.part, edit.number, edit.file);
  // Ids grow with every entity that is made, so children go before their parents.
  std::sort(removals.begin(), removals.end(),
            [](const Edit& a, const Edit& b) { return a.part->getEntityID() > b.part->getEntityID(); });
  for (const Edit& edit : removals) removePart(edit.part, edit.number);
}

void attachFile(VoMsgEntity* message, const std::string& file, const std::string& type) {
  const std::unique_ptr<VoMsgResourceLocator> content = openInput(file);
  content->setResourceName(file.substr(file.rfind('/') + 1).c_str(), "utf-8");
  auto part = std::make_unique<VoMsgMimeEntity>();
  if (!type.empty()) check(part->setContentType(type.c_str()), file);
  check(part->setAttachment(content.get()), file);
  check(message->appendChildEntity(part.get()), file);
  static_cast<void>(part.release());  // the message has taken it
}

// One message of a mailbox is written alone, and so never over the mailbox.
bool isMailboxOf(const std::string& in, const std::string& out) {
  struct stat mailbox, target;
  return stat(in.c_str(), &target) != 0 && stat(in.substr(0, in.rfind('#')).c_str(), &mailbox) == 0 &&
         stat(out.c_str(), &target) == 0 && mailbox.st_dev == target.st_dev && mailbox.st_ino == target.st_ino;
}

}  // namespace

void check(VoErrorCode code, const std::string& subject) {
  if (voFailed(code)) throw failureOf(code, subject);
}

OpenedMessage openForEditing(const std::string& file) {
  OpenedMessage opened = openMessage(file, openWhole(file));
  if (opened.code == kVoTnefMalformed || opened.code == kVoMalformed || opened.code == kVoPartialMessage)
    complain(failureOf(opened.code, file).what());
  else
    check(opened.code, file);
  return opened;
}

void writeMessage(VoMsgMailMessage& message, const std::string& in, const std::string& out) {
  if (isMailboxOf(in, out)) throw Failure(kUsage, out + ": one message of a mailbox is not written over all of them");
  OutputFile output(out);
  const VoErrorCode code = message.writeTo(&output);
  if (code != kVoWriteFailed) check(code, in);  // what the output refused is said by commit()
  output.commit();
}

std::shared_ptr<Edits> declareEditing(CLI::App& app) {
  auto edits = std::make_shared<Edits>();
  app.add_option("IN", edits->in, "The message; - for the standard input")->required();
  app.add_option("OUT", edits->out, "The result; - for the standard output; may be IN")->required();
  return edits;
}

int editFile(const Edits& edits) {
  const OpenedMessage opened = openForEditing(edits.in);
  editHeader(opened.message.get(), edits);
  editParts(opened.message.get(), edits);
  for (const std::string& file : edits.attach) attachFile(opened.message.get(), file, edits.attachType);
  writeMessage(*opened.message, edits.in, edits.out);
  return kOk;
}

}  // namespace cli
