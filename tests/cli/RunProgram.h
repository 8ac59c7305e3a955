// Runs the program as a user does, in a folder of the test's own.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace vomsg::test {

struct Outcome {
  int exit;  // the signal's number plus 128 when one ended the program
  std::string out;
  std::string err;
};

class ProgramTest : public ::testing::Test {
 protected:
  void SetUp() override;     // makes the folder, empty
  void TearDown() override;  // removes it

  Outcome run(const std::vector<std::string>& arguments, const std::string& input = "") const;
  // The same with a terminal as standard output and standard error, both in `out`. Exit -1 where there is none.
  Outcome runOnTerminal(const std::vector<std::string>& arguments) const;
  std::string path(const std::string& name) const { return (folder / name).string(); }
  std::string put(const std::string& name, const std::string& bytes) const;  // returns the path
  static std::string get(const std::filesystem::path& file);                 // "(missing)" when there is none
  static std::string sample(const std::string& name) { return VOMSG_TEST_DATA "/messages/" + name; }
  std::vector<std::string> list(const std::string& name = "") const;  // names in a folder, sorted

  std::filesystem::path folder;

 private:
  pid_t start(const std::vector<std::string>& arguments, int out, int err) const;
};

}  // namespace vomsg::test
