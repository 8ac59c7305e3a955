// What the user sees: output, complaints, and progress on stderr when that is a terminal.
#pragma once

#include <cstddef>
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

// One line on stderr that rewrites itself, and makes way for all other output.
class Progress {
 public:
  explicit Progress(std::size_t total);  // silent for a single file
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  void next(const std::string& file);

 private:
  std::size_t mTotal;
  std::size_t mDone = 0;
};

}  // namespace cli
