#include "tests/cli/RunProgram.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace vomsg::test {

void ProgramTest::SetUp() {
  std::string name = (std::filesystem::temp_directory_path() / "vomsg-cli-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  folder = name;
  std::filesystem::create_directory(folder / "work");
}

void ProgramTest::TearDown() { std::filesystem::remove_all(folder); }

Outcome ProgramTest::run(const std::vector<std::string>& arguments, const std::string& input) const {
  put("stdin", input);
  std::vector<const char*> argv{VOMSG_PROGRAM};
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const int streams[] = {open(path("stdin").c_str(), O_RDONLY), creat(path("stdout").c_str(), 0600),
                           creat(path("stderr").c_str(), 0600)};
    for (int fd = 0; fd < 3; ++fd) dup2(streams[fd], fd);
    if (chdir(path("work").c_str()) == 0) execv(argv[0], const_cast<char**>(argv.data()));
    _exit(127);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), get(path("stdout")), get(path("stderr"))};
}

std::string ProgramTest::put(const std::string& name, const std::string& bytes) const {
  std::ofstream(path(name), std::ios::binary) << bytes;
  return path(name);
}

std::string ProgramTest::get(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return "(missing)";
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::string> ProgramTest::list(const std::string& name) const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder / name)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace vomsg::test
