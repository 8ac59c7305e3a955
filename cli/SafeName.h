// File names for what comes out of mail.
#pragma once

#include <string>
#include <string_view>

namespace cli {

// A name for part `number` that is safe in any folder, made from what the mail calls it (UTF-8, may be empty):
// "003_invoice.pdf". It never holds a path, a control character or a character that shells and file systems give a
// meaning to, never begins with a dot or a dash, and has at most 120 bytes. Without a usable name the content type
// gives one ("003_part.txt").
std::string safeFileName(unsigned number, std::string_view name, std::string_view contentType);

}  // namespace cli
