// vomsg check: what is odd about messages, where, and what it means.

#include <memory>

#include "cli/AnomalyGuide.h"
#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Json.h"
#include "cli/Messages.h"
#include "cli/Printable.h"
#include "vomsg/anomaly/VoMsgAnomalyList.h"

namespace cli {

namespace {

struct Options {
  std::vector<std::string> files;
  bool json = false;
  std::string level = "ambiguous";
  std::string explain;
};

// Where an entry is: in the file, or, inside decoded content, the part that carries it and the place in there.
std::string placeOf(const VoMsgAnomaly& entry) {
  std::string place = std::to_string(entry.outermostOffset);
  if (entry.isDecoded) place += "+" + std::to_string(entry.offset);
  return place;
}

std::string lineOf(const std::string& file, const VoMsgAnomaly& entry) {
  return printable(file) + ":" + placeOf(entry) + ": " + nameOf(entry.level) + " " + std::to_string(entry.code) + " " +
         voAnomalyName(entry.code) + ": " + voAnomalyText(entry.code) + " (part " + std::to_string(entry.part) + ")\n";
}

std::string jsonOf(const std::string& file, const VoMsgAnomalyList& list) {
  Json entries = Json::array();
  for (unsigned i = 0; i < list.count(); ++i) {
    const VoMsgAnomaly& entry = *list.at(i);
    entries.push_back({{"code", static_cast<int>(entry.code)},
                       {"name", voAnomalyName(entry.code)},
                       {"level", nameOf(entry.level)},
                       {"text", voAnomalyText(entry.code)},
                       {"reading", voAnomalyReading(entry.code)},
                       {"part", entry.part},
                       {"offset", entry.offset},
                       {"length", entry.length},
                       {"decoded", entry.isDecoded},
                       {"outermostOffset", entry.outermostOffset},
                       {"outermostLength", entry.outermostLength}});
  }
  return jsonLine({{"schema", 1}, {"file", file}, {"count", list.countAll()}, {"anomalies", std::move(entries)}}) +
         "\n";
}

int checkMessage(const Options& options, VoMsgAnomalyLevel level, MessageInput& input) {
  const std::string& file = input.place;
  const OpenedMessage opened = openMessage(file, std::move(input.source));
  const VoMsgAnomalyList* const list = opened.message->getAnomalies();
  if (list == nullptr) throw failureOf(kVoReadFailed, file);
  if (options.json) {
    print(jsonOf(file, *list));
  } else {
    for (unsigned i = 0; i < list->count(); ++i) print(lineOf(file, *list->at(i)));
    if (list->countAll() > list->count())
      print(printable(file) + ": and " + std::to_string(list->countAll() - list->count()) + " more\n");
  }
  checkReading(opened, file);
  return list->countAll() > 0 && list->highestLevel() >= level ? kDifferent : kOk;
}

int explainCodes(const std::string& wanted) {
  const int code = anomalyCodeOf(wanted);
  if (code == 0 && wanted != "all") throw Failure(kUsage, "there is no anomaly \"" + printable(wanted) + "\"");
  std::string text;
  for (unsigned i = 0; i < voCountAnomalyCodes(); ++i) {
    if (code != 0 && voAnomalyCodeAt(i) != code) continue;
    if (!text.empty()) text += "\n";
    text += explain(voAnomalyCodeAt(i));
  }
  print(text);
  return kOk;
}

int run(const Options& options) {
  if (!options.explain.empty()) return explainCodes(options.explain);
  if (options.files.empty()) throw Failure(kUsage, "check: no FILE is given");
  int level = 0;
  while (options.level != nameOf(static_cast<VoMsgAnomalyLevel>(level))) ++level;
  VoMsgSetCollectAnomalies(true);
  return forEachMessage(options.files, [&](MessageInput& input) {
    return checkMessage(options, static_cast<VoMsgAnomalyLevel>(level), input);
  });
}

const Command kCheck("check", "Tell what is odd about messages, and where", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "Messages; a folder stands for all files in it, - for the standard input");
  app.add_flag("--json", options->json, "One JSON object a line and file");
  app.add_option("--level", options->level, "The level from which the exit code is 1: note, ambiguous or dangerous")
      ->check(CLI::IsMember({"note", "ambiguous", "dangerous"}))
      ->type_name("LEVEL")
      ->capture_default_str();
  app.add_option("--explain", options->explain, "Explain a code, by number or name, or all of them")->type_name("CODE");
  return [options] { return run(*options); };
});

}  // namespace

}  // namespace cli
