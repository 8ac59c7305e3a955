// vomsg detect: which charset a text is in.

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <typeinfo>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Json.h"
#include "cli/Messages.h"
#include "cli/Printable.h"
#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/charset/detect/VoMsgCharSetDetector.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"

namespace cli {

namespace {

struct Options {
  std::vector<std::string> files;
  bool json = false;
};

// "" for none.
std::string className(const VoMsgCharSetDetector* detector) {
  if (detector == nullptr) return {};
  int status = 0;
  const char* const name = typeid(*detector).name();
  const std::unique_ptr<char, decltype(&std::free)> readable(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                             &std::free);
  return status == 0 ? readable.get() : name;
}

void printRow(const std::string& charset, const std::string& bytes, const std::string& detector,
              const std::string& file) {
  char row[128];
  std::snprintf(row, sizeof row, "%-14.32s %10.20s  %-26.40s", charset.c_str(), bytes.c_str(), detector.c_str());
  print(row + (" " + file) + "\n");
}

int detect(const Options& options, const std::string& file, const VoMsgResourceLocator& text) {
  const std::unique_ptr<VoMsgBufferedReader> reader(text.getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) throw Failure(kNoInput, file + ": cannot be read");
  char* found = nullptr;
  VoMsgCharSetAnalysis::Evidence evidence;
  VoMsgCharSetAnalysis::getInstance()->analysisText(reader.get(), "text/plain", found, evidence);
  const std::unique_ptr<char, decltype(&std::free)> charset(found, &std::free);
  const std::string detector = className(evidence.detector);
  if (options.json) {
    const Json object = {{"schema", 1},
                         {"file", file},
                         {"charset", jsonText(charset.get())},
                         {"bytes", evidence.bytes},
                         {"detector", charset ? Json(detector) : Json(nullptr)}};
    print(jsonLine(object) + "\n");
  } else {
    printRow(charset ? charset.get() : "unknown", std::to_string(evidence.bytes), charset ? detector : "-",
             printable(file));
  }
  return kOk;
}

const Command kDetect("detect", "Recognise the charset of texts", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "Texts; a folder stands for all files in it, - for the standard input")
      ->required();
  app.add_flag("--json", options->json, "One JSON object a line and file");
  return [options] {
    if (!options->json) printRow("CHARSET", "BYTES", "DETECTOR", "FILE");
    return forEachMessage(options->files,
                          [&](MessageInput& input) { return detect(*options, input.place, *input.source); });
  };
});

}  // namespace

}  // namespace cli
