// vomsg disclaim and strip-signature.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, DisclaimAddsTheTextAndKeepsTheRest) {
  const std::string text = put("d.txt",
                               "Gr\xC3\xBC\xC3\x9F"
                               "e\n");
  const Outcome outcome = run({"disclaim", sample("mixed_base64.eml"), "out", "--text", text, "--position", "top"});
  ASSERT_EQ(outcome.exit, 0) << outcome.err;
  EXPECT_EQ(run({"text", path("work/out")})
                .out.rfind("Gr\xC3\xBC\xC3\x9F"
                           "e",
                           0),
            0u);
  const std::string before = get(sample("mixed_base64.eml"));
  const std::string attachment = before.substr(before.find("--=_mixed_1f0a", before.find("Der Punkt")));
  EXPECT_NE(get(path("work/out")).find(attachment), std::string::npos);
}

TEST_F(ProgramTest, DisclaimWrapsOnRequest) {
  const std::string text = put("d.txt", "D");
  ASSERT_EQ(run({"disclaim", sample("plain.eml"), "out", "--text", text, "--mode", "wrap"}).exit, 0);
  EXPECT_NE(get(path("work/out")).find(get(sample("plain.eml"))), std::string::npos);
  EXPECT_EQ(run({"disclaim", sample("plain.eml"), "o2", "--text", text, "--mode", "fold"}).exit, 64);
  EXPECT_EQ(run({"disclaim", sample("plain.eml"), "o2", "--text", path("none")}).exit, 66);
  for (const char* option : {"--charset", "--prefer"})
    EXPECT_EQ(run({"disclaim", sample("plain.eml"), "o2", "--text", text, option, "x-none"}).exit, 64);
  EXPECT_EQ(list("work"), std::vector<std::string>{"out"});
}

TEST_F(ProgramTest, SignaturesGoWhenTheyAreBrokenOrUnwanted) {
  const std::string text = put("d.txt", "D");
  ASSERT_EQ(run({"disclaim", sample("signed.eml"), "a", "--text", text, "--strip-signature"}).exit, 0);
  ASSERT_EQ(run({"strip-signature", sample("signed.eml"), "b"}).exit, 0);
  for (const char* name : {"work/a", "work/b"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(get(path(name)).find("multipart/signed"), std::string::npos);
    EXPECT_EQ(run({"tree", path(name)}).out.find("signature"), std::string::npos);
  }
}

}  // namespace
}  // namespace vomsg::test
