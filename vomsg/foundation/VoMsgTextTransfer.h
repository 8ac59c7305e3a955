// Texts on their way from resource to resource: read in pieces, changed by conversion stages, written in pieces, so
// that what a text grows to never stands in memory as a whole.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

class TextStage;

// Where a text goes.
class TextSink {
 public:
  virtual ~TextSink() = default;
  virtual bool put(std::string_view piece) = 0;  // false: no room
};

// Reads all of `source`, leads it through the stages (null ones are left out) and puts the result. kVoReadFailed and
// kVoWriteFailed are of the resources, other codes of the stages.
VoErrorCode transferText(const VoMsgResourceLocator& source, std::initializer_list<TextStage*> stages, TextSink& sink);

// Replaces what `target` (borrowed) holds.
class ResourceSink final : public TextSink {
 public:
  explicit ResourceSink(const VoMsgResourceLocator& target);
  ~ResourceSink() override;
  bool put(std::string_view piece) override;
  bool finish();

 private:
  const std::unique_ptr<VoMsgBufferedWriter> mpWriter;
};

// A new temporary resource: in memory when the text turns out short, or where the manager has room for what a text of
// `sourceSize` bytes can become, else in a file.
class TemporarySink final : public TextSink {
 public:
  explicit TemporarySink(std::uint64_t sourceSize);
  ~TemporarySink() override;
  bool put(std::string_view piece) override;
  std::unique_ptr<VoMsgResourceLocator> take();  // null: no room

 private:
  bool spill(std::uint64_t size);

  const std::uint64_t mSourceSize;
  std::string mShort;
  std::unique_ptr<VoMsgResourceLocator> mpResource;
  std::unique_ptr<VoMsgBufferedWriter> mpWriter;
};

// A stage that makes every line end, a lone CR or LF too, CR LF.
std::unique_ptr<TextStage> newCrLfStage();

}  // namespace vomsg::detail
