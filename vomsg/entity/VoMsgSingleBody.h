// The body of a leaf: a range of the source, or replacement content that is already transfer-encoded.
#pragma once

#include <memory>
#include <string>

#include "vomsg/entity/VoMsgEntityBody.h"
#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoObjectStub.h"

class VoMsgBufferedReader;
namespace vomsg::detail {
class MessageSource;
enum class TransferEncoding : std::uint8_t;
}  // namespace vomsg::detail

class VOMSG_API VoMsgSingleBody : public VoMsgEntityBody {
 public:
  VoMsgSingleBody();
  ~VoMsgSingleBody() override;
  bool isMultipart() const override;
  void dumpEntityBody(std::FILE* out) const override;

  // The decoded content. Without a target (null) `resource` becomes the body's own decoded copy (borrowed), which
  // later calls hand out again; with one, the content goes there. `encoding` may be null; unknown ones copy.
  // kVoNoContent: the body is empty; kVoReadFailed: the bytes cannot be read; kVoWriteFailed: no target.
  VoErrorCode getContent(VoMsgBufferedReader* reader, const char* encoding, const VoMsgResourceLocator*& resource);
  // The body as it stands, still encoded.
  VoErrorCode getRawContent(VoMsgBufferedReader* reader, const VoMsgResourceLocator*& resource);
  // The same; where nothing is encoded, what the body keeps is a range of `whole` (may be null), which `reader` reads,
  // instead of a copy.
  VoErrorCode getContent(VoMsgBufferedReader* reader, const vomsg::detail::MessageSource* whole, const char* encoding,
                         const VoMsgResourceLocator*& resource);
  VoErrorCode getRawContent(VoMsgBufferedReader* reader, const vomsg::detail::MessageSource* whole,
                            const VoMsgResourceLocator*& resource);
  // Bytes of the decoded content, counted without keeping them.
  VoErrorCode countContent(VoMsgBufferedReader* reader, const char* encoding, unsigned& size);

  // Replaces the body by encoded bytes; the resource is taken over.
  void setNewContent(std::unique_ptr<VoMsgResourceLocator> encoded);
  const VoMsgResourceLocator* getNewContent() const { return mpNewContent.get(); }
  void dropDecodedCopies();

  // Keep the last converted text and charset name for the caller who borrows them; never taken for the content.
  // `conversion` says from which charset into which; asked for again, the text is there.
  const VoMsgResourceLocator* keepText(std::unique_ptr<VoMsgResourceLocator> text, const std::string& conversion);
  const VoMsgResourceLocator* getKeptText(const std::string& conversion) const;
  const char* keepTextCharset(const std::string& name);

 private:
  template <class Sink>
  VoErrorCode withEncodedBytes(VoMsgBufferedReader* reader, Sink&& sink) const;
  VoErrorCode fetch(VoMsgBufferedReader* reader, const vomsg::detail::MessageSource* whole,
                    vomsg::detail::TransferEncoding encoding, std::unique_ptr<VoMsgResourceLocator>& kept,
                    const VoMsgResourceLocator*& resource);

  std::unique_ptr<VoMsgResourceLocator> mpNewContent;
  std::unique_ptr<VoMsgResourceLocator> mpDecoded;
  std::unique_ptr<VoMsgResourceLocator> mpRaw;
  std::unique_ptr<VoMsgResourceLocator> mpText;
  std::string mTextConversion;
  std::string mTextCharset;
};
