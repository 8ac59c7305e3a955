// attach, remove, replace, set, cat and diff: each edit is seen by the others, and nothing else changes.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, AttachedFilesComeOutAgain) {
  const std::string bytes = std::string("\0\x01\xFF\r\n--=_mixed", 14) + "\n";
  const std::string file = put("Bericht März.bin", bytes);
  ASSERT_EQ(run({"attach", sample("plain.eml"), "out", file, "--type", "application/x-report"}).exit, 0);
  EXPECT_EQ(run({"cat", "out", "2"}).out, bytes);
  EXPECT_NE(run({"tree", "out"}).out.find("application/x-report encoding=base64 name=\"Bericht März.bin\""),
            std::string::npos);
  EXPECT_EQ(run({"cat", "out", "1"}).out, run({"cat", sample("plain.eml"), "0"}).out) << "the text is the first part";
  // Back again: without the part the text is all there is.
  ASSERT_EQ(run({"remove", "out", "out2", "2"}).exit, 0);
  EXPECT_EQ(run({"text", "out2"}).out, run({"text", sample("plain.eml")}).out);
  EXPECT_EQ(run({"attach", sample("plain.eml"), "out3", path("none")}).exit, 66);
  EXPECT_EQ(list("work"), (std::vector<std::string>{"out", "out2"}));
}

TEST_F(ProgramTest, DiffTellsWhatChanged) {
  const std::string message = sample("mixed_base64.eml");
  const std::string text = put("new.txt", "new\r\n");
  struct Row {
    std::vector<std::string> edit;
    int exit;
    std::string out;
  };
  const Row rows[] = {
      {{"rewrite", message, "b"}, 0, "the messages are identical\n"},
      {{"set", message, "b", "Subject=Grüße"},
       1,
       "- part 0: Subject: One pixel\n+ part 0: Subject: Grüße\nall else is the same\n"},
      {{"set", message, "b", "--part", "2", "X-New=y"}, 1, "+ part 2: X-New: y\nall else is the same\n"},
      {{"set", message, "b", "--remove", "subject"}, 1, "- part 0: Subject: One pixel\nall else is the same\n"},
      {{"replace", message, "b", "3", text},
       1,
       "- part 3: content of 256 bytes, crc=29058c73\n+ part 3: content of 5 bytes, crc=e81dd086\nall else is the "
       "same\n"},
      {{"remove", message, "b", "2"}, 1, "- part 2: part image/png dot.png\nall else is the same\n"},
      {{"remove", message, "b", "2", "3"},
       1,
       "- part 2: part image/png dot.png\n- part 3: part application/octet-stream bytes.bin\nall else is the same\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.edit));
    EXPECT_EQ(run(row.edit).exit, 0);
    const Outcome outcome = run({"diff", message, "b"});
    EXPECT_EQ(outcome.exit, row.exit);
    EXPECT_EQ(outcome.out, row.out);
  }
}

TEST_F(ProgramTest, CatGivesAPartRawOrDecoded) {
  const std::string message = sample("mixed_base64.eml");
  const std::string raw = run({"cat", "--raw", message, "3"}).out;
  EXPECT_EQ(raw.substr(0, 8), "AAECAwQF");
  EXPECT_EQ(run({"decode", "--as", "base64", "-", "-"}, raw).out, run({"cat", message, "3"}).out);
  EXPECT_EQ(run({"cat", message, "0"}).exit, 65) << "a multipart has no content of its own";
  EXPECT_EQ(run({"cat", message, "9"}).exit, 64);
  EXPECT_EQ(run({"cat", put("empty", "Subject: x\r\n\r\n"), "0"}).exit, 0);
}

TEST_F(ProgramTest, StatsSumUp) {
  const std::string stats = run({"stats", "--json", sample("mixed_base64.eml"), sample("alternative.eml")}).out;
  for (const char* want :
       {R"("messages":2)", R"("parts":7)", R"("text/html":{"count":1,"bytes":71})",
        R"("charsets":{"us-ascii":{"count":2,"bytes":102},"utf-8":{"count":1,"bytes":30}})", R"("anomalies":{})"}) {
    EXPECT_NE(stats.find(want), std::string::npos) << stats;
  }
  const std::string marked = put("m", "no field\r\nSubject: x\r\n\r\n");
  EXPECT_NE(run({"stats", marked}).out.find("a line that is no header field"), std::string::npos);
}

TEST_F(ProgramTest, ColoursAreForTerminalsThatHaveThem) {
  const std::vector<std::string> tree = {"tree", sample("plain.eml")};
  EXPECT_EQ(run(tree).out.find('\x1b'), std::string::npos);
  setenv("TERM", "xterm", 1);
  const Outcome colourful = runOnTerminal(tree);
  if (colourful.exit == -1) GTEST_SKIP() << colourful.err;
  EXPECT_NE(colourful.out.find("\x1b[33m0\x1b[0m"), std::string::npos) << colourful.out;
  setenv("NO_COLOR", "1", 1);
  EXPECT_EQ(runOnTerminal(tree).out, run(tree).out);
  unsetenv("NO_COLOR");
}

}  // namespace
}  // namespace vomsg::test
