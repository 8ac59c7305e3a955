// Any text as the parameters of a field, plain or in pieces: each can be read in any charset; one that is set reads
// back, before the message is written and after; the others keep their raw values.
#include "fuzz/FuzzSupport.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/header/VoMsgHeaderField.h"

using namespace vomsg::fuzz;

namespace {

std::string valueOf(VoMsgEntity& entity, const char* name) {
  const char* const value = entity.getHeaderParameterValue("Content-Disposition", name, "utf-8");
  return value != nullptr ? value : "(none)";
}

void lookAt(VoMsgEntity& entity) {
  VoMsgHeaderField* const field = entity.getHeader("Content-Disposition");
  if (field == nullptr) return;
  for (unsigned i = 0; i < field->countParameter(); ++i) {
    const char* const name = field->getParameterNameAt(i);
    require(name != nullptr, "what is counted has a name");
    const char* charset = nullptr;
    field->getRawParameterValueAt(i);
    field->getParameterValueAt(i, "utf-8");
    field->getParameterValueAtEx(i, charset);
    field->getParameterValue(name, "iso-2022-jp");
    field->getParameterValueEx(name, charset);
    std::string declared;
    if (field->hasRFC2231(name)) field->getRfc2231Charset(name, declared);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  Choices choices(data, size);
  const bool inWords = choices.number(2) == 0;
  std::string value = choices.text();
  std::string parameters(choices.rest());
  for (std::string* text : {&value, &parameters})
    std::replace_if(
        text->begin(), text->end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
  const std::string source =
      "Content-Disposition: attachment; filename*0=a; " + parameters + "\r\nX-Last: 1\r\n\r\nbody";

  VoMsgRfc822Message message;
  if (voFailed(message.readFrom(inPlace(source)))) return 0;
  lookAt(message);
  valueOf(message, "filename");
  require(writeOut(message) == source || message.getEntityHeader()->getMark() != vomsg::detail::HeaderMark::none,
          "reading parameters changes nothing");
  const std::string kept = valueOf(message, "x-kept");
  const VoErrorCode code = message.setHeaderParameterValue("Content-Disposition", "filename", value.c_str(), "utf-8",
                                                           inWords ? "iso-2022-jp" : "utf-8");
  const std::string set = valueOf(message, "filename");
  require(valueOf(message, "x-kept") == kept, "other parameters stay");
  const std::string output = writeOut(message);
  VoMsgRfc822Message again;
  again.readFrom(inPlace(output));
  if (!voFailed(code)) require(valueOf(again, "filename") == set, "what was set reads back");
  const char* const last = again.getRawHeaderValue("X-Last");
  require(last != nullptr && std::string_view(last) == "1", "the next field is untouched");
  lookAt(again);
  return 0;
}
