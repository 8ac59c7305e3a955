// File names for what comes out of mail. A name in a message is a claim of its sender: it may be a path, a device, a
// command line or written backwards; what is made of it here is safe in any folder.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "vomsg/mail/Utf8.h"

namespace vomsg {

namespace inner {

struct FileExtension {
  std::string_view contentType;
  std::string_view extension;
};
inline constexpr FileExtension kFileExtensions[] = {
    {"application/json", ".json"},
    {"application/ms-tnef", ".tnef"},
    {"application/pdf", ".pdf"},
    {"application/pgp-signature", ".asc"},
    {"application/pkcs7-signature", ".p7s"},
    {"application/rtf", ".rtf"},
    {"application/zip", ".zip"},
    {"image/gif", ".gif"},
    {"image/jpeg", ".jpg"},
    {"image/png", ".png"},
    {"message/rfc822", ".eml"},
    {"text/calendar", ".ics"},
    {"text/csv", ".csv"},
    {"text/html", ".html"},
    {"text/rtf", ".rtf"},
};

inline std::string_view extensionOf(std::string_view contentType) {
  for (const FileExtension& row : kFileExtensions) {
    if (equalNoCase(row.contentType, contentType)) return row.extension;
  }
  return contentType.empty() || equalNoCase(contentType.substr(0, 5), "text/") ? ".txt" : ".bin";
}

// Cuts to `size` bytes at most, between two characters.
inline std::string_view cutTo(std::string_view text, std::size_t size) {
  if (text.size() <= size) return text;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  return text.substr(0, size);
}

}  // namespace inner

// A name made from what the mail calls a part (UTF-8, may be empty): no path, no control character, none that shells
// and file systems give a meaning to, no dot or blank at an end, at most 100 bytes. Without a usable name the content
// type gives one ("part.txt"). It may begin with a dash: put something in front where that matters.
inline std::string safeFileName(std::string_view name, std::string_view contentType) {
  constexpr std::size_t kMaxName = 100;
  constexpr std::size_t kMaxExtension = 12;
  if (const auto slash = name.find_last_of("/\\"); slash != name.npos) name.remove_prefix(slash + 1);
  std::string clean;
  while (!name.empty()) {
    const Character character = firstCharacter(name);
    const bool refused =
        character.code == kNotUtf8 || isUnsafe(character.code) ||
        (character.code < 0x80 && std::string_view("<>:\"|?*$`'!&;(){}[]~#%").find(name[0]) != std::string_view::npos);
    if (refused) {
      clean += '_';
    } else {
      clean.append(name.substr(0, character.length));
    }
    name.remove_prefix(character.length);
  }
  // A name of dots and blanks alone says nothing; at the ends they mislead.
  constexpr std::string_view kBlank = ". ";
  const auto first = clean.find_first_not_of(kBlank);
  clean = first == clean.npos ? std::string() : clean.substr(first, clean.find_last_not_of(kBlank) - first + 1);

  if (clean.empty()) clean.append("part").append(inner::extensionOf(contentType));
  if (clean.size() > kMaxName) {
    const auto dot = clean.rfind('.');
    const std::string extension = dot != clean.npos && clean.size() - dot <= kMaxExtension ? clean.substr(dot) : "";
    clean = std::string(inner::cutTo(clean, kMaxName - extension.size())) + extension;
  }
  return clean;
}

}  // namespace vomsg
