// What doubling a message costs over its whole life: read, asked for everything, copied, written, edited, written
// again, destroyed. Each family of messages is a text repeated: time that grows faster than the message shows in the
// ratio of one size to the next, whatever the machine. Each life runs in a process of its own, so that its memory is
// its own too.
//
//   doubling [--max BYTES] [--min-time SECONDS] [NAME...]    families whose name contains one of NAMEs; else all
//
// Prints a row for each family, with the limits as they are by default and with all of them off, and names in the end
// what exceeds the allowed ratio; the exit code says whether anything does.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/vomsg.h"

namespace {

constexpr double kAllowed = 2.3;
constexpr std::size_t kSmallest = 32u << 10;
constexpr std::size_t kLargest = 64u << 20;
constexpr long kMostMemory = 2L << 20;  // KiB
constexpr double kLongEnough = 0.03;    // seconds; below, a ratio says nothing
constexpr double kTooLong = 40;         // seconds; a family stops growing there

// A message: the head, the unit again and again, the tail. "#" is the number of the unit.
struct Family {
  const char* name;
  const char* head;
  const char* unit;
  const char* tail = "";
};

#define MIXED "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
#define OPEN(type) "Content-Type: " type "; boundary=b#\r\n\r\n--b#\r\n"
#define LONG "0123456789abcdefghijklmnopqrstuvwxyz0123456789abcdefghijklmnopqrstuvwxyz"
#define UUMAIL "begin 644 a.eml\r\n/4W5B:F5C=#H@> H*:&D*\r\n`\r\nend\r\n"

constexpr Family kFamilies[] = {
    // header blocks
    {"fields", "", "X-Field-#: some value\r\n", "\r\nx"},
    {"fields of one name", "", "Received: from a by b; Mon, 1 Jan 2024 00:00:00 +0000\r\n", "\r\nx"},
    {"one long field", "Subject: ", "word# ", "\r\n\r\nx"},
    {"one folded field", "Subject: x", "\r\n word#", "\r\n\r\nx"},
    {"a field without end", "Subject: ", "word#"},
    {"lines that are no fields", "", "no field here\r\n", "\r\nx"},
    {"fields without value", "", "X-#:\r\n", "\r\nx"},
    {"8-bit field", "Subject: ", "\xc3\xa4\xc3\xb6 ", "\r\n\r\nx"},
    {"lines of CR alone", "A: b", "\rX-#: y", "\r\rx"},
    {"blanks", "Subject: x", " \t", "\r\n\r\nx"},
    {"encoded words Q", "Subject:", " =?utf-8?Q?w=C3=B6rd#?=", "\r\n\r\nx"},
    {"encoded words B", "Subject:", " =?utf-8?B?w7bDtg==?=", "\r\n\r\nx"},
    {"encoded words of many charsets", "Subject:", " =?iso-8859-1?Q?=E4?= =?koi8-r?Q?=C1?=", "\r\n\r\nx"},
    {"words that begin like encoded", "Subject:", " =?utf-8?Q?x", "\r\n\r\nx"},
    {"question marks", "Subject: ", "=?", "\r\n\r\nx"},
    {"addresses", "To: x@example.org", ",\r\n n# <a#@example.org>", "\r\n\r\nx"},
    {"encoded addresses", "To: x@example.org", ",\r\n =?utf-8?Q?=C3=A4#?= <a#@example.org>", "\r\n\r\nx"},
    {"open comments", "To: ", "(", "\r\n\r\nx"},
    {"open quotes", "To: ", "\"a\" ", "\r\n\r\nx"},
    {"angles", "To: ", "<", "\r\n\r\nx"},
    {"commas", "To: ", ",", "\r\n\r\nx"},
    {"groups", "To: ", "g#: a@b, c@d; ", "\r\n\r\nx"},
    {"To again and again", "", "To: a#@example.org\r\n", "\r\nx"},
    {"parameters", "Content-Type: text/plain", "; p#=v", "\r\n\r\nx"},
    {"nameless parameters", "Content-Type: multipart/mixed", "; =v", "\r\n\r\nx"},
    {"boundaries", "Content-Type: multipart/mixed", "; boundary=b#", "\r\n\r\nx"},
    {"pieces of a name", "Content-Type: text/plain", "; name*#=v", "\r\n\r\nx"},
    {"pieces without order", "Content-Type: text/plain", "; name*7#*=utf-8''v", "\r\n\r\nx"},
    {"one long parameter", "Content-Type: text/plain; name=\"", "\\\"x", "\"\r\n\r\nx"},
    {"Content-Type again and again", "", "Content-Type: text/plain\r\n", "\r\nx"},
    {"semicolons", "Content-Disposition: x", ";", "\r\n\r\nx"},
    {"comments in a value", "Content-Type: text/plain ", "(x) ", "\r\n\r\nx"},
    // bodies
    {"plain text", "\r\n", "The quick brown fox # jumps over it.\r\n"},
    {"text of one line", "\r\n", "The quick brown fox "},
    {"text with lone CRs", "\r\n", "line\r"},
    {"UTF-8 text", "Content-Type: text/plain; charset=utf-8\r\n\r\n",
     "Gr\xc3\xbc\xc3\x9f"
     "e #\r\n"},
    {"text without a charset", "\r\n",
     "Gr\xfc\xdf"
     "e \xe4\xf6 #\r\n"},
    {"Japanese text", "\r\n", "\x1b$B$3$s$K$A$O\x1b(B\r\n"},
    {"text in Shift_JIS", "Content-Type: text/plain; charset=shift_jis\r\n\r\n", "\x82\xb1\x82\xf1\x82\xc9\r\n"},
    {"escapes of ISO-2022", "\r\n", "\x1b$B\x1b(B"},
    {"HTML", "Content-Type: text/html\r\n\r\n", "<p>text # <b>more</b></p>\r\n"},
    {"HTML of meta elements", "Content-Type: text/html\r\n\r\n", "<meta name=x>"},
    {"open tags", "Content-Type: text/html\r\n\r\n", "<"},
    {"base64", "Content-Type: a/b\r\nContent-Transfer-Encoding: base64\r\n\r\n", LONG "\r\n"},
    {"base64 text", "Content-Transfer-Encoding: base64\r\n\r\n", LONG "\r\n"},
    {"base64 of padding", "Content-Transfer-Encoding: base64\r\n\r\n", "=="},
    {"quoted-printable", "Content-Transfer-Encoding: quoted-printable\r\n\r\n", "Gr=C3=BC=C3=9Fe # and more=\r\n"},
    {"soft breaks", "Content-Transfer-Encoding: quoted-printable\r\n\r\n", "=\r\n"},
    {"bare equals", "Content-Transfer-Encoding: quoted-printable\r\n\r\n", "="},
    {"uuencode", "Content-Transfer-Encoding: x-uuencode\r\n\r\nbegin 644 a\r\n", "#86)C\r\n"},
    {"BinHex", "Content-Transfer-Encoding: mac-binhex40\r\n\r\n(This file must be converted with BinHex 4.0)\r\n\r\n:",
     "\"%&'(" LONG "\r\n", ":"},
    {"BinHex markers", "\r\n", "(This file must be converted with BinHex 4.0)\r\n\r\n:\r\n"},
    {"begins that begin nothing", "\r\n", "begin 644 a\r\n"},
    {"blocks", "\r\n", "begin 644 a#\r\n#86)C\r\n`\r\nend\r\n"},
    {"messages in blocks", "\r\n", UUMAIL},
    {"blocks in base64 of a text", "Content-Transfer-Encoding: quoted-printable\r\n\r\n",
     "begin 644 a#\r\n#86)C\r\n`\r\nend\r\n"},
    // structure
    {"parts", MIXED, "--b\r\nContent-Type: text/plain\r\n\r\nA small part.\r\n", "--b--\r\n"},
    {"typed parts", MIXED,
     "--b\r\nContent-Type: application/pdf; name=\"a#.pdf\"\r\nContent-Disposition: attachment; "
     "filename=\"a#.pdf\"\r\nContent-Transfer-Encoding: base64\r\n\r\nAAAA\r\n",
     "--b--\r\n"},
    {"empty parts", MIXED, "--b\r\n"},
    {"lines like delimiters", MIXED "--b\r\n\r\n", "--c\r\n"},
    {"lines that begin like delimiters", MIXED "--b\r\n\r\n", "--bb\r\n"},
    {"hyphens", MIXED "--b\r\n\r\n", "--"},
    {"closed again and again", MIXED, "--b--\r\n"},
    {"text behind the end", MIXED "--b\r\n\r\nx\r\n--b--\r\n", "text #\r\n"},
    {"blocks behind the end", MIXED "--b\r\n\r\nx\r\n--b--\r\n", "begin 644 a#\r\n#86)C\r\n`\r\nend\r\n"},
    {"multiparts in each other", "", OPEN("multipart/mixed"), "\r\nx"},
    {"multiparts of one boundary", "", "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n", "\r\nx"},
    {"signed in each other", "", OPEN("multipart/signed"), "\r\nx"},
    {"encrypted in each other", "", OPEN("multipart/encrypted"), "\r\nx"},
    {"multiparts side by side", MIXED, "--b\r\n" OPEN("multipart/alternative") "\r\nx\r\n--b#--\r\n"},
    {"multiparts without a boundary", MIXED, "--b\r\nContent-Type: multipart/mixed\r\n\r\nx\r\n"},
    {"unquoted boundaries", MIXED, "--b\r\nContent-Type: multipart/mixed; boundary=a b#\r\n\r\nx\r\n"},
    {"messages side by side", MIXED, "--b\r\nContent-Type: message/rfc822\r\n\r\nSubject: x#\r\n\r\nx\r\n"},
    {"encoded messages side by side", MIXED,
     "--b\r\nContent-Type: message/rfc822\r\nContent-Transfer-Encoding: base64\r\n\r\nQTogMQ0KDQp4\r\n"},
    {"messages in each other", "", "Content-Type: message/rfc822\r\n\r\n", "Subject: x\r\n\r\nx"},
    {"messages and multiparts in each other", "", OPEN("multipart/mixed") "Content-Type: message/rfc822\r\n\r\n",
     "Subject: x\r\n\r\nx"},
    {"attached by name", MIXED, "--b\r\nContent-Type: a/b; name=a#.eml\r\n\r\nSubject: x\r\n\r\nx\r\n"},
    {"TNEF parts", MIXED,
     "--b\r\nContent-Type: application/ms-tnef\r\nContent-Transfer-Encoding: base64\r\n\r\neJ8+IjEy\r\n"},
    {"winmail.dat that is none", MIXED, "--b\r\nContent-Type: a/b; name=winmail.dat\r\n\r\nx\r\n"},
    {"message at every level", "",
     OPEN("multipart/mixed") "Content-Type: message/rfc822\r\n\r\nA: 1\r\n\r\nx\r\n--b#\r\n", "\r\nx"},
    {"blocks at every level", "", OPEN("multipart/mixed") "\r\n" UUMAIL "\r\n--b#\r\n", "\r\nx"},
};

std::string makeMessage(const Family& family, std::size_t size) {
  std::string text = family.head;
  const std::string_view unit = family.unit;
  text.reserve(size + 256);
  for (unsigned i = 0; text.size() < size; ++i)
    for (const char c : unit) {
      if (c == '#')
        text += std::to_string(i);
      else
        text += c;
    }
  return text += family.tail;
}

// ---- one life

void askField(VoMsgHeaderField& field) {
  field.getFieldValue("utf-8");
  for (unsigned i = 0; i < field.countParameter(); ++i) field.getParameterValueAt(i, "utf-8");
}

void askEverything(VoMsgEntity& entity) {
  static constexpr const char* kAddresses[] = {"From", "To", "Cc", "BCC"};
  entity.isSignedPart();
  entity.isEncryptedPart();
  entity.getNestingLevel();
  for (unsigned i = 0; i < entity.countHeaders(); ++i) askField(*entity.getHeaderAt(i));
  for (const char* name : kAddresses)
    for (unsigned i = 0, n = entity.countUserAddress(name); i < n; ++i)
      entity.getUserAddressAt(name, i)->getName("utf-8");
  entity.getFileName("utf-8");
  entity.getCharset();
  entity.getContentSize();
  int err = 0;
  if (entity.isMultipartEntity()) return;
  entity.getContent(err, nullptr);
  if (!entity.getContentType() || entity.isContentType("text", nullptr)) entity.getTextContent(err, nullptr, "utf-8");
}

void live(std::string& text) {
  VoMsgRfc822Message mail;
  mail.readFrom(new VoMsgMemoryResource(text.data(), static_cast<unsigned>(text.size()), nullptr, nullptr));
  VoMsgEntityIterator walk(&mail);
  VoMsgEntity* last = nullptr;
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) askEverything(*(last = entity));
  const std::unique_ptr<VoMsgMailMessage> copy(mail.split());
  VoMsgMemoryResource unchanged(1u, nullptr, nullptr);
  mail.writeTo(&unchanged);
  last->setHeaderValue("X-Edited", "yes", "us-ascii", nullptr);
  VoMsgMemoryResource edited(1u, nullptr, nullptr);
  mail.writeTo(&edited);
}

double processorTime() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Cost {
  double seconds = 0;
  long memory = 0;  // KiB, the largest the process was
};

// In a process of its own; nothing when it died.
std::optional<Cost> measure(const Family& family, std::size_t size, bool limitsOff) {
  int ends[2];
  if (pipe(ends) != 0) return std::nullopt;
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    if (limitsOff) {
      VoMsgSetMaxEntityHeaders(0);
      VoMsgSetMaxHeaderAddress(0);
      VoMsgSetMaxHeaderParams(0);
      VoMsgMailMessage::mMaxExtractLevel = 1 << 30;
    }
    const rlimit time{static_cast<rlim_t>(2 * kTooLong), static_cast<rlim_t>(2 * kTooLong)};
    setrlimit(RLIMIT_CPU, &time);
    std::string text = makeMessage(family, size);
    Cost cost;
    const double start = processorTime();
    live(text);
    cost.seconds = processorTime() - start;
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    cost.memory = usage.ru_maxrss;
    const bool written = write(ends[1], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
    _exit(written ? 0 : 1);
  }
  close(ends[1]);
  Cost cost;
  const bool came = child > 0 && read(ends[0], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
  close(ends[0]);
  if (child > 0) waitpid(child, nullptr, 0);
  return came ? std::optional(cost) : std::nullopt;
}

// ---- the table

struct Outcome {
  double worst = 0;
  std::size_t worstAt = 0;  // the larger of the two sizes
  std::size_t reached = 0;
  const char* end = "";
  Cost last;
};

// Other work on the machine only ever adds time, so the smaller of several measurements is the truer one.
double leastSeconds(const Family& family, std::size_t size, bool limitsOff, int runs) {
  double least = 1e9;
  for (int i = 0; i < runs; ++i)
    if (const auto cost = measure(family, size, limitsOff)) least = std::min(least, cost->seconds);
  return least;
}

Outcome grow(const Family& family, std::size_t largest, double longEnough, bool limitsOff) {
  Outcome outcome;
  double before = 0;
  for (std::size_t size = kSmallest; size <= largest; size *= 2) {
    const auto cost = measure(family, size, limitsOff);
    if (!cost) {
      outcome.end = "died";  // or took more than twice the time at which a family stops
      outcome.worst = 1e9;
      break;
    }
    outcome.reached = size;
    outcome.last = *cost;
    double seconds = cost->seconds;
    if (before >= longEnough) {
      if (seconds / before > kAllowed) {  // once more, before it is believed
        seconds = std::min(seconds, leastSeconds(family, size, limitsOff, 2));
        before = std::min(before, leastSeconds(family, size / 2, limitsOff, 2));
      }
      if (seconds / before > outcome.worst) {
        outcome.worst = seconds / before;
        outcome.worstAt = size;
      }
    }
    before = seconds;
    if (cost->memory >= kMostMemory) {
      outcome.end = "2 GiB";
      break;
    }
    if (seconds > kTooLong) {
      outcome.end = "time";
      break;
    }
  }
  return outcome;
}

std::string sizeText(std::size_t size) {
  return size >= 1u << 20 ? std::to_string(size >> 20) + " MiB" : std::to_string(size >> 10) + " KiB";
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t largest = kLargest;
  double longEnough = kLongEnough;
  std::vector<std::string_view> wanted;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--max") == 0 && i + 1 < argc)
      largest = static_cast<std::size_t>(std::strtoull(argv[++i], nullptr, 0));
    else if (std::strcmp(argv[i], "--min-time") == 0 && i + 1 < argc)
      longEnough = std::strtod(argv[++i], nullptr);
    else
      wanted.emplace_back(argv[i]);
  }
  std::vector<std::string> exceeding;
  std::printf("%zu families; a ratio counts from %.3f s on, and may be %.1f\n\n", std::size(kFamilies), longEnough,
              kAllowed);
  std::printf("%-40s %-8s %8s %9s %8s %9s %8s  %s\n", "family", "limits", "worst", "at", "reached", "seconds", "MiB",
              "ended by");
  for (const Family& family : kFamilies) {
    const auto isNamed = [&](std::string_view part) { return std::string_view(family.name).find(part) != part.npos; };
    if (!wanted.empty() && std::none_of(wanted.begin(), wanted.end(), isNamed)) continue;
    for (const bool limitsOff : {false, true}) {
      const Outcome outcome = grow(family, largest, longEnough, limitsOff);
      const bool exceeds = outcome.worst > kAllowed;
      std::printf("%-40s %-8s %8.2f %9s %8s %9.3f %8.1f  %s%s\n", family.name, limitsOff ? "off" : "default",
                  outcome.worst, outcome.worstAt ? sizeText(outcome.worstAt).c_str() : "-",
                  sizeText(outcome.reached).c_str(), outcome.last.seconds,
                  static_cast<double>(outcome.last.memory) / 1024, outcome.end, exceeds ? "  EXCEEDS" : "");
      std::fflush(stdout);
      if (exceeds) exceeding.push_back(std::string(family.name) + (limitsOff ? ", limits off" : ", default limits"));
    }
  }
  std::printf("\n%zu exceed a ratio of %.1f\n", exceeding.size(), kAllowed);
  for (const std::string& name : exceeding) std::printf("  %s\n", name.c_str());
  return exceeding.empty() ? 0 : 1;
}
