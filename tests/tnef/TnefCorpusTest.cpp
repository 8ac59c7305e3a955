// Real streams, with an independent program as witness where it is installed.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "tests/support/Tools.h"
#include "tests/tnef/StreamBuilder.h"

namespace vomsg::test {
namespace {

using Files = std::map<std::string, std::string>;

Files filesIn(const std::string& folder) {
  Files files;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ignored))
    files[entry.path().filename()] = readFile(entry.path());
  return files;
}

Files corpus() { return filesIn(VOMSG_TEST_CORPUS "/tnef"); }

// What the witness unpacks; the formatted text as "BODY.rtf".
Files unpackedByTool(const std::string& stream) {
  const ScratchDirectory scratch;
  runTool("tnef --ignore-cruft --overwrite --save-body=BODY --body-pref=R -C " + scratch.path, stream);
  return filesIn(scratch.path);
}

Files unpackedByUs(VoMsgTnefMessage& message) {
  Files files;
  for (VoMsgEntity* child = message.getChildEntity(); child; child = child->getNextSiblingEntity()) {
    const char* const name = child->isContentType("text", "rtf") ? "BODY.rtf" : child->getFileName("utf-8");
    const std::string content = contentOf(child);
    if (name) files[name] = content == codeText(kVoNoContent) ? "" : content;
  }
  return files;
}

// Four characters of the dictionary that compressed RTF starts from have a spelling of their own here, and show
// wherever a text takes them from it.
bool sameRichText(const std::string& ours, const std::string& theirs) {
  for (std::size_t i = 0; i < ours.size(); ++i) {
    const std::string pair = {ours[i], theirs[i]};
    if (pair[0] != pair[1] && pair != "ea" && pair != ".\\" && pair != "sS") return false;
  }
  return true;
}

TEST(TnefCorpus, OpensAsAnIndependentProgramSees) {
  if (corpus().empty()) GTEST_SKIP() << "no real streams here";
  if (!hasTool("tnef")) GTEST_SKIP() << "the program tnef is not installed";
  int attachments = 0;
  for (const auto& [file, bytes] : corpus()) {
    SCOPED_TRACE(file);
    ReadMessage read(bytes);
    EXPECT_EQ(read.code, kVoSuccess);
    Files ours = unpackedByUs(read.message);
    Files theirs = unpackedByTool(bytes);
    // The compressed size that the format gives covers four bytes more than are decoded, so the text may end a few
    // characters earlier, but never before its last brace. The witness adds a NUL.
    if (theirs.count("BODY.rtf")) {
      ASSERT_LE(ours["BODY.rtf"].size(), theirs["BODY.rtf"].size());
      EXPECT_GE(ours["BODY.rtf"].size() + 40, theirs["BODY.rtf"].size());
      EXPECT_PRED2(sameRichText, ours["BODY.rtf"], theirs["BODY.rtf"]);
      theirs.erase("BODY.rtf");
      ours.erase("BODY.rtf");
    }
    theirs.erase("BODY.html");
    EXPECT_EQ(ours, theirs);
    attachments += static_cast<int>(ours.size());
  }
  EXPECT_GE(attachments, 7);
}

TEST(TnefCorpus, ComesBackUnchangedAndEditedInOneRecord) {
  if (corpus().empty()) GTEST_SKIP() << "no real streams here";
  for (const auto& [file, bytes] : corpus()) {
    SCOPED_TRACE(file);
    ReadMessage read(bytes);
    EXPECT_EQ(written(read.message), bytes);
    for (unsigned i = 0; i < read.message.countChildEntity(); ++i) {
      ReadMessage edited(bytes);
      VoMsgTnefEntity* const child = edited.child(i);
      const std::string old = contentOf(child);
      if (child->getTnefEntityType() != VoMsgTnefEntity::kRecord || old.size() < 20) continue;
      const std::string before = record(0x800F, old);
      const std::size_t at = bytes.find(before);
      ASSERT_NE(at, bytes.npos);
      EXPECT_EQ(child->replaceContent(resourceOf("replaced").get(), nullptr), kVoSuccess);
      const std::string want = bytes.substr(0, at) + record(0x800F, "replaced") + bytes.substr(at + before.size());
      EXPECT_EQ(written(edited.message), want);
      ReadMessage again(want);
      EXPECT_EQ(contentOf(again.child(i)), "replaced");
    }
  }
}

}  // namespace
}  // namespace vomsg::test
