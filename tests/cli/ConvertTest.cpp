// vomsg convert.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, ConvertsThroughTheFactory) {
  const std::string greek = put("g", "\xCE\xB1\xCE\xB2 \xD7\x90");  // alpha, beta, Hebrew alef
  const Outcome lenient = run({"convert", "-v", "--from", "utf-8", "--to", "iso-8859-7", greek, "-"});
  EXPECT_EQ(lenient.exit, 0);
  EXPECT_EQ(lenient.out, "\xE1\xE2 ?");
  EXPECT_NE(lenient.err.find("VoMsgUTF8ToISO8859EuConverter"), std::string::npos) << lenient.err;
  EXPECT_EQ(run({"convert", "--stop", "--from", "utf-8", "--to", "iso-8859-7", greek, "out"}).exit, 65);
  EXPECT_TRUE(list("work").empty());
  EXPECT_EQ(run({"convert", "--from", "windows-1252", "--to", "utf-8", "-", "-"}, "\x80").out, "\xE2\x82\xAC");
}

TEST_F(ProgramTest, ConvertRefusesToCutAtNul) {
  const Outcome outcome = run({"convert", "--from", "us-ascii", "--to", "utf-8", "-", "-"}, std::string("a\0b", 3));
  EXPECT_EQ(outcome.exit, 65);
  EXPECT_NE(outcome.err.find("byte 1 is NUL"), std::string::npos) << outcome.err;
}

}  // namespace
}  // namespace vomsg::test
