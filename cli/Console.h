// What the user sees: output, complaints, and progress on stderr when that is a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

// Writes to stdout as it is. Failure (kCannotCreate) when stdout refuses it.
void print(std::string_view text);
// The same for the text of a mail: as it is into files and pipes, with printableLines() onto a terminal.
void printText(std::string_view text);
// Writes what print() still holds back. Failure as there.
void flushOutput();
// Prints "vomsg: SENTENCE" on stderr.
void complain(std::string_view sentence);
// Prints on stderr what a Captured kept from there.
void reprint(std::string_view lines);

// Keeps what print() and complain() are given while it lives.
class Captured {
 public:
  Captured();
  ~Captured();
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;
  const std::string& out() const { return mOut; }
  const std::string& err() const { return mErr; }

 private:
  friend void print(std::string_view text);
  friend void complain(std::string_view sentence);
  std::string mOut, mErr;
};

enum class Colour { number = 33, name = 36, added = 32, removed = 31, found = 35 };  // the terminal's own numbers
// `text` in a colour, where stdout is a terminal that has some and NO_COLOR is not set.
std::string inColour(Colour colour, std::string_view text);

// One line on stderr that rewrites itself, and makes way for all other output; only on a terminal, and only for work
// that takes longer than a second.
class Progress {
 public:
  Progress(bool several, std::uint64_t bytes);  // silent for a single file
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  void next(const std::string& place, std::uint64_t bytesDone);
  void count(bool failed);
  void sumUp();  // how many there were, how many failed, how long it took

 private:
  using Clock = std::chrono::steady_clock;
  bool mIsShown;
  std::uint64_t mBytes;
  std::uint64_t mDone = 0, mFailed = 0;
  Clock::time_point mStart, mLast;
};

}  // namespace cli
