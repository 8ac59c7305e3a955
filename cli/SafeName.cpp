#include "cli/SafeName.h"

#include <algorithm>
#include <cstdio>

#include "cli/Printable.h"

namespace cli {

namespace {

constexpr std::size_t kMaxName = 100;
constexpr std::size_t kMaxExtension = 12;

struct Extension {
  std::string_view contentType;
  std::string_view extension;
};
constexpr Extension kExtensions[] = {
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

bool equalNoCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

std::string_view extensionOf(std::string_view contentType) {
  for (const Extension& row : kExtensions) {
    if (equalNoCase(row.contentType, contentType)) return row.extension;
  }
  return contentType.empty() || equalNoCase(contentType.substr(0, 5), "text/") ? ".txt" : ".bin";
}

// Cuts to `size` bytes at most, between two characters.
std::string_view cutTo(std::string_view text, std::size_t size) {
  if (text.size() <= size) return text;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  return text.substr(0, size);
}

}  // namespace

std::string safeFileName(unsigned number, std::string_view name, std::string_view contentType) {
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
      clean.append(name, 0, character.length);
    }
    name.remove_prefix(character.length);
  }
  // A name of dots and blanks alone says nothing; at the ends they mislead.
  constexpr std::string_view kBlank = ". ";
  const auto first = clean.find_first_not_of(kBlank);
  clean = first == clean.npos ? std::string() : clean.substr(first, clean.find_last_not_of(kBlank) - first + 1);

  if (clean.empty()) clean.append("part").append(extensionOf(contentType));
  if (clean.size() > kMaxName) {
    const auto dot = clean.rfind('.');
    const std::string extension = dot != clean.npos && clean.size() - dot <= kMaxExtension ? clean.substr(dot) : "";
    clean = std::string(cutTo(clean, kMaxName - extension.size())) + extension;
  }
  char prefix[16];
  std::snprintf(prefix, sizeof prefix, "%03u_", number);
  return prefix + clean;
}

}  // namespace cli
