// vomsg extract: contents, and names that want out of the folder.
#include <unistd.h>

#include "tests/cli/RunProgram.h"
#include "tests/support/FileSizeLimit.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, ExtractsEveryLeafDecoded) {
  const Outcome outcome = run({"extract", sample("mixed_base64.eml"), "-d", path("work/new/parts")});
  EXPECT_EQ(outcome.exit, 0) << outcome.err;
  EXPECT_EQ(list("work/new/parts"), (std::vector<std::string>{"001_part.txt", "002_dot.png", "003_bytes.bin"}));
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(get(path("work/new/parts/003_bytes.bin")), all);
  EXPECT_EQ(outcome.out, path("work/new/parts/001_part.txt\n") + path("work/new/parts/002_dot.png\n") +
                             path("work/new/parts/003_bytes.bin\n"));
}

TEST_F(ProgramTest, ExtractsThePartsOfNestedMessages) {
  for (const char* name : {"nested_plain.eml", "nested_base64.eml"}) {
    const std::string folderName = std::string("work/") + name;
    EXPECT_EQ(run({"extract", sample(name), "-d", path(folderName)}).exit, 0);
    EXPECT_EQ(list(folderName), (std::vector<std::string>{"001_part.txt", "004_part.txt", "005_sums.csv"}));
    EXPECT_EQ(get(path(folderName + "/005_sums.csv")), "a,b\r\n1,2");
  }
}

TEST_F(ProgramTest, NeverOverwritesAndNeverFollowsLinks) {
  const std::string plain = put("m.eml", "Content-Type: a/b; name=x.txt\r\n\r\nnew");
  put("victim", "old");
  put("work/000_x.txt", "mine");
  ASSERT_EQ(symlink(path("victim").c_str(), path("work/000_x-2.txt").c_str()), 0);
  EXPECT_EQ(run({"extract", plain, "-d", "."}).exit, 0);
  EXPECT_EQ(get(path("victim")), "old");
  EXPECT_EQ(get(path("work/000_x.txt")), "mine");
  EXPECT_EQ(get(path("work/000_x-3.txt")), "new");
}

TEST_F(ProgramTest, HostileNamesStayInside) {
  std::string message = "Content-Type: multipart/mixed; boundary=b\r\n\r\n";
  for (const char* name : {"../../out", "/etc/cron.d/x", "..", "a/../../b", "=?utf-8?Q?..=2F..=2Fup?=", "nul\\x"}) {
    message += std::string("--b\r\nContent-Disposition: attachment; filename=\"") + name + "\"\r\n\r\nx\r\n";
  }
  EXPECT_EQ(run({"extract", put("m.eml", message + "--b--\r\n"), "-d", "d"}).exit, 0);
  EXPECT_EQ(list("work"), std::vector<std::string>{"d"});
  EXPECT_EQ(list("work/d").size(), 6u);
}

TEST_F(ProgramTest, AFullDiskLeavesNothing) {
  const std::string large = put("large.eml", "A: b\r\n\r\n" + std::string(5000, 'x'));
  {
    const FileSizeLimit limit(1000);
    EXPECT_EQ(run({"rewrite", large, "full.eml"}).exit, 73);
  }
  EXPECT_EQ(get(path("work/full.eml")), "(missing)");
  // A part that cannot be read leaves no file, the others do.
  const std::string text =
      put("m.eml",
          "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\n\r\n--b\r\n"
          "Content-Transfer-Encoding: mac-binhex40\r\n\r\nno BinHex\r\n--b\r\n\r\nlast\r\n--b--\r\n");
  run({"extract", text, "-d", "d"});
  EXPECT_EQ(get(path("work/d/001_part.txt")), "");
  EXPECT_EQ(get(path("work/d/003_part.txt")), "last");
}

}  // namespace
}  // namespace vomsg::test
