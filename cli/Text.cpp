// vomsg text: the main text of a message in UTF-8.

#include <memory>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Input.h"
#include "vomsg/entity/VoMsgRfc822Message.h"

namespace cli {

namespace {

struct Options {
  std::string file;
  bool html = false;
};

const char* originName(VoMsgRfc822Entity::CharsetOrigin origin) {
  switch (origin) {
    case VoMsgRfc822Entity::CharsetOrigin::declared:
      return "declared";
    case VoMsgRfc822Entity::CharsetOrigin::detected:
      return "detected";
    case VoMsgRfc822Entity::CharsetOrigin::assumed:
      return "assumed";
  }
  return "unknown";
}

// A bare TNEF stream has its texts in front of its attachments: the first of the wanted kind, else the first of any.
VoMsgEntity* mainTextOfStream(VoMsgEntity* stream, bool preferHtml) {
  VoMsgEntity* first = nullptr;
  for (VoMsgEntity* part = stream->getChildEntity(); part != nullptr; part = part->getNextSiblingEntity()) {
    if (!part->isContentType("text", nullptr) || part->getFileName("utf-8") != nullptr) continue;
    if (part->isContentType("text", "html") == preferHtml) return part;
    if (first == nullptr) first = part;
  }
  return first;
}

VoMsgEntity* mainText(VoMsgEntity* root, bool preferHtml) {
  auto* const message = dynamic_cast<VoMsgRfc822Message*>(root);
  return message != nullptr ? message->_findMessageBody(preferHtml) : mainTextOfStream(root, preferHtml);
}

int showText(const Options& options) {
  const OpenedMessage opened = openMessage(options.file);
  VoMsgEntity* const body = mainText(opened.message.get(), options.html);
  if (body == nullptr) {
    checkReading(opened, options.file);
    throw Failure(kBadData, options.file + ": the message holds no text");
  }
  if (auto* mime = dynamic_cast<VoMsgRfc822Entity*>(body)) {
    auto origin = VoMsgRfc822Entity::CharsetOrigin::assumed;
    const char* charset = mime->getTextCharset(origin);
    complain(std::string("charset ") + (charset != nullptr ? charset : "unknown") + " (" + originName(origin) + ")");
  }
  int code = 0;
  const VoMsgResourceLocator* text = body->getTextContent(code, nullptr, "utf-8");
  if (text != nullptr) {
    printText(readAll(*text, options.file));
  } else if (static_cast<VoErrorCode>(code) != kVoNoContent) {
    throw failureOf(static_cast<VoErrorCode>(code), options.file);
  }
  checkReading(opened, options.file);
  return kOk;
}

const Command kText("text", "Print the main text in UTF-8, its charset on stderr", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->file, "The message; - for the standard input")->required();
  app.add_flag("--html", options->html, "Prefer HTML to plain text");
  return [options] { return showText(*options); };
});

}  // namespace

}  // namespace cli
