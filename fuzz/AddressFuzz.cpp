// Any value as an address field: its addresses can be read, one that is added is the only change, and one that is
// removed takes nothing else along.
#include "fuzz/FuzzSupport.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/header/VoMsgUserAddress.h"

using namespace vomsg::fuzz;

namespace {

std::vector<std::string> addressesOf(VoMsgEntity& entity) {
  std::vector<std::string> addresses;
  for (unsigned i = 0; i < entity.countUserAddress("To"); ++i) {
    VoMsgUserAddress* const address = entity.getUserAddressAt("To", i);
    require(address != nullptr && address->getRawAddress() != nullptr, "what is counted is there");
    for (const char* charset : {"utf-8", "us-ascii", "iso-2022-jp"}) address->getName(charset);
    address->getAddress();
    address->getRawName();
    addresses.emplace_back(address->getRawAddress());
  }
  require(entity.getUserAddressAt("To", entity.countUserAddress("To")) == nullptr, "nothing behind the last");
  return addresses;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  Choices choices(data, size);
  const unsigned place = choices.number(8), removed = choices.number(8);
  std::string value(choices.rest());
  std::replace_if(
      value.begin(), value.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
  const std::string source = "To: " + value + "\r\nX-Last: 1\r\n\r\nbody";

  VoMsgRfc822Message message;
  if (voFailed(message.readFrom(inPlace(source)))) return 0;
  std::vector<std::string> wanted = addressesOf(message);
  require(writeOut(message) == source, "reading addresses changes nothing");
  if (!voFailed(message.insertUserAddressAt("To", "Jo Doe <jo@example.org>", place)))
    wanted.insert(wanted.begin() + place, "Jo Doe <jo@example.org>");
  require(addressesOf(message) == wanted, "one more address, in its place");
  if (!voFailed(message.removeUserAddressAt("To", removed))) wanted.erase(wanted.begin() + removed);
  require(addressesOf(message) == wanted, "one address less, from its place");

  const std::string output = writeOut(message);
  VoMsgRfc822Message again;
  again.readFrom(inPlace(output));
  const char* const last = again.getRawHeaderValue("X-Last");
  require(last != nullptr && std::string_view(last) == "1", "the next field is untouched");
  require(output.substr(output.size() - 8) == "\r\n\r\nbody", "the body is untouched");
  return 0;
}
