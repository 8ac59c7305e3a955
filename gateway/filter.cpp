// vomsg-filter: a mail filter for a pipe of the mail server. The message comes on standard input, who sent it to whom
// in the arguments; what the policy makes of it goes to the next hop. Never ends with 0 when something was lost.

#include <arpa/inet.h>
#include <signal.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <new>

#include "gateway/Engine.h"
#include "gateway/NextHop.h"
#include "gateway/Report.h"

namespace {

using namespace gateway;

struct Options {
  std::string policy = "/etc/vomsg/policy.toml";
  std::string check, smtp;
  bool asJson = false;
  Delivery delivery;
};

int checkPolicy(const std::string& path) {
  std::vector<Mistake> mistakes;
  loadPolicy(path, mistakes);
  for (const Mistake& each : mistakes) {
    std::fprintf(stderr, "%s:%u:%u: %s\n", path.c_str(), each.line, each.column, each.text.c_str());
  }
  if (mistakes.empty()) std::printf("%s: in order\n", path.c_str());
  return mistakes.empty() ? kDone : kBadPolicy;
}

bool isLoopback(const std::string& host) {
  in_addr v4{};
  return ::inet_pton(AF_INET, host.c_str(), &v4) == 1 ? ntohl(v4.s_addr) >> 24 == 127 : host == "::1";
}

int filter(const Options& options, const NextHop& hop) {
  const auto begin = std::chrono::steady_clock::now();
  std::vector<Mistake> mistakes;
  const Policy policy = loadPolicy(options.policy, mistakes);
  if (!mistakes.empty()) {
    checkPolicy(options.policy);
    return kTryAgain;  // mail waits until the policy is mended
  }
  policy.settings.apply();
  VoMsgSetCollectAnomalies(true);
  const Report report("vomsg-filter", options.asJson);
  Outcome outcome = treat(policy, options.delivery, vomsg::Message::read(STDIN_FILENO));
  int exit = kDone;
  if (outcome.verdict == Verdict::rejected) {
    std::printf("%s\n", outcome.reason.c_str());  // the mail server tells it the sender
    exit = kRefused;
  } else if (outcome.verdict == Verdict::tryAgain) {
    exit = kTryAgain;
  } else if (outcome.message) {
    std::string reason;
    exit = handOn(hop, options.delivery, *outcome.message, reason);
    if (exit != kDone) {
      outcome.reason = reason;
      outcome.verdict = exit == kRefused ? Verdict::rejected : Verdict::tryAgain;
    }
  }
  const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
  report.tell(options.delivery, outcome, taken.count());
  Report::count(policy.counters, outcome);
  return exit;
}

}  // namespace

int main(int argc, char** argv) {
  ::signal(SIGPIPE, SIG_IGN);
  // What stands behind "--" is the next hop's command, whatever it looks like.
  NextHop hop;
  int own = 1;
  while (own < argc && std::string_view(argv[own]) != "--") ++own;
  for (int i = own + 1; i < argc; ++i) hop.command.emplace_back(argv[i]);

  Options options;
  CLI::App app(
      "Treats one message by a policy and hands it on: to the command behind --, to an SMTP server on this "
      "machine, or to standard output.",
      "vomsg-filter");
  app.add_option("--policy", options.policy, "The policy file")->capture_default_str();
  app.add_option("--check", options.check, "Only say whether this policy file is in order");
  app.add_option("--sender", options.delivery.sender, "Envelope sender");
  app.add_option("--recipient", options.delivery.recipients, "Envelope recipient; once for each")
      ->allow_extra_args(false);
  app.add_option("--client", options.delivery.client, "Address of the client");
  app.add_option("--id", options.delivery.id, "What the mail server calls the message");
  app.add_option("--smtp", options.smtp, "HOST:PORT of the next hop, a loopback address");
  app.add_flag("--json", options.asJson, "Log lines as JSON");
  app.set_version_flag("--version", "vomsg-filter 1.100.0");
  try {
    app.parse(own, argv);
  } catch (const CLI::ParseError& error) {
    const int code = app.exit(error);
    return code == 0 ? kDone : kUsage;
  }
  if (!options.check.empty()) return checkPolicy(options.check);
  if (!options.smtp.empty()) {
    const auto colon = options.smtp.rfind(':');
    hop.smtpHost = options.smtp.substr(0, colon);
    hop.smtpPort = colon == std::string::npos ? "" : options.smtp.substr(colon + 1);
    if (hop.smtpHost.size() > 2 && hop.smtpHost.front() == '[')
      hop.smtpHost = hop.smtpHost.substr(1, hop.smtpHost.size() - 2);
    if (!isLoopback(hop.smtpHost) || hop.smtpPort.empty() || !hop.command.empty()) {
      std::fprintf(stderr,
                   "vomsg-filter: --smtp takes the HOST:PORT of a loopback address, and no command beside it\n");
      return kUsage;
    }
  }
  try {
    return filter(options, hop);
  } catch (const std::exception& error) {  // memory ran out, mostly
    std::fprintf(stderr, "vomsg-filter: %s\n", error.what());
    return kTryAgain;
  }
}
