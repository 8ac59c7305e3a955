// Exit codes, arguments and limits: what holds for every subcommand.
#include <unistd.h>

#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, ExitCodes) {
  const std::string plain = sample("plain.eml");
  const std::string partial = put("partial", "Content-Type: message/partial\r\n\r\nx");
  std::string many;
  for (int i = 0; i < 101; ++i) many += "X: 1\r\n";
  const std::string malformed = put("malformed", many + "\r\n");
  struct Row {
    std::vector<std::string> arguments;
    int exit;
    const char* sentence;  // part of stderr
  };
  const Row rows[] = {
      {{}, 64, "subcommand"},
      {{"nonsense"}, 64, "no command \"nonsense\"; the nearest is \"convert\""},
      {{"hedaers", plain}, 64, "the nearest is \"headers\""},
      {{"tree"}, 64, "FILE"},
      {{"tree", "--max-entity-headers", "many", plain}, 64, "many"},
      {{"--help"}, 0, ""},
      {{"--version"}, 0, ""},
      {{"tree", plain}, 0, ""},
      {{"tree", path("none")}, 66, "none: No such file"},
      {{"tree", path("none"), plain}, 66, "none: No such file"},
      {{"headers", path("")}, 66, "this is a folder"},
      {{"tree", path("work")}, 66, "no file"},
      {{"tree", partial}, 65, "0x8101100C"},
      {{"tree", malformed}, 65, "0x8101100B"},
      {{"roundtrip", malformed}, 0, ""},
      {{"tree", malformed, "--max-entity-headers", "0"}, 0, ""},
      {{"--max-entity-headers", "101", "tree", malformed}, 0, ""},
      {{"text", put("image", "Content-Type: image/png\r\n\r\nx")}, 65, "holds no text"},
      {{"headers", plain, "--part", "7"}, 64, "no part 7"},
      {{"extract", plain, "-d", plain}, 73, "plain.eml"},
      {{"rewrite", plain, path("none/out")}, 73, "none/out"},
      {{"rewrite", plain, path("work")}, 73, "directory"},
      {{"rewrite", malformed, path("copied")}, 0, "0x8101100B"},
      {{"rewrite", partial, path("edited"), "--set-header", "X-A=b"}, 0, "0x8101100C"},
      {{"disclaim", partial, path("work/out"), "--text", plain}, 65, "0x8101100C"},
      {{"text", malformed}, 65, "0x8101100B"},
      {{"headers", "--part", "7", partial}, 65, "0x8101100C"},
      {{"convert", "--from", "utf-8", "--to", "no-such", plain, "-"}, 64, "no-such"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    const Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.exit, row.exit) << outcome.err;
    EXPECT_NE(outcome.err.find(row.sentence), std::string::npos) << outcome.err;
  }
  EXPECT_TRUE(list("work").empty());
  EXPECT_EQ(get(path("copied")), many + "\r\n");
  EXPECT_EQ(get(path("edited")), "Content-Type: message/partial\r\nX-A: b\r\n\r\nx");
}

TEST_F(ProgramTest, TellsItsVersion) { EXPECT_EQ(run({"--version"}).out, "vomsg 1.100.0 (libvomsg 1.100.0.0000)\n"); }

TEST_F(ProgramTest, RefusesWhatCannotBeAddressed) {
  put("huge", "");
  ASSERT_EQ(truncate(path("huge").c_str(), off_t{1} << 31), 0);
  const Outcome outcome = run({"tree", path("huge")});
  EXPECT_EQ(outcome.exit, 66);
  EXPECT_NE(outcome.err.find("2 GiB"), std::string::npos);
}

TEST_F(ProgramTest, ReadsTheStandardInput) {
  const Outcome outcome = run({"tree", "-"}, get(sample("alternative.eml")));
  EXPECT_EQ(outcome.exit, 0);
  EXPECT_EQ(outcome.out, run({"tree", sample("alternative.eml")}).out);
}

TEST_F(ProgramTest, HeadersAreDecoded) {
  const Outcome outcome = run({"headers", sample("encoded_word_names.eml")});
  EXPECT_EQ(outcome.exit, 0);
  EXPECT_NE(outcome.out.find("Subject: 会議の資料 (Materialien)\n"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("From: 森潤"), std::string::npos) << outcome.out;
  const Outcome part = run({"headers", "--part", "2", sample("encoded_word_names.eml")});
  EXPECT_NE(part.out.find("Content-Disposition: attachment; filename=資料.pdf\n"), std::string::npos) << part.out;
}

TEST_F(ProgramTest, NothingFromMailSteersTheTerminal) {
  const std::string hostile =
      put("m", "Subject: =?utf-8?Q?=1B[2J=0AX:_1_=E2=80=AE?=\r\nContent-Type: a/b; name=\"\x1b]0;x\a\"\r\n\r\n");
  for (const char* command : {"tree", "headers"}) {
    const std::string out = run({command, hostile}).out;
    EXPECT_EQ(out.find_first_of("\x1b\a"), std::string::npos) << out;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), command == std::string("tree") ? 1 : 2) << out;
  }
  // JSON keeps the meaning and shows the marks: DEL, a C1 control, two that reorder a line, one beyond the first plane.
  const std::string marked = put("j", "Subject: a\x7F\xC2\x9B\xE2\x80\xAE\xE2\x81\xA6\xF3\xA0\x81\x81z\r\n\r\n");
  EXPECT_NE(run({"tree", "--json", marked}).out.find(R"("a\u007f\u009b\u202e\u2066\udb40\udc41z")"), std::string::npos);
}

TEST_F(ProgramTest, TextIsRawInAPipeAndHarmlessOnATerminal) {
  const std::string body = "a\x1B[2J\tb\r\nc\xC2\x9B \xE2\x80\xAE\\ \xD7\x90\xE2\x80\x8F\a\r";
  const std::string file = put("m", "Content-Type: text/plain; charset=utf-8\r\n\r\n" + body);
  EXPECT_EQ(run({"text", file}).out, body);
  const Outcome shown = runOnTerminal({"text", file});
  if (shown.exit == -1) GTEST_SKIP() << shown.err;
  EXPECT_NE(shown.out.find("a\\x1B[2J\tb\nc\\u{009B} \\u{202E}\\ \xD7\x90\xE2\x80\x8F\\x07\\x0D"), std::string::npos)
      << shown.out;
}

TEST_F(ProgramTest, TextNamesItsCharsetAndItsOrigin) {
  const Outcome declared = run({"text", sample("quoted_printable.eml")});
  EXPECT_EQ(declared.exit, 0);
  EXPECT_EQ(declared.out.substr(0, 24), "Grüße aus Köln. Diese") << declared.out;
  EXPECT_NE(declared.err.find("iso-8859-1 (declared)"), std::string::npos) << declared.err;
  const Outcome japanese = run({"text", sample("encoded_word_names.eml")});
  EXPECT_EQ(japanese.out, "資料をお送りします。") << japanese.out;
  const Outcome html = run({"text", "--html", sample("alternative.eml")});
  EXPECT_EQ(html.out.substr(0, 6), "<html>");
}

}  // namespace
}  // namespace vomsg::test
