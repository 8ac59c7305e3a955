// vomsg extract: the decoded content of every leaf, as files.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Messages.h"
#include "cli/Output.h"
#include "cli/SafeName.h"

namespace cli {

namespace {

struct Options {
  std::string file;
  std::string folder;
};

// The folder that everything is created in, held open: renaming it meanwhile leads nowhere else.
class Folder {
 public:
  explicit Folder(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    mFile = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (mFile < 0) throw Failure(kCannotCreate, path + ": " + std::strerror(errno));
  }
  ~Folder() { close(mFile); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  int descriptor() const { return mFile; }

 private:
  int mFile;
};

void extractLeaf(const Folder& folder, const std::string& path, unsigned number, VoMsgEntity* leaf) {
  const char* name = leaf->getFileName("utf-8");
  const char* type = leaf->getContentType();
  OutputFile output(folder.descriptor(), path,
                    safeFileName(number, name != nullptr ? name : "", type != nullptr ? type : ""));
  int result = 0;
  leaf->getContent(result, &output);
  const auto code = static_cast<VoErrorCode>(result);
  // An empty body is no failure here: its file is empty too.
  if (voFailed(code) && code != kVoNoContent) throw failureOf(code, "part " + std::to_string(number));
  output.commit();
  print(output.path() + "\n");
}

int extract(const Options& options, MessageInput& input) {
  const std::string& file = input.place;
  const OpenedMessage opened = openMessage(file, std::move(input.source));
  // The parts of each message of a mailbox have a folder of their own, named like its number.
  const std::string path = options.folder + (input.several ? "/" + file.substr(file.rfind('#') + 1) : "");
  const Folder folder(path);
  int exit = kOk;
  EntityWalk walk(opened.message.get());
  while (walk.next()) {
    if (!walk.isLeaf()) continue;
    try {
      extractLeaf(folder, path, walk.number(), walk.entity());
    } catch (const Failure& failure) {
      if (failure.exit() == kCannotCreate) throw;
      complain(failure.what());
      if (exit == kOk) exit = failure.exit();
    }
  }
  checkReading(opened, file);
  return exit;
}

const Command kExtract("extract", "Save the decoded content of every part", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->file, "The message; - for the standard input")->required();
  app.add_option("-d,--directory", options->folder, "Where the files go; made when it is missing")->required();
  return [options] {
    return forEachMessageIn(options->file, [&](MessageInput& input) { return extract(*options, input); });
  };
});

}  // namespace

}  // namespace cli
