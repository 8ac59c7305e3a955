// vomsg decode and vomsg encode.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, EncodesAndDecodesSingleStreams) {
  std::string bytes;
  for (int i = 0; i < 3000; ++i) bytes += static_cast<char>(i * i >> 3);
  for (const std::string encoding : {"uuencode", "binhex", "base64", "qp"}) {
    // A text ends in a line end, which quoted-printable adds where it is missing.
    const std::string content = encoding == "qp" ? "caf\xE9 = \r\n" : bytes;
    const std::string file = put("my file", content);
    const Outcome encoded = run({"encode", "--as", encoding, file, "-"});
    EXPECT_EQ(encoded.exit, 0) << encoded.err;
    EXPECT_EQ(run({"decode", "--as", encoding, "-", "-"}, encoded.out).out, content) << encoding;
  }
  EXPECT_EQ(run({"encode", "--as", "uuencode", put("my file", ""), "-"}).out, "begin 666 my file\r\n`\r\nend\r\n");
  EXPECT_EQ(run({"encode", "--as", "uuencode", "--name", "n", "-", "-"}, "").out, "begin 666 n\r\n`\r\nend\r\n");
}

TEST_F(ProgramTest, DecodesCompressedRtf) {
  const std::string stream("\x14\0\0\0\x06\0\0\0LZFu....\x03\0\4\x0D\0.xyz", 24);  // with an end mark
  EXPECT_EQ(run({"decode", "--as", "rtf", "-", "-"}, stream).out, "{\\rtf1");
  EXPECT_EQ(run({"decode", "--as", "rtf", "-", "-"}, std::string("\x0F\0\0\0\x03\0\0\0MELA....abc", 19)).out, "abc");
  for (const std::string damaged : {"", "no header of that kind"})
    EXPECT_EQ(run({"decode", "--as", "rtf", "-", "out"}, damaged).exit, 65);
}

TEST_F(ProgramTest, CodecsFailWithOneSentence) {
  const Outcome damaged = run({"decode", "--as", "binhex", "-", "out"}, "nothing here\n");
  EXPECT_EQ(damaged.exit, 65);
  EXPECT_EQ(std::count(damaged.err.begin(), damaged.err.end(), '\n'), 1) << damaged.err;
  EXPECT_EQ(run({"encode", "--as", "rtf", "-", "-"}).exit, 64);
  EXPECT_EQ(run({"decode", "--as", "base64", "missing", "-"}).exit, 66);
}

}  // namespace
}  // namespace vomsg::test
