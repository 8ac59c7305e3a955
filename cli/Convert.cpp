// vomsg convert: text from one charset into another.

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Input.h"
#include "cli/Output.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"

namespace cli {

namespace {

struct Options {
  std::string from, to, in, out;
  bool stop = false;
  bool verbose = false;
};

std::string className(const VoMsgCharsetConverter& converter) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(typeid(converter).name(), nullptr, nullptr, &status), &std::free);
  return status == 0 ? name.get() : typeid(converter).name();
}

int convert(const Options& options) {
  VoMsgConverterFactory* const factory = VoMsgConverterFactory::getInstance();
  const auto release = [factory](VoMsgCharsetConverter* converter) { factory->destoryConverter(converter); };
  const std::unique_ptr<VoMsgCharsetConverter, decltype(release)> converter(
      factory->createConverter(options.to.c_str(), options.from.c_str(), options.stop ? 0 : 1, '?'), release);
  if (!converter) throw Failure(kUsage, "there is no conversion from " + options.from + " to " + options.to);
  if (options.verbose) complain("converter " + className(*converter));

  std::string text = readAll(*openInput(options.in), options.in);
  // Converters take a NUL for the end of the text, so one inside would cost all that follows. "ucs-2" is full of them.
  const bool wide = strcasestr(options.from.c_str(), "ucs") != nullptr;
  if (const auto nul = text.find('\0'); nul != text.npos && !wide) {
    throw Failure(kBadData, options.in + ": this is no text, byte " + std::to_string(nul) + " is NUL");
  }
  std::string converted;
  const VoErrorCode code = converter->convert(converted, text);
  if (voFailed(code)) throw failureOf(code, options.in);

  OutputFile output(options.out);
  {
    const std::unique_ptr<VoMsgBufferedWriter> writer(output.getOutputStream(VoMsgResourceLocator::dataPart));
    constexpr std::size_t kStretch = 1u << 30;
    for (std::size_t at = 0; at < converted.size(); at += kStretch) {
      writer->write(converted.data() + at, static_cast<unsigned>(std::min(kStretch, converted.size() - at)));
    }
  }
  output.commit();
  return kOk;
}

const Command kConvert("convert", "Convert text between charsets", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("--from", options->from, "Charset of IN")->required();
  app.add_option("--to", options->to, "Charset of OUT")->required();
  app.add_flag("--stop", options->stop, "Fail at what the target cannot say, instead of writing \"?\"");
  app.add_flag("-v,--verbose", options->verbose, "Name the converter on stderr");
  app.add_option("IN", options->in, "The text; - for the standard input")->required();
  app.add_option("OUT", options->out, "The result; - for the standard output")->required();
  return [options] { return convert(*options); };
});

}  // namespace

}  // namespace cli
