// vomsg tree: the text form against the golden trees, the JSON form against one written by hand.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, TreesAreGolden) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VOMSG_TEST_DATA "/messages")) {
    if (entry.path().extension() != ".eml") continue;
    SCOPED_TRACE(entry.path().filename());
    const Outcome outcome = run({"tree", "--checksum", entry.path().string()});
    EXPECT_EQ(outcome.out, get(std::filesystem::path(entry.path()).replace_extension(".tree")));
    ++count;
  }
  EXPECT_GE(count, 20);
}

TEST_F(ProgramTest, TreeAsJson) {
  const std::string message = put("m.eml",
                                  "Subject: =?iso-8859-1?Q?caf=E9?=\r\nX-Raw: \xE9\r\n"
                                  "Content-Type: multipart/signed; boundary=b\r\n\r\n"
                                  "--b\r\n\r\n\xE9\r\n--b\r\nContent-Type: image/gif; name=\"\xFF.gif\"\r\n"
                                  "Content-Transfer-Encoding: base64\r\n\r\nAAEC\r\n--b--\r\n");
  const std::string want =
      R"({"schema":1,"file":")" + message +
      R"(","code":"0x00010000","root":)"
      R"({"number":0,"kind":"message","type":"0x20000002","contentType":"multipart/signed",)"
      R"("contentTypeParameters":{"boundary":"b"},"disposition":null,"dispositionParameters":null,"charset":null,"encoding":null,"fileName":null,)"
      R"("header":{"offset":0,"size":90},"body":{"offset":90,"size":104},"contentSize":null,"level":0,)"
      R"("flags":["signed"],"headers":[["Subject","café"],["X-Raw","�"],["Content-Type","multipart/signed"]],"children":[)"
      R"({"number":1,"kind":"part","type":"0x00000001","contentType":null,)"
      R"("contentTypeParameters":null,"disposition":null,"dispositionParameters":null,"charset":null,"encoding":null,"fileName":null,)"
      R"("header":{"offset":95,"size":2},"body":{"offset":97,"size":1},"contentSize":1,"level":0,)"
      R"("flags":["signed"],"headers":[],"children":[]},)"
      R"({"number":2,"kind":"part","type":"0x00000001","contentType":"image/gif",)"
      R"("contentTypeParameters":{"name":"�.gif"},"disposition":null,"dispositionParameters":null,"charset":null,"encoding":"base64","fileName":"�.gif",)"
      R"("header":{"offset":105,"size":76},"body":{"offset":181,"size":4},"contentSize":3,"level":0,)"
      R"("flags":["signed"],"headers":[["Content-Type","image/gif"],["Content-Transfer-Encoding","base64"]],)"
      R"("children":[]}]}})"
      "\n";
  const Outcome outcome = run({"tree", "--json", message});
  EXPECT_EQ(outcome.exit, 0);
  EXPECT_EQ(outcome.out, want);
  // One line for each file, a failed one too when it has a tree.
  const std::string partial = put("p.eml", "Content-Type: message/partial\r\n\r\nx");
  const Outcome several = run({"tree", "--json", message, path("none"), partial});
  EXPECT_EQ(several.exit, 66);
  EXPECT_EQ(std::count(several.out.begin(), several.out.end(), '\n'), 2);
  EXPECT_NE(several.out.find(R"("code":"0x8101100C")"), std::string::npos);
}

// Indents, brackets and flags must not cost a walk to the root for every entity.
TEST_F(ProgramTest, DeepTreesAreShown) {
  std::string deep;
  constexpr int kLevels = 3000;
  for (int i = 0; i < kLevels; ++i) {
    const std::string boundary = "b" + std::to_string(i);
    deep += "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary + "\r\n";
  }
  const std::string file = put("deep.eml", deep + "\r\ntext");
  const Outcome text = run({"tree", file});
  EXPECT_EQ(std::count(text.out.begin(), text.out.end(), '\n'), kLevels + 1);
  EXPECT_LT(text.out.size(), 300u * kLevels);
  const Outcome json = run({"tree", "--json", file});
  EXPECT_EQ(std::count(json.out.begin(), json.out.end(), '{'), std::count(json.out.begin(), json.out.end(), '}'));
  EXPECT_EQ(std::count(json.out.begin(), json.out.end(), '['), std::count(json.out.begin(), json.out.end(), ']'));
}

}  // namespace
}  // namespace vomsg::test
