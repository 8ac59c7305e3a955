#include "cli/Console.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cli/Failure.h"
#include "cli/Printable.h"

namespace cli {

namespace {

bool gLineShown = false;
Captured* gCaptured = nullptr;

void wipeLine() {
  if (gLineShown) std::fputs("\r\x1b[K", stderr);
  gLineShown = false;
}

}  // namespace

void print(std::string_view text) {
  if (gCaptured != nullptr) {
    gCaptured->mOut += text;
    return;
  }
  wipeLine();
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
    throw Failure(kCannotCreate, std::string("standard output: ") + std::strerror(errno));
  }
}

void printText(std::string_view text) {
  if (isatty(STDOUT_FILENO) == 1)
    print(printableLines(text));
  else
    print(text);
}

void flushOutput() {
  if (std::fflush(stdout) != 0) throw Failure(kCannotCreate, std::string("standard output: ") + std::strerror(errno));
}

void reprint(std::string_view lines) {
  if (lines.empty()) return;
  wipeLine();
  std::fflush(stdout);
  std::fwrite(lines.data(), 1, lines.size(), stderr);
}

void complain(std::string_view sentence) {
  const std::string line = "vomsg: " + printable(sentence) + "\n";
  if (gCaptured != nullptr) {
    gCaptured->mErr += line;
    return;
  }
  wipeLine();
  std::fputs(line.c_str(), stderr);
}

Captured::Captured() { gCaptured = this; }
Captured::~Captured() { gCaptured = nullptr; }

std::string inColour(Colour colour, std::string_view text) {
  static const bool isColourful = [] {
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0') && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
  }();
  if (!isColourful) return std::string(text);
  return "\x1b[" + std::to_string(static_cast<int>(colour)) + "m" + std::string(text) + "\x1b[0m";
}

Progress::Progress(bool several, std::uint64_t bytes)
    : mIsShown(several && isatty(STDERR_FILENO) == 1), mBytes(bytes), mStart(Clock::now()), mLast(mStart) {}
Progress::~Progress() { wipeLine(); }

void Progress::next(const std::string& place, std::uint64_t bytesDone) {
  const Clock::time_point now = Clock::now();
  const double seconds = std::chrono::duration<double>(now - mStart).count();
  if (!mIsShown || seconds < 1 || now - mLast < std::chrono::milliseconds(100)) return;
  mLast = now;
  wipeLine();
  const double rate = static_cast<double>(bytesDone) / seconds;
  const double left = bytesDone == 0 ? 0 : static_cast<double>(mBytes - std::min(mBytes, bytesDone)) / rate;
  std::fprintf(stderr, "%llu messages, %.1f of %.1f MB, %.1f MB/s, %.0f s left  %.40s",
               static_cast<unsigned long long>(mDone), static_cast<double>(bytesDone) / 1e6,
               static_cast<double>(mBytes) / 1e6, rate / 1e6, left, printable(place).c_str());
  std::fflush(stderr);
  gLineShown = true;
}

void Progress::count(bool failed) {
  ++mDone;
  if (failed) ++mFailed;
}

void Progress::sumUp() {
  if (!mIsShown) return;
  wipeLine();
  std::fflush(stdout);
  std::fprintf(stderr, "%llu messages, %llu not in order, %.1f MB in %.1f s\n", static_cast<unsigned long long>(mDone),
               static_cast<unsigned long long>(mFailed), static_cast<double>(mBytes) / 1e6,
               std::chrono::duration<double>(Clock::now() - mStart).count());
}

}  // namespace cli
