// Setters of header blocks while memory runs out. Every allocation of each is refused once, be it of operator new or of
// malloc: a failure must have changed nothing, and a success must be whole.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <utility>

#include "tests/header/HeaderBlocks.h"

namespace {
long gUntilFailure = -1;  // allocations that still succeed; negative: all do

bool isRefused() {
  if (gUntilFailure < 0) return false;
  return gUntilFailure-- == 0;  // once: what comes behind succeeds again, as in a process that frees some
}
}  // namespace

// For all of this program.
__attribute__((noinline)) void* operator new(std::size_t size) {
  void* const block = isRefused() ? nullptr : std::malloc(size);
  return block ? block : throw std::bad_alloc();
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return isRefused() ? nullptr : std::malloc(size);
}
__attribute__((noinline)) void operator delete(void* block) noexcept { std::free(block); }
__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept { std::free(block); }

extern "C" {
void* __real_malloc(std::size_t size);                                                         // NOLINT
void* __wrap_malloc(std::size_t size) { return isRefused() ? nullptr : __real_malloc(size); }  // NOLINT
}

namespace vomsg::test {
namespace {

std::string stateOf(VoMsgEntityHeader& header) {
  std::string text = header.isEdited() ? "edited\n" : "";
  for (unsigned i = 0; i < header.countHeaders(); ++i) {
    VoMsgHeaderField& field = *header.getHeaderAt(i);
    text.append(field.getName()).append(field.isNewHeader() ? "*: " : ": ").append(field.getRawFieldValue());
    for (unsigned p = 0; p < field.countParameter(); ++p)
      text.append("; ").append(field.getParameterNameAt(p)).append("=").append(field.getRawParameterValueAt(p));
    text += "\n";
  }
  for (const char* const name : {"From", "To", "Cc", "Bcc"})
    for (unsigned i = 0; i < header.countAddress(name); ++i)
      text.append(name).append(" ").append(header.getAddressAt(name, i)->getRawAddress()).append("\n");
  return text + written(header);
}

TEST(HeaderShortage, AFailedSetterChangedNothing) {
  using Header = VoMsgEntityHeader;
  struct Row {
    const char* name;
    std::function<VoErrorCode(Header&)> call;
  };
  const auto field = [](const char* name) {
    return [name](Header& header) {
      const long left = std::exchange(gUntilFailure, -1);
      auto made = std::make_unique<VoMsgHeaderField>(name, "a, b");
      gUntilFailure = left;
      const VoErrorCode code = header.insertHeaderAt(made.get(), 1);
      if (!voFailed(code)) static_cast<void>(made.release());
      return code;
    };
  };
  const Row rows[] = {
      {"text", [](Header& h) { return h.setHeaderValue("Subject", "J\xC3\xB6rg", "utf-8", "iso-8859-1"); }},
      {"new text", [](Header& h) { return h.setHeaderValue("X-New", "J\xC3\xB6rg", "utf-8", nullptr); }},
      {"structured", [](Header& h) { return h.setHeaderValue("Content-Type", "a/b; n=c; p=q", nullptr, nullptr); }},
      {"new structured", [](Header& h) { return h.setHeaderValue("Content-Disposition", "a; n=c", nullptr, nullptr); }},
      {"addresses", [](Header& h) { return h.setHeaderValue("To", "\"J\xC3\xB6rg\" <a@b>, c", "utf-8", nullptr); }},
      {"new addresses", [](Header& h) { return h.setHeaderValue("Bcc", "d, e", "utf-8", nullptr); }},
      {"append", [](Header& h) { return h.appendAddress("To", "x@y"); }},
      {"append to none", [](Header& h) { return h.appendAddress("Bcc", "x@y"); }},
      {"insert", [](Header& h) { return h.insertAddressAt("To", "x@y", 0); }},
      {"remove", [](Header& h) { return h.removeAddressAt("To", 1); }},
      {"refresh", [](Header& h) { return h.refreshAddressList("To"); }},
      {"field", field("X-Other")},
      {"address field", field("To")},
      {"remove field", [](Header& h) { return h.removeHeaderAt(0); }},
      {"parameter",
       [](Header& h) { return h.getHeader("Content-Type")->setParameterValue("n", "o", "utf-8", nullptr); }},
      {"pieces", [](Header& h) { return h.getHeader("Content-Type")->setParameterValue("t", "o", "utf-8", nullptr); }},
      {"new parameter",
       [](Header& h) { return h.getHeader("Content-Type")->appendParameter("m", "o", "utf-8", nullptr); }},
      {"raw value", [](Header& h) { return h.getHeader("Subject")->setRawFieldValue("other"); }},
  };
  const std::string block =
      "To: a, \"b, c\" <d@e>\r\nSubject: s\r\nTo: f\r\nContent-Type: text/plain; n=v; t*0=a; t*1=b\r\nCc: g\r\n\r\n";
  long refusals = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    long steps = 0;
    for (bool isDone = false; !isDone; ++steps) {
      ASSERT_LT(steps, 1000);
      const auto header = parseBlock(block), untouched = parseBlock(block);
      const std::string before = stateOf(*untouched);
      gUntilFailure = steps;
      const VoErrorCode code = row.call(*header);
      isDone = gUntilFailure >= 0;  // nothing was refused any more
      gUntilFailure = -1;
      if (voFailed(code)) {
        EXPECT_EQ(stateOf(*header), before) << steps;
      } else {
        const auto whole = parseBlock(block);
        EXPECT_EQ(row.call(*whole), kVoSuccess);
        EXPECT_EQ(stateOf(*header), stateOf(*whole)) << steps;
      }
      EXPECT_TRUE(!isDone || code == kVoSuccess);
    }
    refusals += steps - 1;
  }
  EXPECT_GT(refusals, 100);
}

// A block that lacks anything of its source is none.
TEST(HeaderShortage, NoBlockIsBuiltInPart) {
  const std::string block = "A: b\r\nTo: c, d\r\nContent-Type: text/plain; charset=koi8-r; n=\"v w\"\r\n\r\n";
  const std::string whole = [&] {
    VoMsgEntityHeader header;
    EXPECT_EQ(header.parseSurveyedBlock(block, "us-ascii"), kVoSuccess);
    return stateOf(header);
  }();
  unsigned failures = 0;
  for (long steps = 0;; ++steps) {
    VoMsgEntityHeader header;
    gUntilFailure = steps;
    const VoErrorCode code = header.parseSurveyedBlock(block, "us-ascii");
    const bool isDone = gUntilFailure >= 0;
    gUntilFailure = -1;
    failures += voFailed(code);
    if (voFailed(code)) continue;
    EXPECT_EQ(stateOf(header), whole) << steps;
    EXPECT_STREQ(header.getHeader("A")->getDefaultCharset(), "koi8-r");
    if (isDone) break;
  }
  EXPECT_GT(failures, 20u);
}

}  // namespace
}  // namespace vomsg::test
