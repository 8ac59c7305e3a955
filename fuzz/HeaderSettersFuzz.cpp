// Any text through every setter that writes into a header: nothing that a caller hands in begins another field, ends
// the block or reaches the body. What the tree says after the call is what is read from the message that was written.
#include <functional>

#include "fuzz/FuzzSupport.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/header/VoMsgUserAddress.h"

using namespace vomsg::fuzz;

namespace {

constexpr std::string_view kBody = "the body\r\nBcc: not@a.field\r\n";
constexpr std::string_view kHeader =
    "From: a@example.org\r\nX-First: 1\r\nTo: b@example.org, c@example.org\r\nSubject: s\r\n"
    "Content-Type: text/plain; charset=us-ascii; name=n\r\nX-Last: 2\r\n\r\n";

constexpr const char* kCharsets[] = {"utf-8",  "us-ascii",    "iso-8859-1", "iso-2022-jp",
                                     "utf-16", "x\r\nBcc: y", nullptr};

struct Texts {
  std::string a, b;
  const char* charset;
  unsigned place;
};

VoMsgHeaderField* fieldAt(VoMsgEntity& entity, unsigned place) {
  return entity.getHeaderAt(place % std::max(1u, entity.countHeaders()));
}

// The field or address is the message's when the call succeeds.
template <class Object>
void give(std::unique_ptr<Object> object, const std::function<VoErrorCode(Object*)>& call) {
  if (!voFailed(call(object.get()))) static_cast<void>(object.release());
}

using Setter = void (*)(VoMsgRfc822Message& message, const Texts& texts);
constexpr Setter kSetters[] = {
    [](auto& m, auto& t) { m.setHeaderValue(t.a.c_str(), t.b.c_str(), "utf-8", t.charset); },
    [](auto& m, auto& t) { m.setHeaderValue("Subject", t.a.c_str(), t.charset, "utf-8"); },
    [](auto& m, auto& t) { m.setHeaderValue("To", t.a.c_str(), "utf-8", t.charset); },
    [](auto& m, auto& t) { m.setHeaderValue("Content-Type", t.a.c_str(), "utf-8", t.charset); },
    [](auto& m, auto& t) { m.setHeaderParameterValue("Content-Type", t.a.c_str(), t.b.c_str(), "utf-8", t.charset); },
    [](auto& m, auto& t) { m.setHeaderParameterValue(t.a.c_str(), "p", t.b.c_str(), "utf-8", t.charset); },
    [](auto& m, auto& t) {
      give<VoMsgHeaderField>(std::make_unique<VoMsgHeaderField>(t.a.c_str(), t.b.c_str()),
                             [&](auto* field) { return m.appendHeader(field); });
    },
    [](auto& m, auto& t) {
      give<VoMsgHeaderField>(std::make_unique<VoMsgHeaderField>("X-New", t.a.c_str()), [&](auto* field) {
        field->appendRawParameter("p", t.b.c_str(), false, t.charset);
        return m.insertHeaderAt(field, t.place);
      });
    },
    [](auto& m, auto& t) {
      give<VoMsgHeaderField>(std::make_unique<VoMsgHeaderField>("X-New", "v"), [&](auto* field) {
        field->appendParameter(t.a.c_str(), t.b.c_str(), "utf-8", t.charset);
        field->insertParameterAt(0, t.b.c_str(), t.a.c_str(), "utf-8", t.charset);
        return m.appendHeader(field);
      });
    },
    [](auto& m, auto& t) {
      VoMsgHeaderField* const field = fieldAt(m, t.place);
      field->setRawFieldValue(t.a.c_str());
      field->setNewHeader(1);
    },
    [](auto& m, auto& t) {
      VoMsgHeaderField* const field = fieldAt(m, t.place);
      field->setFieldValue(t.a.c_str(), "utf-8", t.charset);
      // Of a field without parameters one would be read as text of its value.
      if (std::string_view(field->getName()) == "Content-Type")
        field->setParameterValue("p", t.b.c_str(), "utf-8", t.charset);
    },
    [](auto& m, auto& t) { m.appendUserAddress("Cc", t.a.c_str()); },
    [](auto& m, auto& t) { m.insertUserAddressAt("To", t.a.c_str(), t.place % 3); },
    [](auto& m, auto& t) {
      give<VoMsgUserAddress>(std::make_unique<VoMsgUserAddress>(t.a.c_str()),
                             [&](auto* address) { return m.appendUserAddress("BCC", address); });
    },
    [](auto& m, auto& t) {
      give<VoMsgUserAddress>(std::make_unique<VoMsgUserAddress>(t.a.c_str()),
                             [&](auto* address) { return m.insertUserAddressAt("To", address, t.place % 3); });
    },
    [](auto& m, auto& t) { m.setFileName(t.a.c_str()); },
    [](auto& m, auto& t) { m.setContentType(t.a.c_str()); },
    [](auto& m, auto& t) {
      VoMsgMemoryResource content(const_cast<char*>(kBody.data()), static_cast<unsigned>(kBody.size()), t.b.c_str(),
                                  "utf-8");
      m.setContent(&content, t.a.c_str(), "7bit");
    },
    [](auto& m, auto& t) {
      VoMsgMemoryResource content(const_cast<char*>(kBody.data()), static_cast<unsigned>(kBody.size()), t.b.c_str(),
                                  "utf-8");
      m.setTextContent(&content, "text/plain", t.a.c_str());
    },
};

std::vector<std::string> namesOf(VoMsgEntity& entity) {
  std::vector<std::string> names;
  for (unsigned i = 0; i < entity.countHeaders(); ++i) {
    const char* const name = entity.getHeaderAt(i)->getName();
    if (name != nullptr) names.emplace_back(name);
  }
  return names;
}

bool isProperName(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 0x7F && c != ':'; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  Choices choices(data, size);
  const Setter setter = kSetters[choices.number(std::size(kSetters))];
  Texts texts{{}, {}, kCharsets[choices.number(std::size(kCharsets))], choices.number(8)};
  texts.a = choices.text();
  texts.b = choices.text();

  const std::string source = std::string(kHeader) + std::string(kBody);
  VoMsgRfc822Message message;
  message.readFrom(inPlace(source));
  setter(message, texts);
  const std::vector<std::string> names = namesOf(message);
  const std::string output = writeOut(message);

  VoMsgRfc822Message again;
  again.readFrom(inPlace(output));
  // A field whose name is none may be lost on the way; what it may not do is become two.
  if (std::all_of(names.begin(), names.end(), isProperName))
    require(namesOf(again) == names, "the fields that are read are those that the tree held");
  else
    require(again.countHeaders() <= names.size(), "no field becomes two");
  int code = 0;
  // A transfer encoding may have been asked for by name; the decoded content is what it was in any case.
  const std::string body = bytesOf(again.getContent(code, nullptr));
  require(body == bytesOf(message.getContent(code, nullptr)), "the content is what the tree says");
  const char* const last = again.getRawHeaderValue("X-Last");
  const bool isLastUntouched = last != nullptr && std::string_view(last) == "2";
  const char* const mine = message.getRawHeaderValue("X-Last");
  require(isLastUntouched == (mine != nullptr && std::string_view(mine) == "2"), "other fields stay");
  return 0;
}
