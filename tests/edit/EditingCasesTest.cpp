// What each edit makes of a message, beside the lines that it logs: one case a file under tests/data/editing. A case
// that comes out otherwise is written to the output folder of the tests; a person who finds it right copies it back.
//
//   disclaim OPTION POSITION CHARSET PREFER    or  strip WHAT, after an edit of the "header", of the "text", of
//   "nothing" the disclaimer, with \n and \xNN
//   --- before                                 lines end in CR LF here, in bare LF where "\n" stands before the end
//   ...
//   --- CODE                                   then the message as it is written, and the lines
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/edit/EditFixture.h"
#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"

namespace vomsg::test {
namespace {

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) text.replace(at, from.size(), to);
  return text;
}

// Line ends as in a case, drawn boundaries all alike.
std::string shown(const std::string& message) {
  constexpr std::string_view kDrawn = "=_Boundary_";
  std::string text = replaced(replaced(replaced(message, "\n", "\\n\n"), "\r\\n", ""), "\r", "\\r");
  for (std::size_t at = 0; (at = text.find(kDrawn, at)) != text.npos; at += kDrawn.size())
    text.replace(at + kDrawn.size(), 32, "drawn");
  return text;
}

VoErrorCode run(VoMsgRfc822Message& message, std::istringstream command, const std::string& text) {
  std::string verb, first, charset, prefer;
  int position = 0;
  command >> verb >> first >> position >> charset >> prefer;
  if (verb == "disclaim")
    return insert(message, text, std::stoi(first, nullptr, 0), position, charset.c_str(),
                  prefer.empty() ? nullptr : prefer.c_str());
  std::string content = text;
  VoErrorCode code = kVoSuccess;
  if (first == "header") code = message.setHeaderValue("Subject", text.c_str(), "us-ascii", nullptr);
  VoMsgEntity* leaf = &message;
  while (leaf->hasChildEntity()) leaf = leaf->getChildEntity();
  if (first == "text") code = leaf->setContent(resourceOver(content).get(), nullptr, nullptr);
  return voFailed(code) ? code : message.stripSignaturePart();
}

std::string outcomeOf(const std::string& bytes) {
  const std::size_t textAt = bytes.find('\n') + 1;
  const std::size_t before = bytes.find("--- before\n");
  const std::size_t begin = before + std::string_view("--- before\n").size();
  const std::size_t end = bytes.find("\n--- ", begin);
  const std::string source = replaced(replaced(bytes.substr(begin, end - begin), "\n", "\r\n"), "\\n\r\n", "\n");
  RememberingLog log;
  MessageFixture message(source);
  const std::string tag = std::string(message->_getUUIDString()) + " ";
  log.debug.clear();
  const VoErrorCode code =
      run(*message, std::istringstream(bytes.substr(0, textAt)), bytes.substr(textAt, before - textAt - 1));
  char name[32];
  std::snprintf(name, sizeof name, "\n--- %.8X\n", code);
  std::string out = bytes.substr(0, begin) + shown(source) + name;
  const auto lines = std::exchange(log.debug, {});
  const std::string after = written(*message);
  EXPECT_FALSE(voFailed(MessageFixture(after).code));
  EXPECT_EQ(voFailed(code), after == source && code != kVoSuccess);
  out += shown(after) + "\n--- log\n";
  for (const RememberingLog::Line& line : lines)
    out += std::to_string(line.level) + " " + line.file + " " + line.func + ": " +
           line.text.substr(line.text.find(tag) + tag.size()) + "\n";
  return out;
}

TEST(EditingCases, ComeOutAsWritten) {
  const std::filesystem::path written = VOMSG_TEST_OUTPUT "/editing";
  unsigned cases = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VOMSG_TEST_DATA "/editing")) {
    SCOPED_TRACE(entry.path());
    const std::string want = readFile(entry.path());
    const std::string is = outcomeOf(want);
    ++cases;
    if (is == want) continue;
    std::filesystem::create_directories(written);
    writeFile(written / entry.path().filename(), is);
    const auto differs = std::mismatch(is.begin(), is.end(), want.begin(), want.end()).first;
    ADD_FAILURE() << "differs from line " << 1 + std::count(is.begin(), differs, '\n')
                  << " on: " << is.substr(static_cast<std::size_t>(differs - is.begin()), 300);
  }
  EXPECT_GT(cases, 30u);
}

}  // namespace
}  // namespace vomsg::test
