// vomsg roundtrip: whether a message that nobody edited is written back as it was.

#include <algorithm>
#include <memory>
#include <optional>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Marks.h"
#include "cli/Messages.h"
#include "cli/Printable.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"

namespace cli {

namespace {

// A target that keeps nothing: it compares what is written with the source.
class Comparison : public VoMsgResourceLocator {
 public:
  explicit Comparison(std::unique_ptr<VoMsgBufferedReader> source)
      : VoMsgResourceLocator(nullptr, nullptr), mSource(std::move(source)) {}

  // The first offset at which the two differ, their common length when one is longer.
  std::optional<std::uint64_t> firstDifference() {
    char byte;
    if (!mDifference && mSource->read(&byte, 1) == 1) mDifference = mOffset;
    return mDifference;
  }

  int getResourceType() const override { return 0; }
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType) const override { return nullptr; }
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType) const override {
    return new Writer(const_cast<Comparison&>(*this));
  }
  bool equal(VoMsgResourceLocator* other) const override { return this == other; }
  unsigned getSize(VoMsgResourceDataType) const override { return 0; }
  bool hasResourceFork() const override { return false; }

 private:
  class Writer : public VoMsgBufferedWriter {
   public:
    explicit Writer(Comparison& owner) : VoMsgBufferedWriter(0), mOwner(owner) {}
    ~Writer() override { Writer::writeBuffer(); }
    bool open() override { return true; }
    bool close() override { return writeBuffer(); }
    bool isOpen() override { return true; }
    bool writeBuffer() override {
      mOwner.compare(mpBuffer, mUsed);
      mUsed = 0;
      return true;
    }

   private:
    Comparison& mOwner;
  };

  void compare(const char* data, unsigned size) {
    char expected[4096];
    while (size > 0 && !mDifference) {
      const unsigned wanted = size < sizeof expected ? size : static_cast<unsigned>(sizeof expected);
      const unsigned have = mSource->read(expected, wanted);
      const auto same = static_cast<unsigned>(std::mismatch(data, data + have, expected).first - data);
      if (same < wanted) mDifference = mOffset + same;
      mOffset += same;
      data += wanted;
      size -= wanted;
    }
  }

  std::unique_ptr<VoMsgBufferedReader> mSource;
  std::uint64_t mOffset = 0;
  std::optional<std::uint64_t> mDifference;
};

struct Options {
  std::vector<std::string> files;
  bool explain = false;
};

int checkFile(const Options& options, const std::string& file, std::unique_ptr<VoMsgResourceLocator> source) {
  std::unique_ptr<VoMsgBufferedReader> original(source->getInputStream(VoMsgResourceLocator::dataPart));
  if (!original) throw failureOf(kVoReadFailed, file);
  const OpenedMessage opened = openMessage(file, std::move(source));
  Comparison target(std::move(original));
  const VoErrorCode written = opened.message->writeTo(&target);
  if (voFailed(written)) throw failureOf(written, file);
  const std::optional<std::uint64_t> difference = target.firstDifference();
  std::string report = printable(file) + ": ";
  report += difference ? "differs at " + std::to_string(*difference) : "identical";
  if (voFailed(opened.code)) report += " (read with " + hexCode(opened.code) + ")";
  report += "\n";
  for (const Mark& mark : options.explain ? marksOf(opened.message.get()) : std::vector<Mark>())
    report += std::string("mark: ") + mark.reason + " at " + std::to_string(mark.offset) + "\n";
  print(report);
  return difference ? kDifferent : kOk;
}

const Command kRoundtrip(
    "roundtrip", "Tell whether messages are written back as they were", [](CLI::App& app) -> Command::Run {
      const auto options = std::make_shared<Options>();
      app.add_option("FILE", options->files, "Messages; a folder stands for all files in it, - for the standard input")
          ->required();
      app.add_flag("--explain", options->explain, "Add a line for each header block that is written anew: why, where");
      return [options] {
        return forEachMessage(options->files, [&](MessageInput& input) {
          return checkFile(*options, input.place, std::move(input.source));
        });
      };
    });

}  // namespace

}  // namespace cli
