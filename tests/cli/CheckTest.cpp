// vomsg check.
#include "tests/cli/RunProgram.h"

namespace vomsg::test {
namespace {

TEST_F(ProgramTest, ChecksMessages) {
  const std::string twice = "Subject: a\r\nSubject: b\r\n\r\nText\r\n";
  const std::string odd = put("odd.eml", twice);
  const std::string nested = put("nested.eml",
                                 "Content-Type: message/rfc822\r\nContent-Transfer-Encoding: base64\r\n\r\n"
                                 "U3ViamVjdDogYQ0KU3ViamVjdDogYg0KDQpUZXh0DQo=\r\n");
  const std::string fine = put("fine.eml", "Subject: a\r\n\r\nText\r\n");
  struct Row {
    std::vector<std::string> arguments;
    int exit;
    std::string out;
  };
  const std::string repeated = "ambiguous 109 repeated-subject: Subject stands several times. (part ";
  const Row rows[] = {
      {{odd}, 1, odd + ":12: " + repeated + "0)\n"},
      {{odd, "--level", "dangerous"}, 0, odd + ":12: " + repeated + "0)\n"},
      {{fine, "--level", "note"}, 0, ""},
      {{nested},
       1,
       nested +
           ":30: ambiguous 224 encoded-multipart: A multipart or message declares a transfer encoding that would "
           "hide its structure. (part 0)\n" +
           nested + ":67+12: " + repeated + "1)\n"},
      {{path("none.eml")}, 66, ""},
      {{}, 64, ""},
      {{"--explain", "nonsense"}, 64, ""},
  };
  for (const Row& row : rows) {
    std::vector<std::string> arguments = {"check"};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exit, row.exit) << outcome.err;
    EXPECT_EQ(outcome.out, row.out);
  }
  const Outcome json = run({"check", "--json", odd});
  EXPECT_NE(json.out.find("\"name\":\"repeated-subject\",\"level\":\"ambiguous\""), std::string::npos) << json.out;
  EXPECT_EQ(run({"check", "--explain", "109"}).out, run({"check", "--explain", "repeated-subject"}).out);
}

// The document is made from what the program says: `vomsg check --explain all` behind its introduction.
TEST_F(ProgramTest, TheDocumentExplainsEveryAnomaly) {
  const std::string document = get(VOMSG_TEST_DATA "/../../docs/anomalies.md");
  const std::string explained = run({"check", "--explain", "all"}).out;
  EXPECT_GT(std::count(explained.begin(), explained.end(), '#'), 2 * 40);
  EXPECT_EQ(document.substr(document.find("\n## ") + 1), explained);
}

}  // namespace
}  // namespace vomsg::test
