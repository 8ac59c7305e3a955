// The header fields of a message or a part: read in UTF-8, set from UTF-8.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/entity/VoMsgEntity.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/mail/Address.h"
#include "vomsg/mail/Date.h"
#include "vomsg/mail/Error.h"
#include "vomsg/mail/Utf8.h"

namespace vomsg {

struct Field {
  std::string name;
  std::string value;  // decoded, in UTF-8
  std::string raw;    // unfolded, encoded words as they stand
};

namespace inner {

inline const char* charsetFor(std::string_view value) { return isAscii(value) ? "us-ascii" : "utf-8"; }

inline bool isFieldName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 0x7F && c != ':'; });
}
inline bool canBeSet(std::string_view name, std::string_view value) {
  return isFieldName(name) && value.find('\0') == value.npos;
}

inline const VoMsgRfc822Entity* mime(const VoMsgEntity& entity) {
  return dynamic_cast<const VoMsgRfc822Entity*>(&entity);
}
inline VoMsgRfc822Entity* mime(VoMsgEntity& entity) { return dynamic_cast<VoMsgRfc822Entity*>(&entity); }

inline std::optional<std::string> fieldValue(const VoMsgEntity& entity, const char* name) {
  const char* const value = entity.getHeaderValue(name, "utf-8");
  if (value == nullptr) return std::nullopt;
  return asUtf8(value);
}

inline std::vector<Address> addressesOf(const VoMsgEntity& entity, const char* name) {
  std::vector<Address> all;
  const unsigned count = entity.countHeaders();
  for (unsigned i = 0; i < count; ++i) {
    const VoMsgHeaderField* const field = entity.getHeaderAt(i);
    if (field == nullptr || field->getName() == nullptr || !equalNoCase(field->getName(), name)) continue;
    const char* const value = field->getRawFieldValue();
    for (Address& each : parseAddresses(value != nullptr ? value : "")) all.push_back(std::move(each));
  }
  return all;
}

// The identifiers in angle brackets, without these: "<a@b> <c@d>".
inline std::vector<std::string> identifiers(const char* value) {
  std::vector<std::string> all;
  std::string_view rest = value != nullptr ? value : "";
  for (;;) {
    const auto open = rest.find('<');
    const auto close = open == rest.npos ? rest.npos : rest.find('>', open);
    if (close == rest.npos) return all;
    all.emplace_back(rest.substr(open + 1, close - open - 1));
    rest.remove_prefix(close + 1);
  }
}

// The bytes of the `skip`-th field of that name in a header block as it stands.
inline std::optional<std::string> fieldBytes(std::string_view block, std::string_view name, unsigned skip) {
  while (!block.empty()) {
    std::size_t end = 0;
    do {  // a line, and those behind it that begin with a blank
      const auto lineEnd = block.find('\n', end);
      end = lineEnd == block.npos ? block.size() : lineEnd + 1;
    } while (end < block.size() && (block[end] == ' ' || block[end] == '\t'));
    const std::string_view field = block.substr(0, end);
    const auto colon = field.find(':');
    if (colon != field.npos && equalNoCase(trimmed(field.substr(0, colon)), name) && skip-- == 0) {
      return std::string(field);
    }
    block.remove_prefix(end);
  }
  return std::nullopt;
}

// The header block as it stands in the source; empty where there is none.
inline std::string headerBytes(VoMsgEntity& entity) {
  std::string block;
  const VoMsgRfc822Entity* const part = mime(entity);
  int code = 0;
  VoMsgBufferedReader* const reader = part != nullptr ? entity.getContextSource(code) : nullptr;
  if (reader == nullptr || part->getHeaderSize() == 0) return block;
  if (reader->rseek(static_cast<long>(part->getHeaderOffset()), 0) < 0) return block;
  block.resize(part->getHeaderSize());
  block.resize(reader->read(block.data(), part->getHeaderSize()));
  return block;
}

}  // namespace inner

// The field operations of Part and Message, over `Owner::entity()`, a VoMsgEntity*.
template <class Owner>
class Fields {
 public:
  // The first field of that name, decoded; nothing where there is none.
  std::optional<std::string> header(const std::string& name) const { return inner::fieldValue(entity(), name.c_str()); }
  // Every field, in order.
  std::vector<Field> fields() const {
    std::vector<Field> all;
    const unsigned count = entity().countHeaders();
    all.reserve(count);
    for (unsigned i = 0; i < count; ++i) {
      VoMsgHeaderField* const field = entity().getHeaderAt(i);
      if (field == nullptr || field->getName() == nullptr) continue;
      const char* const raw = field->getRawFieldValue();
      all.push_back({field->getName(), inner::asUtf8(field->getFieldValue("utf-8")), raw != nullptr ? raw : ""});
    }
    return all;
  }
  // A field byte for byte as it stands in the source, name, folds and line end included; of several of that name the
  // `index`-th. Nothing where the source has none.
  std::optional<std::string> fieldBytes(const std::string& name, unsigned index = 0) const {
    return inner::fieldBytes(inner::headerBytes(entity()), name, index);
  }
  // The addresses of every field of that name.
  std::vector<Address> addresses(const std::string& name) const { return inner::addressesOf(entity(), name.c_str()); }

  // Sets the first field of that name, or appends one. kVoBadArgument: no field name, or a NUL in the value.
  Status setHeader(const std::string& name, const std::string& value) {
    if (!inner::canBeSet(name, value)) return Error(kVoBadArgument);
    const char* const charset = inner::charsetFor(value);
    return Status::of(entity().setHeaderValue(name.c_str(), value.c_str(), charset, charset));
  }
  // Adds a further field behind the others.
  Status addHeader(const std::string& name, const std::string& value) {
    if (!inner::canBeSet(name, value)) return Error(kVoBadArgument);
    auto field = std::make_unique<VoMsgHeaderField>(name.c_str(), nullptr);
    const char* const charset = inner::charsetFor(value);
    VoErrorCode code = field->setFieldValue(value.c_str(), charset, charset);
    if (!voFailed(code)) code = entity().appendHeader(field.get());
    if (!voFailed(code)) (void)field.release();
    return Status::of(code);
  }
  // Removes every field of that name; succeeds when there is none.
  Status removeHeader(const std::string& name) { return Status::of(entity().removeHeader(name.c_str())); }
  Status setAddresses(const std::string& name, const std::vector<Address>& list) {
    return setHeader(name, inner::addressList(list));
  }

 protected:
  VoMsgEntity& entity() const { return *static_cast<const Owner*>(this)->entity(); }
};

}  // namespace vomsg
