#include "tests/support/Tools.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vomsg::test {

bool hasTool(const std::string& name) { return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0; }

std::string runTool(const std::string& command, const std::string& input) {
  const ScratchDirectory scratch;
  writeFile(scratch.path + "/in", input);
  const std::string line = "cd " + scratch.path + " && (" + command + ") <in >out 2>/dev/null";
  return std::system(line.c_str()) == 0 ? readFile(scratch.path + "/out") : "(the tool failed)";
}

ScratchDirectory::ScratchDirectory() : path((std::filesystem::temp_directory_path() / "vomsg-test-XXXXXX").string()) {
  if (!mkdtemp(path.data())) path.clear();
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  if (!path.empty()) std::filesystem::remove_all(path, ignored);
}

std::string ScratchDirectory::write(const std::string& name, const std::string& bytes) const {
  writeFile(file(name), bytes);
  return file(name);
}

std::size_t ScratchDirectory::count() const {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path), {}));
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace vomsg::test
