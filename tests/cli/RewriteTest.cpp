// vomsg rewrite and roundtrip.
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, UneditedMessagesComeOutAsTheyWere) {
  for (const auto& entry : std::filesystem::directory_iterator(VOMSG_TEST_DATA "/messages")) {
    if (entry.path().extension() != ".eml") continue;
    SCOPED_TRACE(entry.path().filename());
    const Outcome outcome = run({"roundtrip", entry.path().string()});
    const bool marked = run({"roundtrip", "--explain", entry.path().string()}).out.find("mark: ") != std::string::npos;
    EXPECT_EQ(outcome.exit, marked ? 1 : 0) << outcome.out;
    if (marked) continue;
    EXPECT_EQ(run({"rewrite", entry.path().string(), "out"}).exit, 0);
    EXPECT_EQ(get(path("work/out")), get(entry.path()));
  }
}

TEST_F(ProgramTest, RoundtripExplainsWhatItMarks) {
  const std::string bytes = "Subject: x\r\nno field at all\r\nTo: a@example.org\r\n\r\nbody";
  const Outcome outcome = run({"roundtrip", "--explain", put("m.eml", bytes)});
  EXPECT_EQ(outcome.exit, 1);
  EXPECT_EQ(outcome.out, path("m.eml: differs at 12\n") + "mark: a line that is no header field at 12\n");
}

TEST_F(ProgramTest, EditsChangeTheirRangeAlone) {
  const std::string before = get(sample("mixed_base64.eml"));
  const std::string file = put("new.txt", "replaced\r\n");
  const Outcome outcome =
      run({"rewrite", sample("mixed_base64.eml"), "out", "--remove-header", "received", "--set-header",
           "Subject=Zwei Grüße", "--set-header", "X-Seen=yes=no", "--replace-part", "3=" + file, "--remove-part", "2"});
  ASSERT_EQ(outcome.exit, 0) << outcome.err;
  const std::string after = get(path("work/out"));
  const auto headerEnd = after.find("\r\n\r\n");
  const std::string header = after.substr(0, headerEnd);
  EXPECT_EQ(header.find("Received:"), std::string::npos);
  EXPECT_NE(header.find("X-Seen: yes=no"), std::string::npos);
  EXPECT_NE(run({"headers", path("work/out")}).out.find("Subject: Zwei Grüße\n"), std::string::npos);
  EXPECT_EQ(after.find("dot.png"), std::string::npos);
  EXPECT_NE(after.find("cmVwbGFjZWQNCg=="), std::string::npos) << "keeps its transfer encoding";
  const auto firstPart = [](const std::string& text) {
    const auto start = text.find("\r\n\r\n");
    return text.substr(start, text.find("--=_mixed_1f0a", text.find("Der Punkt")) - start);
  };
  EXPECT_EQ(firstPart(after), firstPart(before)) << "preamble and first part are copied";
  EXPECT_EQ(after.substr(after.rfind("--=_mixed")), before.substr(before.rfind("--=_mixed")));
}

TEST_F(ProgramTest, HeaderValuesCannotSmuggleFields) {
  ASSERT_EQ(run({"rewrite", sample("plain.eml"), "out", "--set-header", "Subject=a\r\nBcc: evil@example.com"}).exit, 0);
  EXPECT_EQ(get(path("work/out")).find("\nBcc:"), std::string::npos);
  EXPECT_EQ(run({"rewrite", sample("plain.eml"), "o2", "--set-header", "X: y\r\nBcc=z"}).exit, 64);
  EXPECT_EQ(list("work"), std::vector<std::string>{"out"});
}

TEST_F(ProgramTest, TheOutputMayBeTheInput) {
  const std::string file = put("m.eml", get(sample("plain.eml")));
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  ASSERT_EQ(symlink(file.c_str(), path("work/link").c_str()), 0);
  ASSERT_EQ(run({"rewrite", file, "link", "--remove-header", "Received"}).exit, 0);
  EXPECT_EQ(get(file).substr(0, 11), "Message-ID:");
  EXPECT_TRUE(std::filesystem::is_symlink(path("work/link")));
  struct stat status;
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(ProgramTest, FailedRewritesLeaveNothing) {
  const std::string kept = put("work/out", "kept");
  for (const char* edit : {"--replace-part=0=none", "--remove-part=0", "--remove-part=99", "--replace-part=1x=y"}) {
    SCOPED_TRACE(edit);
    EXPECT_NE(run({"rewrite", sample("alternative.eml"), "out", edit}).exit, 0);
    EXPECT_EQ(get(kept), "kept");
    EXPECT_EQ(list("work"), std::vector<std::string>{"out"});
  }
}

}  // namespace
}  // namespace vomsg::test
