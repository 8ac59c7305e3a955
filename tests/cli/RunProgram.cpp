#include "tests/cli/RunProgram.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
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

// The standard input is the file "stdin".
pid_t ProgramTest::start(const std::vector<std::string>& arguments, int out, int err) const {
  std::vector<const char*> argv{VOMSG_PROGRAM};
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const int streams[] = {open(path("stdin").c_str(), O_RDONLY), out, err};
    for (int fd = 0; fd < 3; ++fd) dup2(streams[fd], fd);
    if (chdir(path("work").c_str()) == 0) execv(argv[0], const_cast<char**>(argv.data()));
    _exit(127);
  }
  close(out);
  if (err != out) close(err);
  return child;
}

namespace {
int exitOf(pid_t child) {
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
}  // namespace

Outcome ProgramTest::run(const std::vector<std::string>& arguments, const std::string& input) const {
  put("stdin", input);
  const int out = creat(path("stdout").c_str(), 0600), err = creat(path("stderr").c_str(), 0600);
  const int exit = exitOf(start(arguments, out, err));
  return {exit, get(path("stdout")), get(path("stderr"))};
}

Outcome ProgramTest::runOnTerminal(const std::vector<std::string>& arguments) const {
  put("stdin", "");
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) return {-1, "", "no terminal"};
  const int out = open(ptsname(terminal), O_RDWR | O_NOCTTY);
  termios raw;
  tcgetattr(out, &raw);
  cfmakeraw(&raw);
  tcsetattr(out, TCSANOW, &raw);
  const pid_t child = start(arguments, out, out);
  Outcome outcome{0, "", ""};
  char chunk[4096];
  for (ssize_t n = 0; (n = read(terminal, chunk, sizeof chunk)) > 0;)
    outcome.out.append(chunk, static_cast<std::size_t>(n));
  close(terminal);
  outcome.exit = exitOf(child);
  return outcome;
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
