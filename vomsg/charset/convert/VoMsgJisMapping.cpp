#include "vomsg/charset/convert/VoMsgJisMapping.h"

#include "vomsg/charset/convert/VoMsgIcuStage.h"

namespace vomsg::detail {
namespace {

constexpr char kJisMapping[] = "euc-jp";

// For some codes Windows, whose choice ICU shares, and other systems have different Unicode characters that look alike.
// Texts from both are written with the one code; it is read as Windows reads it.
constexpr struct {
  char16_t elsewhere, windows;
} kVariants[] = {
    {u'\u301C', u'\uFF5E'},  // wave dash
    {u'\u2016', u'\u2225'},  // double vertical line
    {u'\u2212', u'\uFF0D'},  // minus
    {u'\u2014', u'\u2015'},  // dash
    {u'\u00A2', u'\uFFE0'},  // cent
    {u'\u00A3', u'\uFFE1'},  // pound
    {u'\u00AC', u'\uFFE2'},  // not
};

void adjustForJis(char16_t* units, std::size_t count) {
  for (const auto& variant : kVariants) replaceUnits(units, count, variant.elsewhere, variant.windows);
}

}  // namespace

std::unique_ptr<TextStage> newEucToUtf8(Replacement replacement) {
  return newIcuStage("utf-8", kJisMapping, replacement);
}

std::unique_ptr<TextStage> newUtf8ToEuc(Replacement replacement) {
  return newIcuStage(kJisMapping, "utf-8", replacement, adjustForJis);
}

}  // namespace vomsg::detail
