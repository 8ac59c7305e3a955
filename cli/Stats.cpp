// vomsg stats: what there is in messages: types, charsets, sizes, anomalies.

#include <map>
#include <memory>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Json.h"
#include "cli/Marks.h"
#include "cli/Messages.h"
#include "cli/Printable.h"

namespace cli {

namespace {

struct Options {
  std::vector<std::string> files;
  bool json = false;
};

struct Sum {
  std::uint64_t count = 0, bytes = 0;
};
using Sums = std::map<std::string, Sum>;

struct Stats {
  Sum messages;
  std::uint64_t parts = 0;
  Sums types, charsets;  // of leaves, with the bytes of their content
  Sums anomalies;        // codes and marks
};

std::string lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return text;
}

// Names come from mail: they may be anything, and as many as there are messages.
void add(Sums& sums, const char* name, std::uint64_t bytes) {
  constexpr std::size_t kMostNames = 10000, kLongestName = 100;
  std::string key = name != nullptr ? lower(std::string(name).substr(0, kLongestName)) : "(none)";
  if (sums.size() >= kMostNames && sums.count(key) == 0) key = "(others)";
  Sum& sum = sums[key];
  ++sum.count;
  sum.bytes += bytes;
}

int look(Stats& stats, MessageInput& input) {
  ++stats.messages.count;
  stats.messages.bytes += input.source->getSize(VoMsgResourceLocator::dataPart);
  const OpenedMessage opened = openMessage(input.place, std::move(input.source));
  if (voFailed(opened.code)) add(stats.anomalies, hexCode(opened.code).c_str(), 0);
  for (const Mark& mark : marksOf(opened.message.get())) add(stats.anomalies, mark.reason, 0);
  EntityWalk walk(opened.message.get());
  while (walk.next()) {
    ++stats.parts;
    if (!walk.isLeaf()) continue;
    const unsigned size = walk.entity()->getContentSize();
    add(stats.types, walk.entity()->getContentType(), size);
    if (walk.entity()->isContentType("text", nullptr)) add(stats.charsets, walk.entity()->getCharset(), size);
  }
  return kOk;
}

void printTable(const char* title, const Sums& sums) {
  print(std::string(title) + "\n");
  for (const auto& [name, sum] : sums) {
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%12llu %15llu  ", static_cast<unsigned long long>(sum.count),
                  static_cast<unsigned long long>(sum.bytes));
    print(numbers + printable(name) + "\n");
  }
}

Json jsonOf(const Sums& sums) {
  Json object = Json::object();
  for (const auto& [name, sum] : sums) object[name] = {{"count", sum.count}, {"bytes", sum.bytes}};
  return object;
}

void printStats(const Stats& stats, bool json) {
  if (json) {
    print(jsonLine({{"schema", 1},
                    {"messages", stats.messages.count},
                    {"bytes", stats.messages.bytes},
                    {"parts", stats.parts},
                    {"types", jsonOf(stats.types)},
                    {"charsets", jsonOf(stats.charsets)},
                    {"anomalies", jsonOf(stats.anomalies)}}) +
          "\n");
    return;
  }
  print(std::to_string(stats.messages.count) + " messages, " + std::to_string(stats.parts) + " entities, " +
        std::to_string(stats.messages.bytes) + " bytes\n");
  printTable("types of parts: number, bytes of content", stats.types);
  printTable("charsets of texts", stats.charsets);
  printTable("anomalies", stats.anomalies);
}

const Command kStats("stats", "Sum up types, charsets, sizes and anomalies", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "Messages, mailboxes, folders of them; - for the standard input")->required();
  app.add_flag("--json", options->json, "As one JSON object");
  return [options] {
    Stats stats;
    const int exit = forEachMessage(
        options->files, [&](MessageInput& input) { return look(stats, input); }, {}, true);
    printStats(stats, options->json);
    return exit;
  };
});

}  // namespace

}  // namespace cli
