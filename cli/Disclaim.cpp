// vomsg disclaim: adds a disclaimer to a message, and on request removes the signatures that it breaks.

#include <map>
#include <memory>

#include "cli/Command.h"
#include "cli/Editing.h"
#include "cli/Failure.h"
#include "cli/Messages.h"
#include "vomsg/charset/convert/VoCharsetName.h"

namespace cli {

namespace {

struct Options {
  std::string in, out, text;
  std::string charset = "utf-8";
  std::string prefer = "utf-8";
  std::string position = "bottom";
  std::string mode = "body";
  bool html = false, attach = false, tnefOk = false, wrapOnRefusal = false, stripSignature = false;
};

const std::map<std::string, int> kModes = {{"body", kVoDisclaimerBody},
                                           {"new", kVoDisclaimerNewBody},
                                           {"wrap", kVoDisclaimerWrap},
                                           {"wrap-new", kVoDisclaimerWrapNew}};

int optionBits(const Options& options) {
  int bits = kModes.at(options.mode);
  if (options.html) bits |= kVoDisclaimerHtml;
  if (options.wrapOnRefusal) bits |= kVoDisclaimerWrapOnRefusal;
  if (options.tnefOk) bits |= kVoDisclaimerTnefOk;
  if (options.attach) bits |= kVoDisclaimerAttach;
  return bits;
}

void checkCharset(const std::string& name) {
  if (!voIsRightCharsetName(name.c_str())) throw Failure(kUsage, "there is no charset " + name);
}

int disclaim(const Options& options) {
  checkCharset(options.charset);
  checkCharset(options.prefer);
  const OpenedMessage opened = openMessage(options.in, openWhole(options.in));
  check(opened.code, options.in);
  std::unique_ptr<VoMsgResourceLocator> text = openInput(options.text);
  const auto position = options.position == "top" ? kVoDisclaimerTop : kVoDisclaimerBottom;
  check(opened.message->insertDisclaimerMessage(position, text.get(), optionBits(options), options.charset.c_str(),
                                                options.prefer.c_str()),
        options.in);
  static_cast<void>(text.release());  // the message has taken it
  if (options.stripSignature) check(opened.message->stripSignaturePart(), options.in);
  writeMessage(*opened.message, options.in, options.out);
  return kOk;
}

const Command kDisclaim("disclaim", "Add a disclaimer to a message", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("IN", options->in, "The message; - for the standard input")->required();
  app.add_option("OUT", options->out, "The result; - for the standard output; may be IN")->required();
  app.add_option("--text", options->text, "The disclaimer")->type_name("FILE")->required();
  app.add_option("--charset", options->charset, "What the disclaimer is in (utf-8)")->type_name("NAME");
  app.add_option("--prefer", options->prefer, "What the text becomes where its charset cannot say it (utf-8)")
      ->type_name("NAME");
  app.add_option("--position", options->position, "top or bottom (bottom)")
      ->type_name("WHERE")
      ->check(CLI::IsMember({"top", "bottom"}));
  app.add_option("--mode", options->mode, "body, new, wrap or wrap-new (body)")
      ->type_name("MODE")
      ->check(CLI::IsMember({"body", "new", "wrap", "wrap-new"}));
  app.add_flag("--html", options->html, "Put it into HTML too, instead of wrapping HTML mail");
  app.add_flag("--attach", options->attach, "Attach the disclaimer wherever the message would be wrapped");
  app.add_flag("--tnef-ok", options->tnefOk, "Do not wrap because of a winmail.dat");
  app.add_flag("--wrap-on-refusal", options->wrapOnRefusal, "Wrap a message that has no place for it");
  app.add_flag("--strip-signature", options->stripSignature, "Remove signatures that the disclaimer breaks");
  return [options] { return disclaim(*options); };
});

}  // namespace

}  // namespace cli
