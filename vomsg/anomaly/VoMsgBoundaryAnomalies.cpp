#include "vomsg/anomaly/VoMsgBoundaryAnomalies.h"

#include <algorithm>
#include <iterator>

#include "vomsg/anomaly/VoMsgLineReader.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kMaxBoundary = 70;  // RFC 2046, section 5.1.1
constexpr std::size_t kMaxLine = 998;     // RFC 5322, section 2.1.1
constexpr std::string_view kNeedsQuotes = "()<>@,;:\\\"/[]?= \t";

bool isPlainBoundary(const RawParameter& parameter) { return equalNoCase(parameter.name, "boundary"); }
bool isEncodedBoundary(const RawParameter& parameter) { return startsWithNoCase(parameter.name, "boundary*"); }

void findBoundaryForm(const RawParameter& parameter, std::uint64_t at, AnomalySink& sink) {
  const std::string& text = parameter.text;
  if (text.empty()) sink.add(kVoAnomalyBoundaryEmpty, at, parameter.length);
  if (text.size() > kMaxBoundary) sink.add(kVoAnomalyBoundaryTooLong, at, parameter.length);
  if (parameter.isFolded) sink.add(kVoAnomalyBoundaryFolded, at, parameter.length);
  if (!parameter.isQuoted && text.find_first_of(kNeedsQuotes) != text.npos)
    sink.add(kVoAnomalyBoundaryUnquoted, at, parameter.length);
  if (!text.empty() && isBlank(text.back())) sink.add(kVoAnomalyBoundaryBlankEnd, at, parameter.length);
}

void findTypeBoundary(const RawField& field, std::uint64_t base, AnomalySink& sink) {
  bool hasComment = false;
  const std::vector<RawParameter> parameters = rawParameters(field.value, hasComment);
  const RawParameter* last = nullptr;
  const RawParameter* encoded = nullptr;
  for (const RawParameter& parameter : parameters) {
    const std::uint64_t at = base + field.valueOffset + parameter.offset;
    if (isPlainBoundary(parameter)) {
      if (last) {
        sink.add(last->text == parameter.text ? kVoAnomalyBoundaryRepeated : kVoAnomalyBoundaryConflicting, at,
                 parameter.length);
      }
      last = &parameter;
      findBoundaryForm(parameter, at, sink);
    } else if (isEncodedBoundary(parameter)) {
      if (!encoded) sink.add(kVoAnomalyBoundaryRfc2231, at, parameter.length);
      encoded = &parameter;
    }
  }
  if ((last || encoded) && hasComment) sink.add(kVoAnomalyBoundaryComment, base + field.offset, field.length());
  if (!last && !encoded && startsWithNoCase(rawMainValue(field.value), "multipart/"))
    sink.add(kVoAnomalyMultipartNoBoundary, base + field.offset, field.length());
}

// The letters and digits of a name: what two spellings of one encoding have in common.
std::string letters(std::string_view name) {
  std::string text;
  for (const char c : name) {
    const char lower = toLower(c);
    if ((lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9')) text += lower;
  }
  return text;
}

constexpr std::string_view kPlainEncodings[] = {"7bit", "8bit", "binary"};
constexpr std::string_view kEncodings[] = {"base64", "quoted-printable", "x-uuencode", "uuencode",
                                           "x-uue",  "mac-binhex40"};

bool isOneOf(std::string_view name, const auto& names) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool isSpeltLike(std::string_view name, const auto& names) {
  const std::string spelt = letters(name);
  return std::any_of(std::begin(names), std::end(names), [&](std::string_view known) {
    const std::string right = letters(known);
    return !spelt.empty() &&
           (spelt == right || (spelt.size() > right.size() && spelt.compare(0, right.size(), right) == 0));
  });
}

}  // namespace

void findBoundaryParameters(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink) {
  for (const RawField& field : fields) {
    if (equalNoCase(field.name, "Content-Type")) {
      findTypeBoundary(field, base, sink);
    } else if (startsWithNoCase(field.name, "Content-")) {
      bool hasComment = false;
      for (const RawParameter& parameter : rawParameters(field.value, hasComment)) {
        if (isPlainBoundary(parameter) || isEncodedBoundary(parameter))
          sink.add(kVoAnomalyBoundaryElsewhere, base + field.valueOffset + parameter.offset, parameter.length);
      }
    }
  }
}

void findDeclaredEncoding(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink) {
  std::string type;
  for (const RawField& field : fields)
    if (equalNoCase(field.name, "Content-Type")) type = rawMainValue(field.value);
  for (const RawField& field : fields) {
    if (!equalNoCase(field.name, "Content-Transfer-Encoding")) continue;
    const std::string encoding = rawMainValue(field.value);
    const bool isPlain = isOneOf(encoding, kPlainEncodings);
    const std::uint64_t at = base + field.offset;
    if (!isPlain && (startsWithNoCase(type, "multipart/") || type == "message/rfc822"))
      sink.add(kVoAnomalyEncodedMultipart, at, field.length());
    if (isPlain || isOneOf(encoding, kEncodings)) continue;
    const bool isNearly = isSpeltLike(encoding, kPlainEncodings) || isSpeltLike(encoding, kEncodings);
    sink.add(isNearly ? kVoAnomalyEncodingMisspelt : kVoAnomalyEncodingUnknown, at, field.length());
  }
}

void OpenBoundaries::findCollision(const std::string& boundary, std::uint64_t offset, std::uint64_t length,
                                   AnomalySink& sink) const {
  const std::size_t first = mOpen.size() > kCompared ? mOpen.size() - kCompared : 0;
  for (std::size_t i = mOpen.size(); i-- > first;) {
    const std::string& outer = mOpen[i];
    if (outer == boundary) return sink.add(kVoAnomalyBoundaryEqualOutside, offset, length);
    const std::size_t common = std::min(outer.size(), boundary.size());
    if (outer.compare(0, common, boundary, 0, common) == 0)
      return sink.add(kVoAnomalyBoundaryPrefixOutside, offset, length);
  }
}

OpenBoundaries::Match OpenBoundaries::match(std::string_view line) const {
  if (line.substr(0, 2) != "--") return Match::none;
  line.remove_prefix(2);
  while (!line.empty() && isBlank(line.back())) line.remove_suffix(1);
  const std::size_t first = mOpen.size() > kCompared ? mOpen.size() - kCompared : 0;
  Match found = Match::none;
  for (std::size_t i = mOpen.size(); i-- > first;) {
    const std::string& boundary = mOpen[i];
    if (boundary.empty() || line.substr(0, boundary.size()) != boundary) continue;
    const std::string_view rest = line.substr(boundary.size());
    if (rest.empty() || rest == "--") return Match::delimiter;
    found = Match::trailingText;
  }
  return found;
}

void findGapAnomalies(VoMsgBufferedReader& reader, const Gap& gap, std::string_view boundary, bool& isClosed,
                      AnomalySink& sink) {
  OpenBoundaries own;
  own.push(std::string(boundary));
  LineReader lines(reader, gap.offset, gap.length);
  bool isBehindDelimiter = gap.kind == GapKind::between;
  bool hasText = false;
  bool hasAttachment = false;
  bool isCloseMet = false;
  while (lines.next()) {
    const std::string_view line = lines.text();
    const OpenBoundaries::Match match = own.match(line);
    if (match == OpenBoundaries::Match::delimiter) {
      if (lines.followsLoneCr()) sink.add(kVoAnomalyDelimiterAfterCr, lines.offset(), lines.length());
      const bool isClose = line.substr(2 + boundary.size()).substr(0, 2) == "--";
      if (isCloseMet) sink.add(kVoAnomalyPartBehindClose, lines.offset(), lines.length());
      isCloseMet = isCloseMet || (isClose && gap.kind == GapKind::epilogue);
      isClosed = isClosed || isClose;
      isBehindDelimiter = true;
      continue;
    }
    if (match == OpenBoundaries::Match::trailingText)
      sink.add(kVoAnomalyDelimiterTrailingText, lines.offset(), lines.length());
    if (line.find_first_not_of(" \t") == line.npos) continue;
    const bool isAttachment = line.substr(0, 6) == "begin " || line.substr(0, 10) == "(This file";
    if (gap.kind == GapKind::preamble && !isBehindDelimiter) {
      if (!hasText) sink.add(kVoAnomalyPreambleText, lines.offset(), lines.length());
      if (isAttachment && !hasAttachment) sink.add(kVoAnomalyPreambleAttachment, lines.offset(), lines.length());
    } else if (gap.kind == GapKind::epilogue && isCloseMet) {
      if (!hasText) sink.add(kVoAnomalyEpilogueText, lines.offset(), lines.length());
    }
    hasText = true;
    hasAttachment = hasAttachment || isAttachment;
  }
}

void findNearDelimiters(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length,
                        const OpenBoundaries& open, bool limitLines, AnomalySink& sink) {
  bool hasMatch = open.empty();
  bool hasLong = !limitLines;
  for (LineReader lines(reader, offset, length); !(hasMatch && hasLong) && lines.next();) {
    if (!hasLong && lines.length() > kMaxLine) {
      sink.add(kVoAnomalyLineTooLong, lines.offset(), lines.length());
      hasLong = true;
    }
    if (!hasMatch && open.match(lines.text()) == OpenBoundaries::Match::trailingText) {
      sink.add(kVoAnomalyDelimiterTrailingText, lines.offset(), lines.length());
      hasMatch = true;
    }
  }
}

bool holdsDelimiter(VoMsgBufferedReader& reader, std::uint64_t length, const OpenBoundaries& open) {
  if (open.empty()) return false;
  for (LineReader lines(reader, 0, length); lines.next();)
    if (open.match(lines.text()) == OpenBoundaries::Match::delimiter) return true;
  return false;
}

}  // namespace vomsg::detail
