// The time in a Date field (RFC 5322, section 3.3, with the obsolete forms that mail still holds).
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "vomsg/mail/Utf8.h"

namespace vomsg {

struct Date {
  std::int64_t seconds = 0;  // since 1970-01-01 00:00 UTC
  int offset = 0;            // of the sender's clock, in minutes east of UTC

  std::string iso8601() const;  // "2026-11-22T04:13:00+01:00"
  std::string rfc5322() const;  // "Sun, 22 Nov 2026 04:13:00 +0100"
  static std::optional<Date> parse(std::string_view text);
};

namespace inner {

// Days since 1970-01-01 in the Gregorian calendar, and back. The year begins in March, so the leap day is its last.
inline std::int64_t daysFromCivil(std::int64_t year, unsigned month, unsigned day) {
  year -= month <= 2 ? 1 : 0;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const auto yearOfEra = static_cast<unsigned>(year - era * 400);
  const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

struct Civil {
  int year;
  unsigned month, day, weekday, hour, minute, second;
};
inline Civil civilOf(std::int64_t seconds) {
  std::int64_t days = seconds / 86400;
  std::int64_t rest = seconds % 86400;
  if (rest < 0) {
    rest += 86400;
    --days;
  }
  const std::int64_t shifted = days + 719468;
  const std::int64_t era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
  const auto dayOfEra = static_cast<unsigned>(shifted - era * 146097);
  const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned shiftedMonth = (5 * dayOfYear + 2) / 153;
  Civil civil{};
  civil.day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
  civil.month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
  civil.year = static_cast<int>(yearOfEra + era * 400 + (civil.month <= 2 ? 1 : 0));
  civil.weekday = static_cast<unsigned>(((days % 7) + 11) % 7);  // 0: Sunday
  const auto clock = static_cast<unsigned>(rest);
  civil.hour = clock / 3600;
  civil.minute = clock / 60 % 60;
  civil.second = clock % 60;
  return civil;
}

inline constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
inline constexpr std::array<std::string_view, 7> kWeekdays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

// Cuts words, numbers and single signs off a date, past blanks and comments.
class DateTokens {
 public:
  explicit DateTokens(std::string_view text) : mText(text) {}

  // At most nine digits; how many is told. False when no digit comes next.
  bool number(unsigned& value, std::size_t& digits) {
    skip();
    value = 0;
    for (digits = 0; digits < mText.size() && digits < 9 && isDigit(mText[digits]); ++digits) {
      value = value * 10 + static_cast<unsigned>(mText[digits] - '0');
    }
    mText.remove_prefix(digits);
    return digits > 0;
  }
  std::string_view word() {
    skip();
    std::size_t size = 0;
    while (size < mText.size() && lower(mText[size]) >= 'a' && lower(mText[size]) <= 'z') ++size;
    const std::string_view found = mText.substr(0, size);
    mText.remove_prefix(size);
    return found;
  }
  bool sign(char c) {
    skip();
    if (mText.empty() || mText.front() != c) return false;
    mText.remove_prefix(1);
    return true;
  }

 private:
  static bool isDigit(char c) { return c >= '0' && c <= '9'; }
  void skip() {
    unsigned depth = 0;
    for (; !mText.empty(); mText.remove_prefix(1)) {
      const char c = mText.front();
      if (c == '(') ++depth;
      const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
      if (depth == 0 && !isBlank) return;
      if (c == ')') --depth;
    }
  }

  std::string_view mText;
};

// Minutes east of UTC. Military letters and unknown names mean nothing certain, hence UTC (RFC 5322, section 4.3).
inline int zoneOffset(DateTokens& tokens) {
  const bool east = tokens.sign('+');
  if (east || tokens.sign('-')) {
    unsigned value = 0;
    std::size_t digits = 0;
    if (!tokens.number(value, digits) || value > 9959 || value % 100 > 59) return 0;
    const int minutes = static_cast<int>(value / 100 * 60 + value % 100);
    return east ? minutes : -minutes;
  }
  struct Zone {
    std::string_view name;
    int hours;
  };
  constexpr Zone kZones[] = {{"EST", -5}, {"EDT", -4}, {"CST", -6}, {"CDT", -5},
                             {"MST", -7}, {"MDT", -6}, {"PST", -8}, {"PDT", -7}};
  const std::string_view name = tokens.word();
  for (const Zone& zone : kZones) {
    if (equalNoCase(zone.name, name)) return zone.hours * 60;
  }
  return 0;
}

}  // namespace inner

inline std::optional<Date> Date::parse(std::string_view text) {
  inner::DateTokens tokens(text);
  unsigned day = 0, year = 0, hour = 0, minute = 0, second = 0;
  std::size_t digits = 0;
  tokens.word();  // the weekday, which the date itself says too
  tokens.sign(',');
  if (!tokens.number(day, digits) || day < 1 || day > 31) return std::nullopt;
  tokens.sign('-');
  const std::string_view name = tokens.word();
  unsigned month = 0;
  while (month < 12 && !inner::equalNoCase(inner::kMonths[month], name.substr(0, 3))) ++month;
  if (month == 12) return std::nullopt;
  tokens.sign('-');
  if (!tokens.number(year, digits) || year > 9999) return std::nullopt;
  if (digits == 2) year += year < 50 ? 2000u : 1900u;
  if (digits == 3) year += 1900;
  if (!tokens.number(hour, digits) || hour > 23 || !tokens.sign(':') || !tokens.number(minute, digits) || minute > 59) {
    return std::nullopt;
  }
  if (tokens.sign(':') && (!tokens.number(second, digits) || second > 60)) return std::nullopt;
  Date date;
  date.offset = inner::zoneOffset(tokens);
  date.seconds = inner::daysFromCivil(year, month + 1, day) * 86400 + hour * 3600 + minute * 60 + second -
                 std::int64_t{date.offset} * 60;
  return date;
}

inline std::string Date::iso8601() const {
  const inner::Civil at = inner::civilOf(seconds + std::int64_t{offset} * 60);
  const int minutes = offset < 0 ? -offset : offset;
  char buffer[80];
  std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02u:%02u:%02u%c%02d:%02d", at.year, at.month, at.day, at.hour,
                at.minute, at.second, offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
  return buffer;
}

inline std::string Date::rfc5322() const {
  const inner::Civil at = inner::civilOf(seconds + std::int64_t{offset} * 60);
  const int minutes = offset < 0 ? -offset : offset;
  char buffer[96];
  std::snprintf(buffer, sizeof buffer, "%.3s, %u %.3s %04d %02u:%02u:%02u %c%02d%02d",
                inner::kWeekdays[at.weekday].data(), at.day, inner::kMonths[at.month - 1].data(), at.year, at.hour,
                at.minute, at.second, offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
  return buffer;
}

}  // namespace vomsg
