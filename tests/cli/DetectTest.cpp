// vomsg detect.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, DetectsCharsets) {
  std::filesystem::create_directory(path("texts"));
  const std::string plain = put("texts/1", "plain");
  const std::string greek = put("texts/2", "\u03B1\u03B2\u03B3\u03B4\u03B5");
  const Outcome json = run({"detect", "--json", path("texts"), "-"}, "\x1B$B");
  EXPECT_EQ(json.exit, 0) << json.err;
  EXPECT_EQ(json.out, "{\"schema\":1,\"file\":\"" + plain + "\",\"charset\":null,\"bytes\":5,\"detector\":null}\n" +
                          "{\"schema\":1,\"file\":\"" + greek +
                          "\",\"charset\":\"utf-8\",\"bytes\":10,\"detector\":\"VoMsgUTF8Detector\"}\n"
                          "{\"schema\":1,\"file\":\"-\",\"charset\":\"ISO-2022-JP\",\"bytes\":3,\"detector\":"
                          "\"VoMsgSchemeDetector\"}\n");
  const Outcome table = run({"detect", plain, greek, path("none")});
  EXPECT_EQ(table.exit, 66);
  EXPECT_NE(table.err.find("none: No such file"), std::string::npos) << table.err;
  EXPECT_EQ(table.out,
            "CHARSET             BYTES  DETECTOR                   FILE\n"
            "unknown                 5  -                          " +
                plain + "\n" + "utf-8                  10  VoMsgUTF8Detector          " + greek + "\n");
}

}  // namespace
}  // namespace vomsg::test
