#include "gateway/Report.h"

#include <fcntl.h>
#include <sys/file.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

namespace gateway {

namespace {

// One word of a log line: what could end the line or the word is replaced.
std::string word(std::string_view text) {
  std::string out;
  while (!text.empty() && out.size() < 256) {
    const vomsg::Character character = vomsg::firstCharacter(text);
    const bool isBad = character.code == vomsg::kNotUtf8 || vomsg::isUnsafe(character.code) || character.code == ' ' ||
                       character.code == '"';
    out += isBad ? "_" : std::string(text.substr(0, character.length));
    text.remove_prefix(character.length);
  }
  return out.empty() ? "-" : out;
}

std::string codeText(VoErrorCode code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
  return text;
}

}  // namespace

Report::Report(const char* program, bool asJson) : mProgram(program), mAsJson(asJson) {
  ::openlog(mProgram, LOG_PID, LOG_MAIL);
}

void Report::tell(const Delivery& delivery, const Outcome& outcome, double milliseconds) const {
  std::string line;
  if (mAsJson) {
    nlohmann::ordered_json json = {{"id", delivery.id},      {"verdict", nameOf(outcome.verdict)},
                                   {"rules", outcome.rules}, {"code", codeText(outcome.code)},
                                   {"bytes", outcome.bytes}, {"ms", milliseconds}};
    if (!outcome.reason.empty()) json["reason"] = outcome.reason;
    line = json.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
  } else {
    char numbers[96];
    std::snprintf(numbers, sizeof numbers, " code=%s bytes=%llu ms=%.1f", codeText(outcome.code).c_str(),
                  static_cast<unsigned long long>(outcome.bytes), milliseconds);
    std::string rules;
    for (const std::string& each : outcome.rules) rules += (rules.empty() ? "" : ",") + word(each);
    line = "id=" + word(delivery.id) + " verdict=" + nameOf(outcome.verdict) +
           " rules=" + (rules.empty() ? "-" : rules) + numbers;
    if (!outcome.reason.empty()) line += " reason=" + word(outcome.reason);
  }
  const bool isTrouble = outcome.verdict == Verdict::unread || outcome.verdict == Verdict::tryAgain;
  ::syslog(isTrouble ? LOG_WARNING : LOG_INFO, "%s", line.c_str());
  std::fprintf(stderr, "%s: %s\n", mProgram, line.c_str());
}

void Report::count(const std::string& path, const Outcome& outcome) {
  if (path.empty()) return;
  const int lock = ::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (lock < 0 || ::flock(lock, LOCK_EX) != 0) {
    if (lock >= 0) ::close(lock);
    return;  // counting is no reason to hold mail back
  }
  std::map<std::string, unsigned long long> counters;
  std::ifstream before(path);
  for (std::string line; std::getline(before, line);) {
    const auto blank = line.rfind(' ');
    if (!line.empty() && line[0] != '#' && blank != line.npos) {
      counters[line.substr(0, blank)] = std::strtoull(line.c_str() + blank + 1, nullptr, 10);
    }
  }
  ++counters[std::string("vomsg_gateway_messages_total{verdict=\"") + nameOf(outcome.verdict) + "\"}"];
  counters["vomsg_gateway_bytes_total"] += outcome.bytes;
  for (const std::string& rule : outcome.rules)
    ++counters["vomsg_gateway_rule_hits_total{rule=\"" + word(rule) + "\"}"];
  const std::string temporary = path + ".new";
  {
    std::ofstream after(temporary);
    std::string family;
    for (const auto& [name, value] : counters) {
      const std::string own = name.substr(0, name.find('{'));
      if (own != family) after << "# TYPE " << (family = own) << " counter\n";
      after << name << ' ' << value << '\n';
    }
  }
  ::rename(temporary.c_str(), path.c_str());
  ::close(lock);
}

}  // namespace gateway
