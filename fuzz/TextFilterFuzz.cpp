// Text filters, detection and the charset that HTML names, over any bytes: the plain filter hands on what it got,
// whichever session it is given; the analysis says the same however the text is cut; the text of a part can be asked
// for in any charset, and the part stays as it was.
#include <cstring>

#include "fuzz/FuzzSupport.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/filter/VoMsgPlainTextFilter.h"
#include "vomsg/filter/VoMsgTextFormatFilterPool.h"

using namespace vomsg::fuzz;

namespace {

void tryFilter(const std::string& type, std::string_view text, std::size_t cut) {
  static VoMsgTextFormatFilterPool pool;
  VoMsgPlainTextFilter plain;
  VoMsgTextFormatFilter* const found = pool.getFilter(type.c_str());
  require((found != nullptr) == plain.matchMIMEType(type.c_str()), "the pool finds what a filter accepts");
  std::unique_ptr<VoMsgTextFilterSession> session;
  for (const std::string_view piece : {text.substr(0, cut), text.substr(cut), text}) {
    auto* const used = plain.filterText(piece.data(), static_cast<unsigned>(piece.size()), session.get());
    require(used != nullptr && (!session || used == session.get()), "a session is used on");
    if (!session) session.reset(used);
    require(session->getRecentContextSize() == piece.size(), "as long as the text");
    require(piece.empty() || std::memcmp(session->getRecentContext(), piece.data(), piece.size()) == 0, "the text");
  }
}

std::string analyse(VoMsgBufferedReader& reader, const char* type) {
  char* charset = nullptr;
  VoMsgCharSetAnalysis::getInstance()->analysisText(&reader, type, charset);
  const std::unique_ptr<char, decltype(&std::free)> owner(charset, &std::free);
  return charset ? charset : "";
}

void tryText(const char* type, std::string_view text) {
  const std::string source = std::string("Content-Type: ") + type + "\r\n\r\n" + std::string(text);
  VoMsgRfc822Message message;
  message.readFrom(inPlace(source));
  int code = 0;
  for (const char* charset : {"utf-8", "iso-2022-jp", "no-such"}) message.getTextContent(code, nullptr, charset);
  auto origin = VoMsgRfc822Entity::CharsetOrigin::assumed;
  message.getTextCharset(origin);
  require(!message.isModified() && writeOut(message) == source, "asking for the text changes nothing");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  Choices choices(data, size);
  const std::size_t window = 1 + choices.number(64);
  const unsigned kind = choices.number(3);
  const std::string type = choices.text();
  const std::string_view text = choices.rest();
  tryFilter(type, text, text.size() / 2);
  vomsg::test::WindowReader narrow(text, window), wide(text, 32768);
  require(analyse(narrow, "text/plain") == analyse(wide, "text/plain"), "the analysis does not see how a text is cut");
  constexpr const char* kTypes[] = {"text/html", "text/plain", "text/html; charset=utf-8"};
  tryText(kTypes[kind], text);
  return 0;
}
