#include "vomsg/mail/Date.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

struct Row {
  const char* value;
  const char* want;  // ISO 8601; "" where there is no date
};
const Row kRows[] = {
    {"Tue, 3 Mar 2026 09:15:05 +0100", "2026-03-03T09:15:05+01:00"},
    {"3 Mar 2026 09:15 -0530", "2026-03-03T09:15:00-05:30"},
    {"Tue,3 MAR 2026 09:15:05 GMT", "2026-03-03T09:15:05+00:00"},
    {"Sun, 29 Feb 2004 23:59:60 EST", "2004-03-01T00:00:00-05:00"},  // a leap second is the next one
    {"Thu, 1 Jan 1970 00:00:00 +0000", "1970-01-01T00:00:00+00:00"},
    {"Wed, 31 Dec 1969 23:00:00 -0100", "1969-12-31T23:00:00-01:00"},
    {"1 Jan 1900 00:00:00 Z", "1900-01-01T00:00:00+00:00"},
    {"Fri (a comment, (nested)), 21 (x) Nov 97 09:55:06 -0600 (CST)", "1997-11-21T09:55:06-06:00"},
    {"21-Nov-49 09:55:06 A", "2049-11-21T09:55:06+00:00"},
    {"21 November 102 09:55:06 +0000", "2002-11-21T09:55:06+00:00"},
    {"", ""},
    {"yesterday", ""},
    {"32 Jan 2000 00:00:00 +0000", ""},
    {"1 Foo 2000 00:00:00 +0000", ""},
    {"1 Jan 2000 24:00:00 +0000", ""},
    {"1 Jan 99999999999 00:00:00 +0000", ""},
    {"1 Jan 2000 00:00:00 +9999", "2000-01-01T00:00:00+00:00"},
};

TEST(FaceDate, Reads) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.value);
    const std::optional<vomsg::Date> date = vomsg::Date::parse(row.value);
    EXPECT_EQ(date ? date->iso8601() : "", row.want);
  }
}

// Every day of 800 years, written and read again, is the same second; the C library agrees about the weekday.
TEST(FaceDate, WrittenReadsBack) {
  for (std::int64_t day = -146097; day < 146097; day += 13) {
    const vomsg::Date date{day * 86400 + 7261, day % 2 == 0 ? 90 : -210};
    const std::string text = date.rfc5322();
    const std::optional<vomsg::Date> again = vomsg::Date::parse(text);
    ASSERT_TRUE(again) << text;
    EXPECT_EQ(again->seconds, date.seconds) << text;
    EXPECT_EQ(again->offset, date.offset) << text;
    const auto shifted = static_cast<std::time_t>(date.seconds + date.offset * 60);
    if (shifted != date.seconds + date.offset * 60) continue;  // the C library's clock ends in 2038 in 32 bits
    std::tm fields{};
    if (gmtime_r(&shifted, &fields) == nullptr) continue;
    char want[64];
    std::strftime(want, sizeof want, "%a, ", &fields);
    EXPECT_EQ(text.substr(0, 5), want) << text;
  }
}

}  // namespace
