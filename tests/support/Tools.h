// Independent programs of the system as witnesses. A test that wants one skips itself where it is absent.
#pragma once

#include <string>

namespace vomsg::test {

bool hasTool(const std::string& name);

// What `command` prints when it reads `input`.
std::string runTool(const std::string& command, const std::string& input);

// A new directory for one test, removed with all it holds at the end.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  std::string file(const std::string& name) const { return path + "/" + name; }
  std::string write(const std::string& name, const std::string& bytes) const;  // the new file's path
  std::size_t count() const;                                                   // how many files it holds
  std::string path;
};

void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);

}  // namespace vomsg::test
