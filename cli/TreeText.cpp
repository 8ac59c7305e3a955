#include "cli/TreeText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>

#include "cli/Console.h"
#include "cli/Printable.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace cli {

namespace {

struct Kind {
  std::uint32_t typeId;
  const char* name;
};
constexpr Kind kKinds[] = {
    {kVoEntityRfc822Message, "message"},
    {kVoEntityMime, "part"},
    {kVoEntityMime | kVoEntityIsContainer, "container"},
    {kVoEntityEmbeded, "embedded"},
    {kVoEntityEmbeded | kVoEntityIsContainer, "embedded-container"},
    {kVoEntityMultiEmbeded, "embedded-list"},
    {kVoEntityTnef, "tnef-part"},
    {kVoEntityTnef | kVoEntityIsContainer, "tnef-container"},
    {kVoEntityTnefMessage, "tnef-message"},
};

// The CRC-32 of zip and PNG files, reflected, polynomial 0x04C11DB7.
constexpr auto kCrcTable = [] {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit) value = (value & 1) != 0 ? value >> 1 ^ 0xEDB88320u : value >> 1;
    table[i] = value;
  }
  return table;
}();

// A value from the mail; in quotes when it could be taken for something else.
std::string value(const char* text) {
  const std::string shown = printable(text);
  const auto plain = [](unsigned char c) { return c > ' ' && c < 0x7F && c != '"' && c != '\\' && c != '='; };
  if (!shown.empty() && std::all_of(shown.begin(), shown.end(), plain)) return shown;
  std::string quoted = "\"";
  for (const char c : shown) {
    if (c == '"') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace

std::string crcOf(VoMsgEntity* entity) {
  int code = 0;
  const VoMsgResourceLocator* content = entity->getContent(code, nullptr);
  if (content == nullptr) return static_cast<VoErrorCode>(code) == kVoNoContent ? "00000000" : "none";
  const std::unique_ptr<VoMsgBufferedReader> reader(content->getInputStream(VoMsgResourceLocator::dataPart));
  if (!reader) return "none";
  std::uint32_t crc = 0xFFFFFFFFu;
  char chunk[4096];
  while (const unsigned n = reader->read(chunk, sizeof chunk)) {
    for (unsigned i = 0; i < n; ++i) crc = crc >> 8 ^ kCrcTable[(crc ^ static_cast<std::uint8_t>(chunk[i])) & 0xFF];
  }
  char text[16];
  std::snprintf(text, sizeof text, "%08x", ~crc);
  return text;
}

const char* kindOf(std::uint32_t typeId) {
  for (const Kind& kind : kKinds) {
    if (kind.typeId == typeId) return kind.name;
  }
  return "unknown";
}

std::string treeLine(const EntityWalk& walk, bool checksum) {
  VoMsgEntity* const entity = walk.entity();
  std::string line = inColour(Colour::number, std::to_string(walk.number())) + ' ' + kindOf(entity->getEntityTypeID());
  const char* type = entity->getContentType();
  line += type != nullptr ? ' ' + inColour(Colour::name, value(type)) : " -";
  if (const char* charset = entity->getCharset()) line += " charset=" + value(charset);
  if (const char* encoding = entity->getEncoding()) line += " encoding=" + value(encoding);
  if (const char* name = entity->getFileName("utf-8")) line += " name=" + value(name);
  const auto range = [&](const char* what, unsigned offset, unsigned size) {
    line.append(what).append(std::to_string(offset)).append("+").append(std::to_string(size));
  };
  if (const auto* mime = dynamic_cast<const VoMsgRfc822Entity*>(entity)) {
    range(" header=", mime->getHeaderOffset(), mime->getHeaderSize());
    range(" body=", mime->getBodyOffset(), mime->getBodySize());
  }
  if (!entity->isMultipartEntity()) line += " size=" + std::to_string(entity->getContentSize());
  line += " level=" + std::to_string(walk.level());
  if (walk.isSigned()) line += " signed";
  if (walk.isEncrypted()) line += " encrypted";
  if (walk.isModified()) line += " modified";
  if (checksum && walk.isLeaf()) line += " crc=" + crcOf(entity);
  return line;
}

std::string treeText(VoMsgEntity* root, bool checksum) {
  std::string text;
  EntityWalk walk(root);
  while (walk.next()) {
    text.append(2 * std::min<std::size_t>(walk.depth(), 40), ' ').append(treeLine(walk, checksum)).append("\n");
  }
  return text;
}

}  // namespace cli
