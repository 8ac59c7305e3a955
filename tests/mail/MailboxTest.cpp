#include "vomsg/mail/Mailbox.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <algorithm>
#include <fstream>

namespace {

constexpr char kDate[] = "Sun Nov 22 03:13:00 2026";

class Folder {
 public:
  Folder() {
    char name[] = "/tmp/vomsg-mailbox-XXXXXX";
    mPath = ::mkdtemp(name);
  }
  ~Folder() { std::filesystem::remove_all(mPath); }
  const std::string& path() const { return mPath; }
  std::string write(const std::string& name, const std::string& bytes) const {
    const std::string path = mPath + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }

 private:
  std::string mPath;
};

struct SeparatorRow {
  const char* line;
  bool want;
};
const SeparatorRow kSeparators[] = {
    {"From a@b Sun Nov 22 03:13:00 2026", true},
    {"From a b c Sun Nov  2 3:13 2026", true},
    {"From - Sun Nov 22 03:13:00 +0100 2026", true},
    {"From MAILER-DAEMON Sun Nov 22 03:13:00 GMT 2026 remote", true},
    {"From Sun Nov 22 03:13:00 2026", true},
    {"From a@b Sun Nov 22 03:13:00 2026\r", true},
    {"From here on it rains", false},
    {"From a@b", false},
    {"From a@b Sun Nov 22 2026", false},
    {"From a@b Foo Nov 22 03:13:00 2026", false},
    {"from a@b Sun Nov 22 03:13:00 2026", false},
    {">From a@b Sun Nov 22 03:13:00 2026", false},
    {"", false},
};

TEST(Mailbox, SeparatorLines) {
  for (const SeparatorRow& row : kSeparators) EXPECT_EQ(vomsg::inner::isMboxSeparator(row.line), row.want) << row.line;
}

// "F" stands for a separator line without its end; "|" divides the messages that are wanted.
struct MboxRow {
  vomsg::MboxKind kind;
  const char* file;
  const char* want;
};
constexpr auto O = vomsg::MboxKind::mboxo;
constexpr auto RD = vomsg::MboxKind::mboxrd;
constexpr auto CL2 = vomsg::MboxKind::mboxcl2;
const MboxRow kMailboxes[] = {
    {O, "F\nA: 1\n\nx\n\nF\nA: 2\n\ny\n", "A: 1\n\nx\n|A: 2\n\ny\n"},
    {O, "F\nA: 1\n\nx\n\nF\nA: 2\n\ny\n\n", "A: 1\n\nx\n|A: 2\n\ny\n"},
    {O, "F\r\nA: 1\r\n\r\nx\r\n\r\nF\r\nA: 2\r\n\r\ny", "A: 1\r\n\r\nx\r\n|A: 2\r\n\r\ny"},
    {O, "F\nA: 1\n\nx\nF\nno empty line in front\n", "A: 1\n\nx\nF\nno empty line in front\n"},
    {O, "F\nA: 1\n\nx\n\nFrom here on\n\n>F\n", "A: 1\n\nx\n\nFrom here on\n\n>F\n"},
    {O, "A: 1\n\nno separator at the start\n\nF\nA: 2\n\n", "A: 1\n\nno separator at the start\n|A: 2\n\n"},
    // The empty line that ends a header block is the message's own.
    {O, "F\nA: 1\n\nF\nA: 2\n\n\nF\nA: 3\n", "A: 1\n\n|A: 2\n\n|A: 3\n"},
    {O, "F\nA: 1\n\n\n\n\nF\nA: 2\n\n\n\n", "A: 1\n\n\n\n|A: 2\n\n\n"},
    {O, "F\n", ""},
    {O, "F", ""},
    {O, "F\nF\n\nF\n\n", "F\n\n|\n"},
    {RD, "F\nA: 1\n\n>F\n>>From x\n> From\n>Fro\n\nF\nA: 2\n\n>", "A: 1\n\nF\n>From x\n> From\n>Fro\n|A: 2\n\n>"},
    {RD, "F\n>From a\n\n>>>>From b\n>From", "From a\n\n>>>From b\n>From"},
    // Right, wrong, too long, and none.
    {CL2, "F\nContent-Length: 39\n\nx\n\nF\ny\n\nF\nA: 2\n\nz\n", "Content-Length: 39\n\nx\n\nF\ny\n|A: 2\n\nz\n"},
    {CL2, "F\ncontent-length:  1\n\nx\n\nF\nA: 2\n\nz\n", "content-length:  1\n\nx\n|A: 2\n\nz\n"},
    {CL2, "F\nContent-Length: 3\n\nx\n\nF\nA: 2\n\nz\n", "Content-Length: 3\n\nx\n\n|A: 2\n\nz\n"},
    {CL2, "F\nContent-Length: 5\n\nx\n\nF\nA: 2\n\nz\n", "Content-Length: 5\n\nx\n|A: 2\n\nz\n"},
    {CL2, "F\nContent-Length: 99999999999999\n\nx\n\nF\nA: 2\n\nz\n",
     "Content-Length: 99999999999999\n\nx\n|A: 2\n\nz\n"},
    {CL2, "F\nContent-Length: -1\n\nx\n\nF\nA: 2\n\nz\n", "Content-Length: -1\n\nx\n|A: 2\n\nz\n"},
    {CL2, "F\nContent-Length: 2\n\nx\n", "Content-Length: 2\n\nx\n"},
};

std::string expanded(std::string text) {
  const std::string line = std::string("From a@b ") + kDate;
  for (std::size_t at = 0; (at = text.find('F', at)) != text.npos;) {
    if (text.compare(at, 3, "Fro") == 0) {
      ++at;
      continue;
    }
    text.replace(at, 1, line);
    at += line.size();
  }
  return text;
}

std::string divided(vomsg::Mailbox& mailbox) {
  std::string all;
  for (vomsg::Mailbox::Entry& entry : mailbox) {
    if (entry.number() > 1) all += "|";
    all += vomsg::inner::readAll(**entry.source()).orThrow();
  }
  EXPECT_TRUE(mailbox.status());
  return all;
}

TEST(Mailbox, DividesMboxFiles) {
  const Folder folder;
  for (const MboxRow& row : kMailboxes) {
    SCOPED_TRACE(row.file);
    const std::string path = folder.write("box", expanded(row.file));
    vomsg::Mailbox mailbox = vomsg::Mailbox::open(path, vomsg::MailboxKind::mbox, row.kind).orThrow();
    EXPECT_EQ(divided(mailbox), expanded(row.want));
    EXPECT_EQ(divided(mailbox), expanded(row.want)) << "the second walk";
  }
}

// Where the buffer ends says nothing about where messages do: a body grows byte by byte across its edge.
TEST(Mailbox, BufferEdges) {
  const Folder folder;
  const std::string separator = std::string("From a@b ") + kDate + "\n";
  for (std::size_t size = 262144 - 2 * separator.size(); size < 262144 + 8; ++size) {
    const std::string first = "A: 1\n\n" + std::string(size, 'x') + "\n";
    const std::string path = folder.write("box", separator + first + "\n" + separator + "A: 2\n\ny\n");
    vomsg::Mailbox mailbox = vomsg::Mailbox::open(path).orThrow();
    ASSERT_TRUE(divided(mailbox) == first + "|A: 2\n\ny\n") << size;
  }
}

TEST(Mailbox, Detects) {
  const Folder folder;
  folder.write("maildir/cur/1", "A: 1\n\n");
  folder.write("maildir/new/2", "A: 2\n\n");
  folder.write("maildir/tmp/3", "A: 3\n\n");
  folder.write("maildir/.hidden", "A: 4\n\n");
  folder.write("tree/a/b/1.eml", "A: 1\n\n");
  folder.write("tree/2.eml", "A: 2\n\n");
  folder.write("tree/.git/3.eml", "A: 3\n\n");
  std::filesystem::create_symlink("/", folder.path() + "/tree/link");
  const std::string box = folder.write("box", expanded("F\nA: 1\n\nx\n\nF\nA: 2\n\n"));
  const std::string single = folder.write("one.eml", "From: a\n\nFrom here\n");
  struct Row {
    std::string path;
    vomsg::MailboxKind kind;
    std::vector<std::string> wanted;  // values of the field A
  };
  const Row rows[] = {{folder.path() + "/maildir", vomsg::MailboxKind::maildir, {"1", "2"}},
                      {folder.path() + "/tree", vomsg::MailboxKind::folder, {"1", "2"}},
                      {box, vomsg::MailboxKind::mbox, {"1", "2"}},
                      {single, vomsg::MailboxKind::file, {""}}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(*vomsg::Mailbox::detect(row.path), row.kind);
    vomsg::Mailbox mailbox = vomsg::Mailbox::open(row.path).orThrow();
    std::vector<std::string> found;
    for (vomsg::Mailbox::Entry& entry : mailbox) {
      found.push_back(entry.message().orThrow().header("A").value_or(""));
      EXPECT_EQ(entry.place().compare(0, row.path.size(), row.path), 0);
    }
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, row.wanted);
    EXPECT_TRUE(mailbox.status());
  }
  EXPECT_FALSE(vomsg::Mailbox::open(folder.path() + "/none"));
}

// A message of the mailbox outlives the walk, the mailbox and the file's name, also one too large for memory.
TEST(Mailbox, MessagesStandAlone) {
  const Folder folder;
  const std::string body(100000, 'z');
  std::optional<vomsg::Message> kept;
  {
    const std::string path = folder.write("box", expanded("F\nA: 1\n\n" + body + "\n\nF\nA: 2\n\n"));
    vomsg::Mailbox mailbox = vomsg::Mailbox::open(path).orThrow();
    for (vomsg::Mailbox::Entry& entry : mailbox) {
      if (entry.number() == 1) kept = entry.message().orThrow();
    }
    std::filesystem::remove(path);
  }
  EXPECT_EQ(kept->root().bytes().orThrow(), body + "\n");
}

}  // namespace
