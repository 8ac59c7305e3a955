// The program on TNEF, inside a message and bare.
#include "tests/cli/RunProgram.h"
#include "tests/support/WindowStreams.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/encoding/VoBase64.h"

namespace vomsg::test {
namespace {

std::string sampleStream(const std::string& content) {
  return stream(record(0x9007, le32(1252) + le32(0), 1, 6) +
                record(0x9003, list({text8(0x0037, "subject"), text8(0x1000, "Hello\r\n")}), 1) +
                attachment("../up.txt", content, {text8(0x3707, "../up.txt"), text8(0x370E, "text/x-up")}) +
                record(0x9002, "") +
                record(0x9005, list({object(0x3701, stream(attachment("deep.txt", "deep"))), text8(0x3707, "a.msg")})));
}

std::string sampleMail(const std::string& content) {
  LimitedWriter body;
  voEncodeBase64(&body, resourceOf(sampleStream(content)).get());
  return "Subject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\ntext\r\n--b\r\n"
         "Content-Type: application/octet-stream; name=WINMAIL.DAT\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
         body.text + "\r\n--b--\r\n";
}

TEST_F(ProgramTest, ShowsABareStream) {
  const std::string file = put("winmail.dat", sampleStream("up"));
  const Outcome tree = run({"tree", file});
  EXPECT_EQ(tree.exit, 0) << tree.err;
  EXPECT_EQ(tree.out,
            "0 tnef-message application/ms-tnef charset=iso-8859-1 encoding=binary level=0\n"
            "  1 tnef-part text/plain charset=iso-8859-1 encoding=8bit size=8 level=0\n"
            "  2 tnef-part text/x-up charset=iso-8859-1 encoding=binary name=../up.txt size=2 level=0\n"
            "  3 tnef-part application/octet-stream charset=iso-8859-1 encoding=binary size=0 level=0\n"
            "  4 tnef-container application/ms-tnef charset=iso-8859-1 encoding=binary name=a.msg level=0\n"
            "    5 tnef-message application/ms-tnef encoding=binary level=0\n"
            "      6 tnef-part application/octet-stream encoding=binary name=deep.txt size=4 level=1\n");
  EXPECT_EQ(run({"roundtrip", file}).exit, 0);
  EXPECT_NE(run({"tree", "--json", "-"}, sampleStream("up")).out.find(R"("fileName":"deep.txt","header":null)"),
            std::string::npos);
}

// What stands before the cut is shown and saved by every command; nothing is written that lacks the rest.
TEST_F(ProgramTest, ShowsACutStreamUpToTheCut) {
  std::string records;
  for (const char* name : {"1.png", "2.png", "3.png"}) records += attachment(name, std::string("image ") + name);
  const std::string file = put("cut.tnef", stream(records + record(0x9002, "") + record(0x800F, "lost").substr(0, 10)));
  struct Row {
    std::vector<std::string> arguments;
    const char* out;
  };
  const Row rows[] = {{{"tree", file}, "name=3.png size=11"},
                      {{"tree", "--json", file}, R"("fileName":"3.png")"},
                      {{"headers", file}, ""},
                      {{"text", file}, ""},
                      {{"roundtrip", file}, "identical (read with 0x8101001A)"},
                      {{"extract", file, "-d", "d"}, "3.png\n"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.arguments[0]);
    const Outcome outcome = run(row.arguments);
    const bool compares = row.arguments[0] == "roundtrip";
    EXPECT_EQ(outcome.exit, compares ? 0 : 65);
    EXPECT_EQ(outcome.err.find("cut.tnef: it ends too early (0x8101001A)") != std::string::npos, !compares);
    EXPECT_NE(outcome.out.find(row.out), std::string::npos) << outcome.out;
  }
  EXPECT_EQ(list("work/d"), (std::vector<std::string>{"001_1.png", "002_2.png", "003_3.png"}));
  EXPECT_EQ(get(path("work/d/002_2.png")), "image 2.png");
  EXPECT_EQ(run({"rewrite", file, "out"}).exit, 66);
  EXPECT_EQ(get(path("work/out")), "(missing)");
  EXPECT_EQ(run({"text", put("body.tnef", sampleStream("up"))}).out, std::string("Hello\r\n\0", 8));
}

TEST_F(ProgramTest, ExtractsFromAStreamInAMessage) {
  const Outcome outcome = run({"extract", put("m.eml", sampleMail("up")), "-d", "d"});
  EXPECT_EQ(outcome.exit, 0) << outcome.err;
  EXPECT_EQ(get(path("work/d/004_part.txt")), std::string("Hello\r\n\0", 8));
  EXPECT_EQ(get(path("work/d/005_up.txt")), "up");
  EXPECT_EQ(get(path("work/d/009_deep.txt")), "deep");
  EXPECT_EQ(list("work/d").size(), 5u);
}

TEST_F(ProgramTest, ReplacesAnAttachmentInside) {
  const std::string file = put("new.txt", "replaced");
  const Outcome bare = run({"rewrite", put("winmail.dat", sampleStream("up")), "out", "--replace-part", "2=" + file});
  EXPECT_EQ(bare.exit, 0) << bare.err;
  EXPECT_EQ(get(path("work/out")), sampleStream("replaced"));
  const Outcome mail = run({"rewrite", put("m.eml", sampleMail("up")), "out.eml", "--replace-part", "5=" + file});
  EXPECT_EQ(mail.exit, 0) << mail.err;
  EXPECT_EQ(get(path("work/out.eml")), sampleMail("replaced"));
  EXPECT_EQ(run({"rewrite", path("m.eml"), "no.eml", "--replace-part", "4=" + file}).exit, 65) << "the text";
  EXPECT_EQ(get(path("work/no.eml")), "(missing)");
}

}  // namespace
}  // namespace vomsg::test
