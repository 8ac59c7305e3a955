// What ends a subcommand, or its work on one file: an exit code and one sentence for the user.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "vomsg/foundation/VoErrorCode.h"

namespace cli {

// The numbers of <sysexits.h>; 1 is `roundtrip` saying that something differs.
enum ExitCode : int { kOk = 0, kDifferent = 1, kUsage = 64, kBadData = 65, kNoInput = 66, kCannotCreate = 73 };

class Failure : public std::exception {
 public:
  Failure(ExitCode exit, std::string sentence) : mExit(exit), mSentence(std::move(sentence)) {}
  const char* what() const noexcept override { return mSentence.c_str(); }
  ExitCode exit() const { return mExit; }

 private:
  ExitCode mExit;
  std::string mSentence;
};

// The failure that a result code of the library means for the user. `subject` opens the sentence: a file, a part.
Failure failureOf(VoErrorCode code, const std::string& subject);
// "0x8101100B"
std::string hexCode(std::uint32_t code);

}  // namespace cli
