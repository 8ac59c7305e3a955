// The samples against their golden trees, however the bytes come in. A tree that differs is written to the output
// folder of the tests; a person who finds it right copies it beside its message.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "cli/TreeText.h"
#include "tests/support/MessageFixture.h"
#include "tests/support/WindowStreams.h"

namespace vomsg::test {
namespace {

// Read through a window of a few bytes, so that every line and every token meets a refill.
class NarrowResource : public VoMsgResourceLocator {
 public:
  NarrowResource(std::string_view bytes, std::size_t window)
      : VoMsgResourceLocator(nullptr, nullptr), mBytes(bytes), mWindow(window) {}
  int getResourceType() const override { return 0; }
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType) const override {
    return new WindowReader(mBytes, mWindow);
  }
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType) const override { return nullptr; }
  bool equal(VoMsgResourceLocator* other) const override { return this == other; }
  unsigned getSize(VoMsgResourceDataType) const override { return static_cast<unsigned>(mBytes.size()); }
  bool hasResourceFork() const override { return false; }

 private:
  std::string_view mBytes;
  std::size_t mWindow;
};

std::string treeThrough(std::string_view bytes, std::size_t window) {
  VoMsgRfc822Message message;
  message.readFrom(new NarrowResource(bytes, window));
  return cli::treeText(&message, true);
}

std::string withLineEnds(std::string_view text, std::string_view eol) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    text[i] == '\r' || text[i] == '\n' ? out.append(eol) : out.append(1, text[i]);
  }
  return out;
}

// A tree without its ranges, sizes and checksums.
std::string structureOf(VoMsgEntity& root) {
  std::istringstream words(cli::treeText(&root, true));
  std::string out;
  for (std::string word; words >> word;) {
    const std::string key = word.substr(0, word.find('='));
    if (key != "header" && key != "body" && key != "size" && key != "crc") out += word + ' ';
  }
  return out;
}

TEST(GoldenTree, HoweverTheBytesComeIn) {
  ASSERT_GE(sampleMessages().size(), 20u);
  for (const auto& [path, bytes] : sampleMessages()) {
    SCOPED_TRACE(path);
    const std::filesystem::path folder(VOMSG_TEST_DATA "/messages");
    std::ifstream file((folder / path).replace_extension(".tree"), std::ios::binary);
    const std::string golden{std::istreambuf_iterator<char>(file), {}};
    MessageFixture memory(bytes);
    const std::string tree = cli::treeText(&*memory, true);
    EXPECT_EQ(tree, golden);
    if (tree != golden) {
      std::filesystem::create_directories(VOMSG_TEST_OUTPUT);
      std::ofstream(VOMSG_TEST_OUTPUT / std::filesystem::path(path).filename().replace_extension(".tree")) << tree;
    }
    for (const std::size_t window : {1u, 2u, 7u}) EXPECT_EQ(treeThrough(bytes, window), golden) << "window " << window;
  }
}

// With other line ends the ranges move and text contents change, and nothing else does.
TEST(GoldenTree, LineEndsDoNotChangeTheStructure) {
  for (const auto& [path, bytes] : sampleMessages()) {
    SCOPED_TRACE(path);
    MessageFixture original(bytes);
    const std::string want = structureOf(*original);
    for (const char* eol : {"\n", "\r\n"}) {
      MessageFixture other(withLineEnds(bytes, eol));
      EXPECT_EQ(structureOf(*other), want);
    }
  }
}

}  // namespace
}  // namespace vomsg::test
