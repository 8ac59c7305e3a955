// vomsg-milter: the policy at the mail server's milter interface. The message is put together again from names, values
// and body chunks; what the policy changes goes back as operations on single fields, and as a new body only when the
// body changed. So what cannot be put together exactly, such as the bytes between a field's name and its colon, is
// never written back.

#include <arpa/inet.h>
#include <libmilter/mfapi.h>
#include <netinet/in.h>
#include <signal.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include "gateway/Engine.h"
#include "gateway/NextHop.h"
#include "gateway/Report.h"

namespace {

using namespace gateway;

constexpr std::size_t kMostBytes = std::size_t{1} << 28;  // held in memory until the message is complete

struct Field {
  std::string name, value;  // the value with its leading blanks and folds, lines divided by LF
};

struct Session {
  Delivery delivery;
  std::string client;
  std::vector<Field> fields;
  std::string body;
  bool hasLeadingBlanks = false;
  bool isTooLarge = false;

  void startMessage() {
    delivery = Delivery();
    delivery.client = client;
    fields.clear();
    body.clear();
    isTooLarge = false;
  }
};

const Policy* gPolicy = nullptr;
const Report* gReport = nullptr;
std::mutex gTreating;  // connections are many, messages are treated one at a time

Session* sessionOf(SMFICTX* context) { return static_cast<Session*>(smfi_getpriv(context)); }

// No exception may run into the C library above.
template <class Body>
sfsistat guarded(Body&& body) {
  try {
    return body();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vomsg-milter: %s\n", error.what());
    return SMFIS_TEMPFAIL;
  }
}

std::string withoutBrackets(const char* address) {
  std::string text = address != nullptr ? address : "";
  if (text.size() >= 2 && text.front() == '<' && text.back() == '>') text = text.substr(1, text.size() - 2);
  return text;
}

std::string withLf(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') out += text[i];
  }
  return out;
}

// Fields that differ in blanks and folds alone say the same: they stay as the mail server has them.
std::string withoutBlanks(std::string_view value) {
  std::string out;
  for (const char c : value) {
    if (c != ' ' && c != '\t' && c != '\n' && c != '\r') out += c;
  }
  return out;
}

std::string rebuilt(const Session& session) {
  std::string bytes;
  for (const Field& field : session.fields) bytes += field.name + ":" + field.value + "\n";
  return bytes + "\n" + session.body;
}

// The fields of a written message, and its body.
std::vector<Field> fieldsOf(const std::string& bytes, std::string& body) {
  std::vector<Field> fields;
  std::size_t at = 0;
  while (at < bytes.size()) {
    std::size_t end = bytes.find('\n', at);
    end = end == bytes.npos ? bytes.size() : end + 1;
    const std::string line = withLf(std::string_view(bytes).substr(at, end - at));
    at = end;
    if (line == "\n") break;
    const std::string text = line.substr(0, line.find('\n'));
    const auto colon = text.find(':');
    if ((text[0] == ' ' || text[0] == '\t') && !fields.empty()) {
      fields.back().value += "\n" + text;
    } else if (colon != text.npos) {
      fields.push_back({text.substr(0, colon), text.substr(colon + 1)});
    }
  }
  body = bytes.substr(at);
  return fields;
}

using ByName = std::map<std::string, std::vector<Field>>;
ByName byName(const std::vector<Field>& fields) {
  ByName all;
  for (const Field& field : fields) all[vomsg::inner::lowered(vomsg::inner::trimmed(field.name))].push_back(field);
  return all;
}

// Changes the fields of the mail server's message to the new ones, name by name.
bool changeFields(SMFICTX* context, const Session& session, const std::vector<Field>& fields) {
  const auto text = [&](const std::string& value) {
    return session.hasLeadingBlanks || value.empty() || value[0] != ' ' ? value : value.substr(1);
  };
  const ByName before = byName(session.fields);
  const ByName after = byName(fields);
  static const std::vector<Field> kNone;
  std::map<std::string, bool> names;
  for (const auto& [name, list] : before) names[name] = true;
  for (const auto& [name, list] : after) names[name] = true;
  bool isDone = true;
  for (const auto& [name, ignored] : names) {
    const std::vector<Field>& old = before.count(name) != 0 ? before.at(name) : kNone;
    const std::vector<Field>& fresh = after.count(name) != 0 ? after.at(name) : kNone;
    for (std::size_t i = old.size(); i > fresh.size(); --i) {
      isDone &= smfi_chgheader(context, const_cast<char*>(old[i - 1].name.c_str()), static_cast<int>(i), nullptr) ==
                MI_SUCCESS;
    }
    for (std::size_t i = 0; i < fresh.size(); ++i) {
      const std::string value = text(fresh[i].value);
      char* const field = const_cast<char*>(fresh[i].name.c_str());
      if (i >= old.size()) {
        isDone &= smfi_addheader(context, field, const_cast<char*>(value.c_str())) == MI_SUCCESS;
      } else if (withoutBlanks(old[i].value) != withoutBlanks(fresh[i].value)) {
        isDone &=
            smfi_chgheader(context, field, static_cast<int>(i + 1), const_cast<char*>(value.c_str())) == MI_SUCCESS;
      }
    }
  }
  return isDone;
}

bool replaceBody(SMFICTX* context, const std::string& body) {
  std::string out;
  char last = 0;
  for (const char c : body) {
    if (c == '\n' && last != '\r') out += '\r';
    out += last = c;
  }
  constexpr std::size_t kChunk = 65535;
  std::size_t at = 0;
  do {
    const std::size_t n = std::min(kChunk, out.size() - at);
    if (smfi_replacebody(context, reinterpret_cast<unsigned char*>(out.data() + at), static_cast<int>(n)) != MI_SUCCESS)
      return false;
    at += n;
  } while (at < out.size());
  return true;
}

sfsistat answer(SMFICTX* context, const Session& session, Outcome& outcome) {
  switch (outcome.verdict) {
    case Verdict::pass:
    case Verdict::unread:
      return SMFIS_ACCEPT;
    case Verdict::quarantined:
      return SMFIS_DISCARD;  // it is in the folder
    case Verdict::tryAgain:
      return SMFIS_TEMPFAIL;
    case Verdict::rejected: {
      std::string reason = outcome.reason.substr(0, 200);
      for (char& c : reason) {
        if (static_cast<unsigned char>(c) < ' ' || c == '%' || static_cast<unsigned char>(c) > '~') c = '_';
      }
      smfi_setreply(context, const_cast<char*>("550"), const_cast<char*>("5.7.1"), reason.data());
      return SMFIS_REJECT;
    }
    case Verdict::edited:
      break;
  }
  const vomsg::Result<std::string> written = outcome.message->toString();
  if (!written) return SMFIS_TEMPFAIL;
  std::string body;
  const std::vector<Field> fields = fieldsOf(*written, body);
  bool isDone = changeFields(context, session, fields);
  if (isDone && body != session.body) isDone = replaceBody(context, body);
  // Half of the changes must not go out: the mail server drops them all with the attempt.
  return isDone ? SMFIS_ACCEPT : SMFIS_TEMPFAIL;
}

sfsistat onNegotiate(SMFICTX* context, unsigned long actions, unsigned long steps, unsigned long, unsigned long,
                     unsigned long* wantedActions, unsigned long* wantedSteps, unsigned long* wanted2,
                     unsigned long* wanted3) {
  return guarded([&]() -> sfsistat {
    constexpr unsigned long kNeeded = SMFIF_ADDHDRS | SMFIF_CHGHDRS | SMFIF_CHGBODY;
    if ((actions & kNeeded) != kNeeded) return SMFIS_REJECT;
    auto session = std::make_unique<Session>();
    session->hasLeadingBlanks = (steps & SMFIP_HDR_LEADSPC) != 0;
    *wantedActions = kNeeded;
    *wantedSteps = steps & SMFIP_HDR_LEADSPC;
    *wanted2 = *wanted3 = 0;
    smfi_setpriv(context, session.release());
    return SMFIS_CONTINUE;
  });
}

sfsistat onConnect(SMFICTX* context, char*, _SOCK_ADDR* address) {
  return guarded([&]() -> sfsistat {
    Session* const session = sessionOf(context);
    if (session == nullptr) return SMFIS_TEMPFAIL;
    char text[64] = "";
    if (address != nullptr && address->sa_family == AF_INET) {
      inet_ntop(AF_INET, &reinterpret_cast<sockaddr_in*>(address)->sin_addr, text, sizeof text);
    } else if (address != nullptr && address->sa_family == AF_INET6) {
      inet_ntop(AF_INET6, &reinterpret_cast<sockaddr_in6*>(address)->sin6_addr, text, sizeof text);
    }
    session->client = text;
    return SMFIS_CONTINUE;
  });
}

sfsistat onSender(SMFICTX* context, char** arguments) {
  return guarded([&]() -> sfsistat {
    sessionOf(context)->startMessage();
    sessionOf(context)->delivery.sender = withoutBrackets(arguments[0]);
    return SMFIS_CONTINUE;
  });
}

sfsistat onRecipient(SMFICTX* context, char** arguments) {
  return guarded([&]() -> sfsistat {
    sessionOf(context)->delivery.recipients.push_back(withoutBrackets(arguments[0]));
    return SMFIS_CONTINUE;
  });
}

sfsistat onField(SMFICTX* context, char* name, char* value) {
  return guarded([&]() -> sfsistat {
    Session& session = *sessionOf(context);
    session.fields.push_back({name, (session.hasLeadingBlanks ? "" : " ") + withLf(value)});
    return SMFIS_CONTINUE;
  });
}

sfsistat onBody(SMFICTX* context, unsigned char* bytes, std::size_t n) {
  return guarded([&]() -> sfsistat {
    Session& session = *sessionOf(context);
    session.isTooLarge = session.isTooLarge || session.body.size() + n > kMostBytes;
    if (!session.isTooLarge) session.body.append(reinterpret_cast<char*>(bytes), n);
    return SMFIS_CONTINUE;
  });
}

sfsistat onEnd(SMFICTX* context) {
  return guarded([&]() -> sfsistat {
    const auto begin = std::chrono::steady_clock::now();
    Session& session = *sessionOf(context);
    const char* const id = smfi_getsymval(context, const_cast<char*>("i"));
    session.delivery.id = id != nullptr ? id : "";
    Outcome outcome;
    sfsistat result = SMFIS_TEMPFAIL;
    {
      const std::lock_guard<std::mutex> lock(gTreating);
      if (session.isTooLarge) {
        outcome.verdict = Verdict::tryAgain;
        outcome.reason = "the message is too large to be held";
      } else {
        outcome = treat(*gPolicy, session.delivery, vomsg::Message::parse(rebuilt(session)));
      }
      result = answer(context, session, outcome);
      outcome.message.reset();
    }
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
    gReport->tell(session.delivery, outcome, taken.count());
    Report::count(gPolicy->counters, outcome);
    return result;
  });
}

sfsistat onAbort(SMFICTX* context) {
  if (Session* const session = sessionOf(context)) session->startMessage();
  return SMFIS_CONTINUE;
}

sfsistat onClose(SMFICTX* context) {
  delete sessionOf(context);
  smfi_setpriv(context, nullptr);
  return SMFIS_CONTINUE;
}

int run(const std::string& policyFile, const std::string& socket, bool asJson) {
  std::vector<Mistake> mistakes;
  const Policy policy = loadPolicy(policyFile, mistakes);
  for (const Mistake& each : mistakes) {
    std::fprintf(stderr, "%s:%u:%u: %s\n", policyFile.c_str(), each.line, each.column, each.text.c_str());
  }
  if (!mistakes.empty()) return kBadPolicy;
  policy.settings.apply();
  VoMsgSetCollectAnomalies(true);
  const Report report("vomsg-milter", asJson);
  gPolicy = &policy;
  gReport = &report;
  smfiDesc description{};
  description.xxfi_name = const_cast<char*>("vomsg-milter");
  description.xxfi_version = SMFI_VERSION;
  description.xxfi_flags = SMFIF_ADDHDRS | SMFIF_CHGHDRS | SMFIF_CHGBODY;
  description.xxfi_connect = onConnect;
  description.xxfi_envfrom = onSender;
  description.xxfi_envrcpt = onRecipient;
  description.xxfi_header = onField;
  description.xxfi_body = onBody;
  description.xxfi_eom = onEnd;
  description.xxfi_abort = onAbort;
  description.xxfi_close = onClose;
  description.xxfi_negotiate = onNegotiate;
  if (smfi_setconn(const_cast<char*>(socket.c_str())) != MI_SUCCESS || smfi_register(description) != MI_SUCCESS ||
      smfi_opensocket(true) != MI_SUCCESS) {
    std::fprintf(stderr, "vomsg-milter: %s cannot be opened\n", socket.c_str());
    return kUsage;
  }
  return smfi_main() == MI_SUCCESS ? kDone : kTryAgain;
}

}  // namespace

int main(int argc, char** argv) {
  ::signal(SIGPIPE, SIG_IGN);
  std::string policy = "/etc/vomsg/policy.toml";
  std::string socket = "inet:8899@127.0.0.1";
  bool asJson = false;
  CLI::App app("Treats mail by a policy at the milter interface of the mail server. Runs in the foreground.",
               "vomsg-milter");
  app.add_option("--policy", policy, "The policy file")->capture_default_str();
  app.add_option("--socket", socket, "Where to listen: inet:PORT@HOST or unix:PATH")->capture_default_str();
  app.add_flag("--json", asJson, "Log lines as JSON");
  app.set_version_flag("--version", "vomsg-milter 1.100.0");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int code = app.exit(error);
    return code == 0 ? kDone : kUsage;
  }
  try {
    return run(policy, socket, asJson);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vomsg-milter: %s\n", error.what());
    return kTryAgain;
  }
}
