#include "cli/Console.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "cli/Failure.h"
#include "cli/Printable.h"

namespace cli {

namespace {

bool gLineShown = false;

void wipeLine() {
  if (gLineShown) std::fputs("\r\x1b[K", stderr);
  gLineShown = false;
}

}  // namespace

void print(std::string_view text) {
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

void complain(std::string_view sentence) {
  wipeLine();
  std::fprintf(stderr, "vomsg: %s\n", printable(sentence).c_str());
}

Progress::Progress(std::size_t total) : mTotal(total > 1 && isatty(STDERR_FILENO) == 1 ? total : 0) {}
Progress::~Progress() { wipeLine(); }

void Progress::next(const std::string& file) {
  if (mTotal == 0) return;
  wipeLine();
  std::fprintf(stderr, "[%zu/%zu] %.60s", ++mDone, mTotal, printable(file).c_str());
  std::fflush(stderr);
  gLineShown = true;
}

}  // namespace cli
