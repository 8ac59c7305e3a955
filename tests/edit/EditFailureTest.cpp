// A program of its own, because it makes operator new fail.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "tests/edit/EditFixture.h"

namespace {
long gUntilFailure = -1;  // allocations that still succeed; negative: all do
}  // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
  if (gUntilFailure == 0 || (gUntilFailure > 0 && gUntilFailure-- == 0)) throw std::bad_alloc();
  void* const block = std::malloc(size);
  if (!block) throw std::bad_alloc();
  return block;
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (...) {
    return nullptr;
  }
}
__attribute__((noinline)) void operator delete(void* block) noexcept { std::free(block); }
__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace vomsg::test {
namespace {

struct Row {
  const char* name;
  const char* message;
  int option;
};

const Row kRows[] = {
    {"text", "Subject: s\r\nContent-Type: text/plain\r\n\r\ntext", 0},
    {"without type", "Subject: s\r\n\r\ntext\r\nbegin 644 a\r\n#86)C\r\n`\r\nend\r\n", 0},
    {"alternatives",
     "Content-Type: multipart/alternative; boundary=b\r\n\r\n--b\r\n\r\ntext\r\nbegin 644 "
     "a\r\n#86)C\r\n`\r\nend\r\n\r\n"
     "--b\r\nContent-Type: text/html; charset=us-ascii\r\n\r\n<p>html\r\n--b--\r\n",
     4},
    {"new body", "Subject: s\r\nContent-Transfer-Encoding: 8bit\r\n\r\ntext \xC3\xA4", 1},
    {"attached", "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\ntext\r\n--b--\r\n", 0x82},
    {"wrapped",
     "From: a@example.org\r\nX-Own: 1\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\ntext "
     "\xC3\xA4\r\n--b--\r\n",
     3},
};

TEST(EditFailure, WhereverMemoryRunsOutTheMessageIsAsItWas) {
  for (const Row& row : kRows) {
    for (long n = 0, failures = 0;; ++n) {
      SCOPED_TRACE(std::string(row.name) + ", allocation " + std::to_string(n));
      MessageFixture message(row.message);
      const std::string before = outline(*message);
      Text text(
          "Gr\xC3\xBC\xC3\x9F"
          "e");
      gUntilFailure = n;
      const VoErrorCode code =
          message->insertDisclaimerMessage(kVoDisclaimerTop, text.get(), row.option, "utf-8", nullptr);
      const bool wasShort = gUntilFailure == 0;
      gUntilFailure = -1;
      if (voFailed(code)) {
        ++failures;
        ASSERT_EQ(written(*message), row.message);
        ASSERT_EQ(outline(*message), before);
        continue;
      }
      text.taken();
      ASSERT_NE(written(*message).find("=C3=BC"), std::string::npos);
      if (wasShort) continue;
      std::printf("%-12s %4ld allocations, %ld failures\n", row.name, n, failures);
      break;
    }
  }
}

}  // namespace
}  // namespace vomsg::test
