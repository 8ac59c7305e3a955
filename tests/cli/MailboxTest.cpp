// Mailboxes as input, the messages in them by number, and work shared by several processes.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

const std::string kFrom = "From a@example.org Sun Nov 22 03:13:00 2026\n";

class MailboxTest : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    box = put("in.mbox", kFrom + "Subject: one\n\n>From here on\n\n" + kFrom +
                             "Subject: two\nContent-Type: text/html\n\n<p>second\n\n" + kFrom +
                             "Subject: three\n\nlast\n");
    for (const char* below : {"maildir", "maildir/cur", "maildir/new", "maildir/tmp"})
      std::filesystem::create_directory(folder / below);
    put("maildir/new/2:2,", "Subject: two\n\nsecond\n");
    put("maildir/cur/1:2,S", "Subject: one\n\nfirst\n");
    put("maildir/tmp/3", "Subject: unfinished\n\n");
  }
  std::string box;
};

TEST_F(MailboxTest, ReadingCommandsTakeEachMessage) {
  struct Row {
    std::vector<std::string> arguments;
    int exit;
    std::string out;
  };
  const std::string maildir = path("maildir");
  const std::string titles[] = {"== " + box + "#1\n", "== " + box + "#2\n", "== " + box + "#3\n"};
  const Row rows[] = {
      {{"headers", box},
       0,
       titles[0] + "Subject: one\n" + titles[1] + "Subject: two\nContent-Type: text/html\n" + titles[2] +
           "Subject: three\n"},
      {{"headers", box + "#2"}, 0, "Subject: two\nContent-Type: text/html\n"},
      {{"text", box + "#1"}, 0, ">From here on\n"},
      {{"text", box + "#1", "--mbox", "mboxrd"}, 0, "From here on\n"},
      {{"cat", box + "#3", "0"}, 0, "last\n"},
      {{"cat", box, "0"}, 64, ""},
      {{"headers", box + "#4"}, 66, ""},
      {{"headers", "--as", "message", put("one", "Subject: whole\n\n" + kFrom)}, 0, "Subject: whole\n"},
      {{"grep", "-l", "^Subject: t", box}, 0, box + "#2\n" + box + "#3\n"},
      {{"grep", "sec.nd|last", box}, 0, box + "#2:0:<p>second\n" + box + "#3:0:last\n"},
      {{"grep", "-F", "sec.nd", box}, 1, ""},
      {{"grep", "(", box}, 64, ""},
      {{"grep", "-l", "e", maildir}, 0, maildir + "/cur/1:2,S\n" + maildir + "/new/2:2,\n"},
      {{"roundtrip", box}, 0, box + "#1: identical\n" + box + "#2: identical\n" + box + "#3: identical\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    const Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.exit, row.exit) << outcome.err;
    EXPECT_EQ(outcome.out, row.out);
  }
  EXPECT_EQ(run({"tree", "-"}, get(box)).out.find("=="), std::string::npos) << "the standard input is one message";
}

TEST_F(MailboxTest, ANumberNamesAMessageUnlessAFileIsCalledSo) {
  const std::string file = put("in.mbox#2", "Subject: a file\n\n");
  EXPECT_EQ(run({"headers", file}).out, "Subject: a file\n");
}

TEST_F(MailboxTest, CommandsThatWriteGiveOutOneMessage) {
  EXPECT_EQ(run({"set", box + "#3", "out", "Subject=new"}).exit, 0);
  EXPECT_EQ(run({"headers", "out"}).out, "Subject: new\n");
  EXPECT_EQ(run({"cat", "out", "0"}).out, "last\n");
  const std::string before = get(box);
  EXPECT_EQ(run({"set", box + "#3", box, "Subject=new"}).exit, 64);
  EXPECT_EQ(get(box), before);
}

TEST_F(MailboxTest, ExtractsEachMessageIntoAFolderOfItsOwn) {
  EXPECT_EQ(run({"extract", box, "-d", "d"}).exit, 0);
  EXPECT_EQ(list("work/d"), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_EQ(get(path("work/d/2/000_part.html")), "<p>second\n");
}

// The order of what is said, complaints among it, and the exit code are those of one process.
TEST_F(MailboxTest, SeveralProcessesSayTheSame) {
  put("maildir/new/0", "Content-Type: message/partial\n\n");
  for (const char* command : {"tree", "roundtrip", "headers"}) {
    const std::vector<std::string> several = {command, box, path("maildir"), path("none"), VOMSG_TEST_DATA "/messages"};
    std::vector<std::string> arguments = several;
    if (command == std::string("headers")) arguments = {command, box};
    const Outcome alone = run(arguments);
    for (const char* jobs : {"2", "7"}) {
      arguments.insert(arguments.begin(), {"-j", jobs});
      const Outcome shared = run(arguments);
      EXPECT_EQ(shared.out, alone.out);
      EXPECT_EQ(shared.err, alone.err);
      EXPECT_EQ(shared.exit, alone.exit);
      arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
  }
}

}  // namespace
}  // namespace vomsg::test
