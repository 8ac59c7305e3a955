// A mailbox as a range of messages: an mbox file, a Maildir, or a folder of files. It is walked, never loaded: a
// million messages cost what one does.
//
//   for (vomsg::Mailbox::Entry& entry : mailbox) {
//     vomsg::Result<vomsg::Message> message = entry.message();
//     ...
//   }
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "vomsg/mail/Error.h"
#include "vomsg/mail/Mbox.h"
#include "vomsg/mail/Message.h"
#include "vomsg/mail/Resources.h"

namespace vomsg {

enum class MailboxKind { file, mbox, maildir, folder };  // file: one message in one file

class Mailbox {
 public:
  // One message of a mailbox; valid until the walk goes on.
  class Entry {
   public:
    unsigned long number() const { return mNumber; }   // from 1, in the order of the walk
    const std::string& path() const { return mPath; }  // the file it lies in
    // In an mbox: where its first byte stands, and how many there are.
    std::uint64_t offset() const { return mPlace.offset; }
    std::uint64_t size() const { return mPlace.size; }
    // For a human: "inbox.mbox#3", or the path of a file that holds nothing else.
    std::string place() const { return mFile ? mPath + "#" + std::to_string(mNumber) : mPath; }
    Result<Message> message() const;  // reads it
    // Its bytes as a resource of their own, for those who read messages themselves.
    Result<std::unique_ptr<VoMsgResourceLocator>> source() const;

   private:
    friend class Mailbox;
    unsigned long mNumber = 0;
    std::string mPath;
    inner::MboxPlace mPlace;
    inner::SharedDescriptor mFile;  // of an mbox
    MboxKind mMbox = MboxKind::mboxo;
  };

  class iterator {
   public:
    explicit iterator(Mailbox* mailbox) : mMailbox(mailbox) {}
    Entry& operator*() const { return mMailbox->mEntry; }
    iterator& operator++() {
      mMailbox->step();
      return *this;
    }
    bool operator!=(const iterator&) const { return !mMailbox->mIsOver; }

   private:
    Mailbox* mMailbox;
  };

  // What lies there: a folder with "cur" and "new" is a Maildir, a file that begins with a separator line an mbox.
  static Result<MailboxKind> detect(const std::string& path);
  static Result<Mailbox> open(const std::string& path, MboxKind mbox = MboxKind::mboxo);
  // For those who know better than detect().
  static Result<Mailbox> open(const std::string& path, MailboxKind kind, MboxKind mbox = MboxKind::mboxo);

  Mailbox(Mailbox&&) = default;
  Mailbox& operator=(Mailbox&&) = default;

  MailboxKind kind() const { return mKind; }
  // A walk from the first message on; one at a time. Files come in the order in which the folder gives them, those of a
  // folder with everything below it; names that begin with a dot, links and what is no file are passed over.
  iterator begin();
  iterator end() { return iterator(this); }
  // Why the last walk ended, when it was not at the end of the mailbox.
  const Status& status() const { return mStatus; }

 private:
  Mailbox() = default;
  void step();
  bool nextFile();
  bool isWanted(const std::filesystem::directory_entry& entry) const;

  std::string mPath;
  MailboxKind mKind = MailboxKind::file;
  MboxKind mMbox = MboxKind::mboxo;
  inner::SharedDescriptor mFile;
  std::uint64_t mFileSize = 0;
  std::unique_ptr<inner::MboxScanner> mScanner;
  std::filesystem::recursive_directory_iterator mFolder;
  bool mIsInNew = false;  // of a Maildir's two folders
  Entry mEntry;
  bool mIsOver = true;
  Status mStatus;
};

inline Result<std::unique_ptr<VoMsgResourceLocator>> Mailbox::Entry::source() const {
  std::unique_ptr<VoMsgResourceLocator> source;
  if (!mFile) {
    source = std::make_unique<VoMsgFileResource>(mPath.c_str(), nullptr, nullptr);
    return Result<std::unique_ptr<VoMsgResourceLocator>>(std::move(source));
  }
  if (mPlace.size >= inner::kSizeLimit) return Error(kVoReadFailed);
  if (mMbox == MboxKind::mboxrd) {
    inner::MboxUnquoter unquoter;
    std::string piece;
    std::size_t given = 0;
    std::uint64_t done = 0;
    const auto read = [&](char* target, std::size_t n) -> std::int64_t {
      while (given == piece.size() && done < mPlace.size) {
        char chunk[16384];
        const std::uint64_t rest = mPlace.size - done;
        const auto want = static_cast<std::size_t>(rest < sizeof chunk ? rest : sizeof chunk);
        if (inner::readAt(mFile->fd, chunk, want, mPlace.offset + done) != want) return -1;
        done += want;
        piece.clear();
        given = 0;
        unquoter.add(std::string_view(chunk, want), done == mPlace.size, piece);
      }
      const std::size_t count = std::min(n, piece.size() - given);
      piece.copy(target, count, given);
      given += count;
      return static_cast<std::int64_t>(count);
    };
    const Status copied = inner::copyAll(read, source);
    if (!copied) return copied.error();
    return Result<std::unique_ptr<VoMsgResourceLocator>>(std::move(source));
  }
  // A small one costs less as a block than through a reader of its own.
  constexpr std::uint64_t kSmall = 65536;
  if (mPlace.size > 0 && mPlace.size <= kSmall) {
    const auto size = static_cast<unsigned>(mPlace.size);
    source.reset(VoMsgResourceManager::createTmpResource(size));
    if (source && source->getResourceType() == VoMsgResourceLocator::memory) {
      auto& block = static_cast<VoMsgMemoryResource&>(*source);
      auto* const bytes = static_cast<char*>(block.getMemoryPointer(VoMsgResourceLocator::dataPart));
      if (inner::readAt(mFile->fd, bytes, size, mPlace.offset) != size) return Error(kVoReadFailed);
      return Result<std::unique_ptr<VoMsgResourceLocator>>(std::move(source));
    }
  }
  source = std::make_unique<inner::RangeResource>(mFile, mPlace.offset, static_cast<std::uint32_t>(mPlace.size));
  return Result<std::unique_ptr<VoMsgResourceLocator>>(std::move(source));
}

inline Result<Message> Mailbox::Entry::message() const {
  if (!mFile) return Message::open(mPath);
  Result<std::unique_ptr<VoMsgResourceLocator>> bytes = source();
  return bytes ? Message::from(std::move(*bytes)) : Result<Message>(bytes.error());
}

inline Result<MailboxKind> Mailbox::detect(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) {
    const bool isMaildir = fs::is_directory(path + "/cur", error) && fs::is_directory(path + "/new", error);
    return isMaildir ? MailboxKind::maildir : MailboxKind::folder;
  }
  if (!fs::exists(status)) return Error(kVoReadFailed);
  if (!fs::is_regular_file(status)) return MailboxKind::file;
  const inner::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (file.fd < 0) return Error(kVoReadFailed);
  char start[1024];
  const std::string_view bytes(start, inner::readAt(file.fd, start, sizeof start, 0));
  return inner::isMboxSeparator(bytes.substr(0, bytes.find('\n'))) ? MailboxKind::mbox : MailboxKind::file;
}

inline Result<Mailbox> Mailbox::open(const std::string& path, MboxKind mbox) {
  const Result<MailboxKind> kind = detect(path);
  return kind ? open(path, *kind, mbox) : Result<Mailbox>(kind.error());
}

inline Result<Mailbox> Mailbox::open(const std::string& path, MailboxKind kind, MboxKind mbox) {
  Mailbox mailbox;
  mailbox.mPath = path;
  mailbox.mKind = kind;
  mailbox.mMbox = mbox;
  if (kind == MailboxKind::mbox) {
    mailbox.mFile = std::make_shared<const inner::Descriptor>(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    struct stat status;
    if (mailbox.mFile->fd < 0 || ::fstat(mailbox.mFile->fd, &status) != 0 || !S_ISREG(status.st_mode)) {
      return Error(kVoReadFailed);
    }
    mailbox.mFileSize = static_cast<std::uint64_t>(status.st_size);
  } else if (kind != MailboxKind::file) {
    std::error_code error;
    if (!std::filesystem::is_directory(path, error)) return Error(kVoReadFailed);
  }
  return Result<Mailbox>(std::move(mailbox));
}

inline Mailbox::iterator Mailbox::begin() {
  mEntry = Entry();
  mStatus = Status();
  mIsOver = false;
  mIsInNew = false;
  std::error_code error;
  if (mKind == MailboxKind::mbox) {
    mScanner = std::make_unique<inner::MboxScanner>(mFile, mFileSize, mMbox);
    mEntry.mPath = mPath;
    mEntry.mFile = mFile;
    mEntry.mMbox = mMbox;
  } else if (mKind == MailboxKind::maildir || mKind == MailboxKind::folder) {
    mFolder =
        std::filesystem::recursive_directory_iterator(mKind == MailboxKind::maildir ? mPath + "/cur" : mPath, error);
    if (error) mStatus = Error(kVoReadFailed);
  }
  step();
  return iterator(this);
}

inline void Mailbox::step() {
  bool found = false;
  if (!mStatus.ok()) {
    mIsOver = true;
    return;
  }
  if (mKind == MailboxKind::mbox) {
    found = mScanner->next(mEntry.mPlace);
    if (!found && mScanner->failed()) mStatus = Error(kVoReadFailed);
  } else if (mKind == MailboxKind::file) {
    found = mEntry.mNumber == 0;
    mEntry.mPath = mPath;
  } else {
    found = nextFile();
  }
  mIsOver = !found;
  if (found) ++mEntry.mNumber;
}

inline bool Mailbox::isWanted(const std::filesystem::directory_entry& entry) const {
  std::error_code ignored;  // an entry that vanished is no file any more
  if (entry.path().filename().native().front() == '.') return false;
  return !entry.is_symlink(ignored) && entry.is_regular_file(ignored);
}

inline bool Mailbox::nextFile() {
  namespace fs = std::filesystem;
  for (;;) {
    std::error_code error;
    if (mFolder == fs::recursive_directory_iterator()) {
      if (mKind == MailboxKind::folder || mIsInNew) return false;
      mIsInNew = true;
      mFolder = fs::recursive_directory_iterator(mPath + "/new", error);
    }
    for (; !error && mFolder != fs::recursive_directory_iterator();) {
      const bool wanted = isWanted(*mFolder);
      std::error_code ignored;
      if (mFolder->path().filename().native().front() == '.' && mFolder->is_directory(ignored)) {
        mFolder.disable_recursion_pending();
      }
      if (wanted) mEntry.mPath = mFolder->path().string();
      mFolder.increment(error);
      if (wanted && !error) return true;
    }
    if (error) {
      mStatus = Error(kVoReadFailed);
      return false;
    }
  }
}

}  // namespace vomsg
