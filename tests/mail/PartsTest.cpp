// Walking while editing. The property that counts: whatever a loop removes or replaces, it sees every part that is
// still there exactly once, and in order.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "vomsg/mail.h"

namespace {

std::vector<std::string> sampleFiles() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(VOMSG_TEST_DATA "/messages")) {
    if (entry.path().extension() == ".eml") files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The ids of the parts that a walk sees. Ids are given in the order of reading, so two readings differ by a constant.
std::vector<std::uint32_t> walk(vomsg::Message& message) {
  std::vector<std::uint32_t> ids;
  for (vomsg::Part part : message.parts()) ids.push_back(part.id());
  return ids;
}
std::set<std::uint32_t> below(const vomsg::Part& part) {
  std::set<std::uint32_t> ids;
  for (vomsg::Part each : part.parts()) ids.insert(each.id());
  return ids;
}

enum class Edit { removeIt, replaceIt, removeParent, removeNext };

TEST(FaceParts, WalkSurvivesEdits) {
  unsigned edits = 0;
  for (const std::string& file : sampleFiles()) {
    vomsg::Message counted = vomsg::Message::open(file).orThrow();
    const std::size_t count = walk(counted).size();
    for (std::size_t at = 0; at < count; ++at) {
      for (const Edit edit : {Edit::removeIt, Edit::replaceIt, Edit::removeParent, Edit::removeNext}) {
        SCOPED_TRACE(file + " part " + std::to_string(at) + " edit " + std::to_string(static_cast<int>(edit)));
        vomsg::Message message = vomsg::Message::open(file).orThrow();
        const std::vector<std::uint32_t> all = walk(message);
        std::set<std::uint32_t> gone;
        std::vector<std::uint32_t> seen;
        for (vomsg::Part part : message.parts()) {
          seen.push_back(part.id());
          if (seen.size() != at + 1) continue;
          vomsg::Part target = part;
          if (edit == Edit::removeParent && part.parent()) target = *part.parent();
          if (edit == Edit::removeNext && part.entity()->getNextSiblingEntity() != nullptr) {
            target = *part.parent();
            for (vomsg::Part each : part.parent()->parts()) {
              if (each.entity() == part.entity()->getNextSiblingEntity()) target = each;
            }
          }
          std::set<std::uint32_t> subtree = below(target);
          if (target.isMessage()) subtree.merge(below(*target.parent()));
          const std::uint32_t id = target.id();
          if (edit == Edit::replaceIt) {
            if (!target.replaceWithText("gone")) continue;
            if (target.id() == id) subtree.erase(id);
          } else if (!target.remove()) {
            continue;
          }
          gone = subtree;
          ++edits;
        }
        // What was seen before the edit counts as seen; behind it nothing that is gone comes, and all else does.
        std::vector<std::uint32_t> want;
        for (std::size_t i = 0; i < all.size(); ++i) {
          if (i <= at || gone.count(all[i]) == 0) want.push_back(all[i]);
        }
        EXPECT_EQ(seen, want);
        vomsg::Result<std::string> written = message.toString();
        ASSERT_TRUE(written) << written.error().text();
        EXPECT_TRUE(vomsg::Message::parse(*written));
      }
    }
  }
  EXPECT_GT(edits, 200u);
}

TEST(FaceParts, EveryPartCanGoInOneLoop) {
  for (const std::string& file : sampleFiles()) {
    SCOPED_TRACE(file);
    vomsg::Message message = vomsg::Message::open(file).orThrow();
    for (vomsg::Part part : message.parts()) {
      if (part.isLeaf()) (void)part.remove();
    }
    EXPECT_TRUE(message.toString());
  }
}

struct ReplaceRow {
  const char* file;
  const char* attachment;
  const char* wantName;
};
const ReplaceRow kReplaceRows[] = {
    {"mixed_base64.eml", "dot.png", "notice.txt"},
    {"winmail.eml", "kurve.png", "kurve.png.txt"},
    {"embedded_blocks.eml", "Sketch 3", "Sketch 3.txt"},
};

// A notice takes an attachment's place, in winmail.dat and in a text too, and everything else stays.
TEST(FaceParts, NoticeInPlace) {
  for (const ReplaceRow& row : kReplaceRows) {
    SCOPED_TRACE(row.file);
    vomsg::Message message = vomsg::Message::open(std::string(VOMSG_TEST_DATA "/messages/") + row.file).orThrow();
    std::vector<std::string> names;
    bool found = false;
    for (vomsg::Part part : message.attachments()) {
      names.push_back(part.name().value_or(""));
      if (names.back() != row.attachment) continue;
      found = true;
      const bool inTree = dynamic_cast<VoMsgRfc822Entity*>(part.entity()) != nullptr;
      part.replaceWithText("It was removed: ä\r\n", inTree ? row.wantName : "").orThrow();
      names.back() = row.wantName;
    }
    ASSERT_TRUE(found) << testing::PrintToString(names);
    vomsg::Message again = vomsg::Message::parse(message.toString().orThrow()).orThrow();
    std::vector<std::string> left;
    for (const vomsg::Part& part : again.attachments()) {
      left.push_back(part.name().value_or(""));
      if (left.back() == row.wantName) {
        EXPECT_EQ(part.bytes().orThrow(), "It was removed: ä\r\n");
      }
    }
    EXPECT_EQ(left, names);
  }
}

// New bytes read back whatever they are, and whatever the part was encoded in.
TEST(FaceParts, BytesReadBack) {
  const std::string kContents[] = {"",
                                   "plain\r\n",
                                   "bare\nlines\n",
                                   std::string("\0\xff\r", 3),
                                   std::string(5000, 'x'),
                                   "--outer\r\n--b\r\n--inner--\r\n"};
  for (const std::string& file : sampleFiles()) {
    for (const std::string& content : kContents) {
      SCOPED_TRACE(file + " " + content.substr(0, 9));
      vomsg::Message message = vomsg::Message::open(file).orThrow();
      for (vomsg::Part part : message.parts()) {
        if (!part.isLeaf() || !part.setBytes(content)) continue;
        // A text takes the line ends of its message, and between blocks it ends with one.
        std::string got = part.bytes().orThrow();
        std::string want = content;
        if (part.isType("text")) {
          got.erase(std::remove(got.begin(), got.end(), '\r'), got.end());
          want.erase(std::remove(want.begin(), want.end(), '\r'), want.end());
          if (got == want + "\n") got.pop_back();
        }
        EXPECT_EQ(got, want);
        EXPECT_EQ(part.size(), part.bytes().orThrow().size());
        if (const std::optional<std::string> encoding = part.encoding(); encoding == "base64" && !content.empty()) {
          EXPECT_NE(part.rawBytes().orThrow(), content);
        }
      }
    }
  }
}

}  // namespace
