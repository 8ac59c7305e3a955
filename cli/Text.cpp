// vomsg text: the main text of a message in UTF-8.

#include <memory>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/MainText.h"
#include "cli/Messages.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

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

int showText(const Options& options, MessageInput& input) {
  const std::string& file = input.place;
  const OpenedMessage opened = openMessage(file, std::move(input.source));
  print(titleOf(input));
  VoMsgEntity* const body = mainText(opened.message.get(), options.html);
  if (body == nullptr) {
    checkReading(opened, file);
    throw Failure(kBadData, file + ": the message holds no text");
  }
  if (auto* mime = dynamic_cast<VoMsgRfc822Entity*>(body)) {
    auto origin = VoMsgRfc822Entity::CharsetOrigin::assumed;
    const char* charset = mime->getTextCharset(origin);
    complain(std::string("charset ") + (charset != nullptr ? charset : "unknown") + " (" + originName(origin) + ")");
  }
  int code = 0;
  const VoMsgResourceLocator* text = body->getTextContent(code, nullptr, "utf-8");
  if (text != nullptr) {
    printText(readAll(*text, file));
  } else if (static_cast<VoErrorCode>(code) != kVoNoContent) {
    throw failureOf(static_cast<VoErrorCode>(code), file);
  }
  checkReading(opened, file);
  return kOk;
}

const Command kText("text", "Print the main text in UTF-8, its charset on stderr", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->file, "The message; - for the standard input")->required();
  app.add_flag("--html", options->html, "Prefer HTML to plain text");
  return [options] {
    return forEachMessageIn(options->file, [&](MessageInput& input) { return showText(*options, input); });
  };
});

}  // namespace

}  // namespace cli
