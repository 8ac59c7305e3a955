#include "cli/Messages.h"

#include <sys/stat.h>

#include <charconv>
#include <map>

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Printable.h"
#include "cli/Workers.h"
#include "vomsg/mail/Mailbox.h"

namespace cli {

namespace {

struct MailboxOptions {
  vomsg::MboxKind mbox = vomsg::MboxKind::mboxo;
  bool asMessage = false;
  unsigned processes = 1;
} gOptions;

bool isMbox(const std::string& file) {
  if (file == "-" || gOptions.asMessage) return false;
  const auto kind = vomsg::Mailbox::detect(file);
  return kind && *kind == vomsg::MailboxKind::mbox;
}

vomsg::Mailbox openMailbox(const std::string& file) {
  auto mailbox = vomsg::Mailbox::open(file, gOptions.mbox);
  if (!mailbox) throw Failure(kNoInput, file + ": " + mailbox.error().sentence());
  return std::move(*mailbox);
}

std::unique_ptr<VoMsgResourceLocator> sourceOf(const vomsg::Mailbox::Entry& entry) {
  auto source = entry.source();
  if (!source) throw Failure(kNoInput, entry.place() + ": " + source.error().sentence());
  return std::move(*source);
}

// "inbox#12": the mailbox and 12. 0 when the name does not end so, or is that of a file.
unsigned long numberIn(const std::string& file, std::string& mailbox) {
  const auto hash = file.rfind('#');
  struct stat status;
  if (hash == file.npos || hash == 0 || stat(file.c_str(), &status) == 0) return 0;
  unsigned long number = 0;
  const char* const end = file.data() + file.size();
  const auto [stop, error] = std::from_chars(file.data() + hash + 1, end, number);
  if (error != std::errc() || stop != end) return 0;
  mailbox = file.substr(0, hash);
  return number;
}

std::unique_ptr<VoMsgResourceLocator> openNumbered(const std::string& path, unsigned long number) {
  vomsg::Mailbox mailbox = openMailbox(path);
  for (vomsg::Mailbox::Entry& entry : mailbox) {
    if (entry.number() == number) return sourceOf(entry);
  }
  throw Failure(kNoInput, path + ": there is no message " + std::to_string(number));
}

std::uint64_t sizeOf(const std::string& file) {
  struct stat status;
  return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

// Hands the messages of all files to `each`, together with how many bytes lie before each. One that cannot be opened
// comes with an empty source and the Failure.
struct Walk {
  const std::vector<std::string>& files;
  std::uint64_t bytesBefore = 0;

  using Each = std::function<void(MessageInput& input, const Failure* failure)>;
  void run(const Each& each) {
    for (const std::string& file : files) {
      const std::uint64_t start = bytesBefore;
      try {
        runFile(file, start, each);
      } catch (const Failure& failure) {
        MessageInput none{file, nullptr, files.size() > 1};
        each(none, &failure);
      }
      bytesBefore = start + sizeOf(file);
    }
  }

 private:
  void runFile(const std::string& file, std::uint64_t start, const Each& each) {
    std::string path;
    const unsigned long number = numberIn(file, path);
    if (number != 0 || !isMbox(file)) {
      MessageInput input{file, number != 0 ? openNumbered(path, number) : openInput(file), files.size() > 1};
      return each(input, nullptr);
    }
    vomsg::Mailbox mailbox = openMailbox(file);
    for (vomsg::Mailbox::Entry& entry : mailbox) {
      bytesBefore = start + entry.offset();
      MessageInput input{entry.place(), sourceOf(entry), true};
      each(input, nullptr);
    }
    if (!mailbox.status()) throw Failure(kNoInput, file + ": " + mailbox.status().error().sentence());
  }
};

int runOne(MessageInput& input, const Failure* failure, const MessageWork& work) {
  try {
    if (failure != nullptr) throw Failure(*failure);
    return work(input);
  } catch (const Failure& told) {
    complain(told.what());
    return told.exit();
  }
}

}  // namespace

std::string titleOf(const MessageInput& input) { return input.several ? "== " + printable(input.place) + "\n" : ""; }

void addMailboxOptions(CLI::App& app) {
  static const std::map<std::string, vomsg::MboxKind> kinds = {
      {"mboxo", vomsg::MboxKind::mboxo}, {"mboxrd", vomsg::MboxKind::mboxrd}, {"mboxcl2", vomsg::MboxKind::mboxcl2}};
  app.add_option_function<std::string>(
         "--mbox", [](const std::string& kind) { gOptions.mbox = kinds.at(kind); },
         "How mbox files keep lines that look like separators: mboxo, mboxrd, mboxcl2 (mboxo)")
      ->type_name("KIND")
      ->check(CLI::IsMember({"mboxo", "mboxrd", "mboxcl2"}))
      ->group("Mailboxes");
  app.add_option_function<std::string>(
         "--as", [](const std::string&) { gOptions.asMessage = true; }, "Take each file as one message: message")
      ->type_name("WHAT")
      ->check(CLI::IsMember({"message"}))
      ->group("Mailboxes");
  app.add_option("-j,--jobs", gOptions.processes, "Work on that many messages at a time, where several are named (1)")
      ->type_name("N")
      ->check(CLI::Range(1, 64))
      ->group("Mailboxes");
}

int forEachMessage(const std::vector<std::string>& arguments, const MessageWork& work,
                   const std::function<void(int)>& onResult, bool inOne) {
  const std::vector<std::string> files = expandFolders(arguments);
  if (files.empty()) throw Failure(kNoInput, "there is no file in what was named");
  std::uint64_t bytes = 0;
  for (const std::string& file : files) bytes += sizeOf(file);
  Progress progress(files.size() > 1 || isMbox(files[0]), bytes);
  int exit = kOk;
  const auto finish = [&](int result) {
    if (onResult) onResult(result);
    if (exit == kOk) exit = result;
    progress.count(result != kOk);
  };
  Walk walk{files};
  if (gOptions.processes == 1 || inOne) {
    walk.run([&](MessageInput& input, const Failure* failure) {
      progress.next(input.place, walk.bytesBefore);
      finish(runOne(input, failure, work));
    });
  } else {
    const auto run = [&](unsigned worker, unsigned workers, const SendItem& send) {
      unsigned long number = 0;
      walk.run([&](MessageInput& input, const Failure* failure) {
        if (number++ % workers != worker) return;
        Captured captured;
        const int result = runOne(input, failure, work);
        send({result, input.place, walk.bytesBefore, captured.out(), captured.err()});
      });
    };
    forEachItem(gOptions.processes, run, [&](const Item& item) {
      progress.next(item.name, item.bytesBefore);
      print(item.out);
      reprint(item.err);
      finish(item.exit);
    });
  }
  progress.sumUp();
  return exit;
}

int forEachMessageIn(const std::string& file, const MessageWork& work) {
  const auto kind = vomsg::Mailbox::detect(file);
  if (kind && *kind == vomsg::MailboxKind::folder) throw Failure(kNoInput, file + ": this is a folder");
  return forEachMessage({file}, work);
}

std::unique_ptr<VoMsgResourceLocator> openWhole(const std::string& file) {
  std::string path;
  const unsigned long number = file == "-" ? 0 : numberIn(file, path);
  return number != 0 ? openNumbered(path, number) : openInput(file);
}

std::unique_ptr<VoMsgResourceLocator> openOne(const std::string& file) {
  if (!isMbox(file)) return openWhole(file);
  vomsg::Mailbox mailbox = openMailbox(file);
  std::unique_ptr<VoMsgResourceLocator> only;
  for (vomsg::Mailbox::Entry& entry : mailbox) {
    if (only) throw Failure(kUsage, file + ": a mailbox; " + file + "#1 names its first message");
    only = sourceOf(entry);
  }
  return only ? std::move(only) : openInput(file);
}

}  // namespace cli
