#include "vomsg/foundation/VoMsgResourceBytes.h"

#include <algorithm>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {
constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;
}  // namespace

VoErrorCode readBytes(const VoMsgResourceLocator& resource, std::string& bytes) {
  bytes.assign(resource.getSize(kData), '\0');
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(kData));
  const std::size_t wanted = bytes.size();
  bytes.resize(reader && wanted > 0 ? reader->read(bytes.data(), static_cast<unsigned>(wanted)) : 0);
  return bytes.size() == wanted ? kVoSuccess : kVoReadFailed;
}

VoErrorCode writeBytes(const VoMsgResourceLocator& resource, std::string_view bytes) {
  const std::unique_ptr<VoMsgBufferedWriter> writer(resource.getOutputStream(kData));
  return writer && WriterAccess::writeThrough(*writer, bytes.data(), bytes.size()) && writer->flush() ? kVoSuccess
                                                                                                      : kVoWriteFailed;
}

std::unique_ptr<VoMsgResourceLocator> temporaryResource(std::uint64_t size) {
  return std::unique_ptr<VoMsgResourceLocator>(
      VoMsgResourceManager::createTmpResource(static_cast<unsigned>(std::clamp<std::uint64_t>(size, 1, 0xFFFFFFFFu))));
}

std::string withCrLf(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 16);
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    out += text.substr(0, end);
    if (end == text.npos) break;
    out += "\r\n";
    text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
  }
  return out;
}

std::string withoutCrLf(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at; (at = text.find("\r\n")) != text.npos; text.remove_prefix(at + 1)) out += text.substr(0, at);
  out += text;
  return out;
}

}  // namespace vomsg::detail
