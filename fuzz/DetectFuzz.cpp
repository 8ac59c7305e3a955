// The charset analysis over any bytes: it ends, reads no further than the text, and says the same about the same text.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

std::string analyse(const std::uint8_t* data, std::size_t size) {
  const VoMsgMemoryResource text(const_cast<std::uint8_t*>(data), static_cast<unsigned>(size), nullptr, nullptr);
  const std::unique_ptr<VoMsgBufferedReader> reader(text.getInputStream(VoMsgResourceLocator::dataPart));
  char* charset = nullptr;
  VoMsgCharSetAnalysis::Evidence evidence;
  VoMsgCharSetAnalysis::getInstance()->analysisText(reader.get(), "text/plain", charset, evidence);
  const std::unique_ptr<char, decltype(&std::free)> owner(charset, &std::free);
  if (evidence.bytes > size || (evidence.detector != nullptr) != (charset != nullptr)) std::abort();
  return charset ? charset : "";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string charset = analyse(data, size);
  if (charset != analyse(data, size)) std::abort();
  bool isAscii = true;
  for (std::size_t i = 0; i < size; ++i) isAscii = isAscii && data[i] < 0x80;
  // Only an escape gives ASCII a name.
  if (isAscii && !charset.empty() && charset.rfind("ISO-2022-", 0) != 0 && charset != "HZ-GB-2312") std::abort();
  return 0;
}
