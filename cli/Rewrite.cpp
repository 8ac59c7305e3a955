// vomsg rewrite: reads a message and writes it back, with edits in between.

#include <algorithm>
#include <charconv>
#include <memory>

#include "cli/Command.h"
#include "cli/Editing.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Input.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"

namespace cli {

namespace {

struct Options {
  std::string in, out;
  std::vector<std::string> setHeader, removeHeader, replacePart, removePart;
};

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

void editHeader(VoMsgEntity* message, const Options& options) {
  for (const std::string& name : options.removeHeader) {
    checkFieldName(name);
    check(message->removeHeader(name.c_str()), name);
  }
  for (const std::string& argument : options.setHeader) {
    const auto [name, value] = splitAssignment(argument);
    checkFieldName(name);
    const char* const charset = isAscii(value) ? "us-ascii" : "utf-8";
    check(message->setHeaderValue(name.c_str(), value.c_str(), charset, charset), name);
  }
}

// Numbers mean the tree as it was read, so all parts are looked up before the first one changes.
void editParts(VoMsgEntity* message, const Options& options) {
  struct Edit {
    VoMsgEntity* part;
    std::string number, file;
  };
  std::vector<Edit> replacements, removals;
  for (const std::string& argument : options.replacePart) {
    const auto [number, file] = splitAssignment(argument);
    replacements.push_back({partByNumber(message, number), number, file});
  }
  for (const std::string& number : options.removePart) removals.push_back({partByNumber(message, number), number, {}});
  for (const Edit& edit : replacements) replacePart(edit.part, edit.number, edit.file);
  // Ids grow with every entity that is made, so children go before their parents.
  std::sort(removals.begin(), removals.end(),
            [](const Edit& a, const Edit& b) { return a.part->getEntityID() > b.part->getEntityID(); });
  for (const Edit& edit : removals) removePart(edit.part, edit.number);
}

int rewrite(const Options& options) {
  const OpenedMessage opened = openForEditing(options.in);
  editHeader(opened.message.get(), options);
  editParts(opened.message.get(), options);
  writeMessage(*opened.message, options.in, options.out);
  return kOk;
}

const Command kRewrite(
    "rewrite", "Read a message and write it back, edited as asked", [](CLI::App& app) -> Command::Run {
      const auto options = std::make_shared<Options>();
      const auto add = [&app](const char* name, std::vector<std::string>& values, const char* form, const char* help) {
        app.add_option(name, values, help)->type_name(form)->allow_extra_args(false);
      };
      app.add_option("IN", options->in, "The message; - for the standard input")->required();
      app.add_option("OUT", options->out, "The result; - for the standard output; may be IN")->required();
      add("--set-header", options->setHeader, "NAME=VALUE", "Set a field of the message; VALUE is UTF-8");
      add("--remove-header", options->removeHeader, "NAME", "Remove all fields of that name, before others are set");
      add("--replace-part", options->replacePart, "INDEX=FILE", "Replace the content of a part (number as in `tree`)");
      add("--remove-part", options->removePart, "INDEX", "Remove a part (number as in `tree`)");
      return [options] { return rewrite(*options); };
    });

}  // namespace

}  // namespace cli
