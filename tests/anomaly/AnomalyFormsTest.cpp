// Every anomaly in its smallest form, at the top level, in a nested message and in an encoded one: found with the right
// code at the right place, from memory and from a file, and without a change in what is written.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/support/MessageFixture.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/anomaly/VoMsgAnomalyList.h"

namespace vomsg::test {
namespace {

constexpr std::string_view kMark = "|>";  // where the entry is expected

struct Form {
  VoMsgAnomalyCode code;
  std::string message;      // lines end in LF, which becomes CR LF
  bool asItIs = false;      // the line ends stay
  bool isUnopened = false;  // inside another message it cannot be read
};

std::string headed(const std::string& type, const std::string& rest) {
  return "MIME-Version: 1.0\nContent-Type: " + type + "\n" + rest;
}
std::string multi(const std::string& body) { return headed("multipart/mixed; boundary=b", "\n" + body); }
std::string text(const std::string& fields, const std::string& body) {
  return headed("text/plain" + fields, "\n" + body);
}
std::string part(const std::string& fields, const std::string& body) {
  return "--b\n" + fields + "\n" + body + "\n--b--\n";
}

std::vector<Form> forms() {
  using std::string;
  const string one = "--b\n\none\n";
  const string end = "--b--\n";
  const string zero(1, '\0');
  const string program = "MZ" + string(70, '\0');
  const auto named = [](const string& type, const string& disposition) {
    return "MIME-Version: 1.0\nContent-Type: text/plain" + type + "\nContent-Disposition: inline" + disposition +
           "\n\nText\n";
  };
  const auto encoded = [](const string& name, const string& body) {
    return text("\nContent-Transfer-Encoding: " + name, body);
  };
  return {
      {kVoAnomalyRepeatedContentType, headed("text/plain", "|>Content-Type: TEXT/plain\n\nText\n")},
      {kVoAnomalyConflictingContentType, headed("text/plain", "|>Content-Type: text/html\n\nText\n"), false, true},
      {kVoAnomalyRepeatedTransferEncoding, encoded("7bit\n|>Content-Transfer-Encoding: 7bit", "Text\n")},
      {kVoAnomalyConflictingTransferEncoding, encoded("7bit\n|>Content-Transfer-Encoding: base64", "Text\n")},
      {kVoAnomalyRepeatedDisposition, named("", "\n|>Content-Disposition: inline")},
      {kVoAnomalyConflictingDisposition, named("", "\n|>Content-Disposition: attachment")},
      {kVoAnomalyRepeatedMimeVersion, "MIME-Version: 1.0\n|>MIME-Version: 1.0\n\nText\n"},
      {kVoAnomalyRepeatedFrom, "From: a@example.org\n|>From: b@example.org\n\nText\n"},
      {kVoAnomalyRepeatedSubject, "Subject: a\nTo: a@example.org\n|>subject: b\n\nText\n"},
      {kVoAnomalyRepeatedDate, "Date: a\n|>Date: b\n\nText\n"},
      {kVoAnomalyRepeatedMessageId, "Message-ID: <a@b>\n|>Message-ID: <c@d>\n\nText\n"},
      {kVoAnomalyHeaderUnterminated, "Subject: a\nTo: a@example.org\n|>"},
      {kVoAnomalyHeaderBlankEnd, "|>  \nText\n"},
      {kVoAnomalyHeaderBlankFold, "Subject: a\n|>  \nTo: a@example.org\n\nText\n"},
      {kVoAnomalyHeaderJunkLine, "Subject: a\n|>junk\nmore junk\nTo: a@example.org\n\nText\n"},
      {kVoAnomalyHeaderMboxLine, "|>From a@example.org Mon Jan  1 00:00:00 2024\nSubject: a\n\nText\n"},
      {kVoAnomalyHeaderNul, "Subject: a|>" + zero + "b\n\nText\n"},
      {kVoAnomalyHeaderLoneCr, "Subject: a|>\rTo: a@example.org\r\n\r\nText\r\n", true},
      {kVoAnomalyHeaderLoneLf, "Subject: a|>\nTo: a@example.org\r\n\r\nText\r\n", true},
      {kVoAnomalyHeader8Bit, "Subject: K|>\xF6ln\n\nText\n"},
      {kVoAnomalyHeaderNameBlank, "|>Subject : a\n\nText\n"},
      {kVoAnomalyLineTooLong, "Subject: a\n\nText\n|>" + string(999, 'x') + "\n"},
      {kVoAnomalyBoundaryRepeated, headed("multipart/mixed; boundary=b; boundary=|>b", "\n" + one + end)},
      {kVoAnomalyBoundaryConflicting, headed("multipart/mixed; boundary=a; boundary=|>\"b\"", "\n" + one + end)},
      {kVoAnomalyBoundaryTooLong,
       headed("multipart/mixed; boundary=|>" + string(71, 'b'), "\n--" + string(71, 'b') + "\n\none\n")},
      {kVoAnomalyBoundaryUnquoted, headed("multipart/mixed; boundary=|>a b", "\n--a b\n\none\n--a b--\n")},
      {kVoAnomalyBoundaryFolded, headed("multipart/mixed; boundary=|>\"a\n b\"", "\n--ab\n\none\n--ab--\n")},
      {kVoAnomalyBoundaryRfc2231, headed("multipart/mixed; boundary*0=|>b; boundary*1=c", "\n--bc\n\none\n--bc--\n")},
      {kVoAnomalyBoundaryComment,
       "MIME-Version: 1.0\n|>Content-Type: multipart/mixed; boundary=\"b\" (c)\n\n" + one + end},
      {kVoAnomalyBoundaryBlankEnd, headed("multipart/mixed; boundary=|>\"b \"", "\n" + one + end)},
      {kVoAnomalyBoundaryElsewhere, named("", "; boundary=|>b")},
      {kVoAnomalyMultipartNoBoundary, "MIME-Version: 1.0\n|>Content-Type: multipart/mixed\n\n" + one + end},
      {kVoAnomalyMultipartNoParts, "|>" + multi("nothing\n")},
      {kVoAnomalyMultipartUnclosed, multi(one + "|>")},
      {kVoAnomalyBoundaryEqualOutside,
       multi("--b\n|>Content-Type: multipart/mixed; boundary=b\n\n--b\n\none\n--b--\n--b--\n")},
      {kVoAnomalyBoundaryPrefixOutside,
       multi("--b\n|>Content-Type: multipart/mixed; boundary=bc\n\n--bc\n\none\n--bc--\n--b--\n")},
      {kVoAnomalyDelimiterTrailingText, multi("--b\n\none\n|>--b two\n--b--\n")},
      {kVoAnomalyDelimiterAfterCr, "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\none\r|>--b--\r\n",
       true},
      {kVoAnomalyDelimiterInDecoded, multi(part("Content-Transfer-Encoding: quoted-printable\n", "|>a\n=2D-b\nc"))},
      {kVoAnomalyPartBehindClose, multi(one + end + "|>--b\n\ntwo\n--b--\n")},
      {kVoAnomalyPreambleText, multi("|>Hello\n" + one + end)},
      {kVoAnomalyEpilogueText, multi(one + end + "|>Hello\n")},
      {kVoAnomalyEpilogueAttachment, multi(one + end + "|>begin 644 a.txt\n#0V%T\n`\nend\n")},
      {kVoAnomalyPreambleAttachment, multi("|>begin 644 a.txt\n#0V%T\n`\nend\n" + one + end)},
      {kVoAnomalyEncodedMultipart,
       headed("multipart/mixed; boundary=b", "|>Content-Transfer-Encoding: base64\n\n" + one + end)},
      {kVoAnomalyEncodingUnknown, encoded("7bit", "").insert(0, "|>Content-Transfer-Encoding: x-rot13\n")},
      {kVoAnomalyEncodingMisspelt, headed("text/plain", "|>Content-Transfer-Encoding: base-64\n\nText\n")},
      {kVoAnomalyBase64Junk, encoded("base64", "QUJD|>*REVG\n")},
      {kVoAnomalyBase64Padding, encoded("base64", "QUI\n|>")},
      {kVoAnomalyBase64BehindPadding, encoded("base64", "QUI=|>REVG\n")},
      {kVoAnomalyQuotedPrintableBad, encoded("quoted-printable", "a=41b|>=zz\n")},
      {kVoAnomalyUuencodeUnended, encoded("x-uuencode", "|>begin 644 a.txt\n#0V%T\n")},
      {kVoAnomalyUuencodeBadLine, encoded("x-uuencode", "begin 644 a.txt\n|>M0V%T\n`\nend\n")},
      {kVoAnomalyBinHexUnended,
       encoded("mac-binhex40", "(This file must be converted with BinHex 4.0)\n|>:$f*TEQKPH\n")},
      {kVoAnomalyNameDiffers, named("; name=|>a.txt", "; filename=b.txt")},
      {kVoAnomalyNameExtensionDiffers, named("; name=|>a.exe", "; filename=a.txt")},
      {kVoAnomalyNameExtensionHidden, named("", "; filename=|>\"a.txt=?us-ascii?q?.exe?=\"")},
      {kVoAnomalyNameControl, named("", "; filename*=|>us-ascii''a%07.txt")},
      {kVoAnomalyNameBidirectional, named("", "; filename*=|>utf-8''a%E2%80%AEtxt.exe")},
      {kVoAnomalyNamePath, named("", "; filename=|>\"../a.txt\"")},
      {kVoAnomalyNameFormsDisagree, named("", "; filename=|>a.txt; filename*=utf-8''a.exe")},
      {kVoAnomalyWordUnknownCharset, "Subject: |>=?x-unknown?q?a?=\n\nText\n"},
      {kVoAnomalyWordBroken, "Subject: |>=?utf-8?q?a\n\nText\n"},
      {kVoAnomalyWordMisplaced, "Message-ID: |>=?utf-8?q?a?=\n\nText\n"},
      {kVoAnomalyWordLineBreak, "Subject: |>=?utf-8?b?YQ1i?=\n\nText\n"},
      {kVoAnomalyWordNul, "Subject: |>=?utf-8?q?a=00b?=\n\nText\n"},
      {kVoAnomalyTextNotUtf8, text("; charset=utf-8", "|>a\xE4z\n")},
      {kVoAnomalyTextUtf7, text("; charset=utf-7", "|>+ADw-\n")},
      {kVoAnomalyTextUtf16NoMark, text("; charset=utf-16\nContent-Transfer-Encoding: base64", "|>AGE=\n")},
      {kVoAnomalyText8BitInAscii, text("; charset=us-ascii", "|>a\xE4z\n")},
      {kVoAnomalyTextUnknownCharset, text("; charset=x-unknown", "|>Text\n")},
      {kVoAnomalyExecutableDisguised, headed("image/png", "Content-Transfer-Encoding: binary\n\n|>" + program)},
      {kVoAnomalyContentTypeDiffers, headed("image/png", "\n|>%PDF-1.4\n")},
      {kVoAnomalyMessagePartial, multi(part("|>Content-Type: message/partial; id=a; number=1\n", "one"))},
      {kVoAnomalyMessageExternalBody, multi(part("|>Content-Type: message/external-body; access-type=url\n", "one"))},
      {kVoAnomalyBesideSignature, headed("multipart/signed; boundary=b", "\n" + one + one + "--b\n|>\nthree\n--b--\n")},
      {kVoAnomalyNestedUnreadable,
       multi(part("|>Content-Type: message/rfc822\nContent-Transfer-Encoding: mac-binhex40\n", "one")), false, true},
      {kVoAnomalyTnefUnreadable, multi(part("|>Content-Type: application/ms-tnef\n", "one"))},
      {kVoAnomalyAddressSeveralAt, "To: a@example.org, |>b@c@example.org\n\nText\n"},
      {kVoAnomalyAddressEncodedWord, "From: |>B <=?utf-8?q?a=40b?=@example.org>\n\nText\n"},
      {kVoAnomalyAddressGroup, "To: |>Friends: a@example.org;\n\nText\n"},
      {kVoAnomalyFromSeveral, "|>From: a@example.org, b@example.org\n\nText\n"},
  };
}

struct Expected {
  std::string bytes;
  std::size_t at = 0;
};

Expected expectedOf(const Form& form) {
  std::string bytes;
  for (const char c : form.message) bytes += c == '\n' && !form.asItIs ? std::string("\r\n") : std::string(1, c);
  const std::size_t at = bytes.find(kMark);
  EXPECT_NE(at, bytes.npos) << "no place is marked";
  return {bytes.erase(at, kMark.size()), at};
}

std::string base64Of(const std::string& bytes) {
  static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k)
      group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
    for (std::size_t k = 0; k < 4; ++k) text += i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

class Collecting : public ::testing::Test {
 protected:
  void SetUp() override { VoMsgSetCollectAnomalies(true); }
  void TearDown() override { VoMsgSetCollectAnomalies(false); }
};

std::vector<VoMsgAnomaly> entriesOf(VoMsgMailMessage& message) {
  std::vector<VoMsgAnomaly> entries;
  const VoMsgAnomalyList* const list = message.getAnomalies();
  EXPECT_NE(list, nullptr);
  for (unsigned i = 0; list && i < list->count(); ++i) entries.push_back(*list->at(i));
  return entries;
}

// The entry of that code at that place of its own source, or null after a failure.
const VoMsgAnomaly* entryAt(const std::vector<VoMsgAnomaly>& entries, VoMsgAnomalyCode code, std::size_t at) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&](const VoMsgAnomaly& entry) { return entry.code == code && entry.offset == at; });
  if (found != entries.end()) return &*found;
  std::string seen;
  for (const VoMsgAnomaly& entry : entries)
    seen.append(voAnomalyName(entry.code)).append(" at ").append(std::to_string(entry.offset)).append("\n");
  ADD_FAILURE() << voAnomalyName(code) << " is not found at " << at << ", but\n" << seen;
  return nullptr;
}

// What is looked for, in a message around it: its offset there and how it is carried.
void expectForm(const Form& form, const Expected& inner, const std::string& message, std::size_t carrier,
                bool isDecoded, std::size_t carrierSize) {
  for (const Source source : {Source::memory, Source::file}) {
    MessageFixture read(message, source);
    const std::string before = written(*read);
    const std::vector<VoMsgAnomaly> entries = entriesOf(*read);
    const std::vector<VoMsgEntity*> all = entitiesOf(*read);
    EXPECT_EQ(written(*read), before) << "asking changed what is written";
    for (const VoMsgAnomaly& entry : entries) {
      EXPECT_LE(std::uint64_t{entry.outermostOffset} + entry.outermostLength, message.size());
      ASSERT_LT(entry.part, all.size());
      EXPECT_EQ(all[entry.part], entry.entity);
      EXPECT_EQ(entry.level, voAnomalyLevel(entry.code));
    }
    const VoMsgAnomaly* const entry = entryAt(entries, form.code, inner.at);
    if (!entry) return;
    EXPECT_EQ(entry->isDecoded, isDecoded);
    EXPECT_EQ(entry->outermostOffset, isDecoded ? carrier : carrier + inner.at);
    EXPECT_EQ(entry->outermostLength, isDecoded ? carrierSize : entry->length);
  }
}

TEST_F(Collecting, EveryFormIsFoundWhereItStands) {
  std::set<VoMsgAnomalyCode> tested;
  for (const Form& form : forms()) {
    SCOPED_TRACE(voAnomalyName(form.code));
    tested.insert(form.code);
    const Expected inner = expectedOf(form);
    expectForm(form, inner, inner.bytes, 0, false, 0);

    if (form.isUnopened) continue;
    std::string outer = "MIME-Version: 1.0\r\nContent-Type: message/rfc822\r\n\r\n";
    expectForm(form, inner, outer + inner.bytes, outer.size(), false, 0);

    outer.insert(outer.size() - 2, "Content-Transfer-Encoding: base64\r\n");
    const std::string body = base64Of(inner.bytes) + "\r\n";
    expectForm(form, inner, outer + body, outer.size(), true, body.size());
  }
  // Forms that need another message than one of text have their own tests below.
  const std::set<VoMsgAnomalyCode> elsewhere = {kVoAnomalyHeaderLimit, kVoAnomalyBoundaryEmpty, kVoAnomalyNestingLimit,
                                                kVoAnomalyTnefDamaged, kVoAnomalyTnefNested};
  for (unsigned i = 0; i < voCountAnomalyCodes(); ++i)
    EXPECT_EQ(tested.count(voAnomalyCodeAt(i)) + elsewhere.count(voAnomalyCodeAt(i)), 1u)
        << voAnomalyName(voAnomalyCodeAt(i));
}

TEST_F(Collecting, LimitsAndWhatEndsReading) {
  std::string many;
  for (int i = 0; i < 101; ++i) many += "X-" + std::to_string(i) + ": a\r\n";
  MessageFixture crowded(many + "\r\nText\r\n");
  entryAt(entriesOf(*crowded), kVoAnomalyHeaderLimit, many.rfind("X-100"));

  const std::string empty = "Content-Type: multipart/mixed; boundary=\"\"\r\n\r\nText\r\n";
  MessageFixture unbounded(empty);
  entryAt(entriesOf(*unbounded), kVoAnomalyBoundaryEmpty, empty.find("\"\""));

  std::string deep;
  for (int i = 0; i < 22; ++i) deep += "Content-Type: message/rfc822\r\n\r\n";
  MessageFixture nested(deep + "Subject: a\r\n\r\nText\r\n");
  const std::vector<VoMsgAnomaly> entries = entriesOf(*nested);
  const VoMsgAnomaly* const limit = entryAt(entries, kVoAnomalyNestingLimit, 0);
  ASSERT_NE(limit, nullptr);
  EXPECT_EQ(limit->outermostOffset, 21 * std::string("Content-Type: message/rfc822\r\n\r\n").size());
}

TEST_F(Collecting, StreamsOfTnef) {
  const std::string good = stream(record(0x8004, "Subject" + std::string(1, '\0'), 1, 1));
  const std::string damaged = good + record(0x800C, "text", 1, 2, 1);
  const std::string outer = "Content-Type: application/ms-tnef\r\nContent-Transfer-Encoding: binary\r\n\r\n";
  for (const bool isDamaged : {false, true}) {
    MessageFixture message(outer + (isDamaged ? damaged : good));
    const std::vector<VoMsgAnomaly> entries = entriesOf(*message);
    EXPECT_EQ(entries.empty(), !isDamaged);
    if (isDamaged) entryAt(entries, kVoAnomalyTnefDamaged, good.size());
  }
}

TEST_F(Collecting, OrdinaryMailIsNotOdd) {
  const std::string message =
      "From: A <a@example.org>\r\nTo: \"B, C\" <b@example.org>\r\nSubject: =?utf-8?q?K=C3=B6ln?=\r\nMIME-Version: "
      "1.0\r\n"
      "Content-Type: multipart/mixed; boundary=\"outer=_1\"\r\n\r\n--outer=_1\r\n"
      "Content-Type: multipart/alternative; boundary=inner\r\n\r\n--inner\r\nContent-Type: text/plain; "
      "charset=utf-8\r\n"
      "Content-Transfer-Encoding: quoted-printable\r\n\r\nK=C3=B6ln=\r\n -- \r\n--inner\r\nContent-Type: "
      "text/html\r\n\r\n<p>"
      "\r\n--inner--\r\n\r\n--outer=_1\r\nContent-Type: image/png; name=\"a.png\"\r\nContent-Transfer-Encoding: "
      "base64\r\n"
      "Content-Disposition: attachment; filename=\"a.png\"\r\n\r\niVBORw0KGgo=\r\n--outer=_1--\r\n";
  MessageFixture read(message);
  for (const VoMsgAnomaly& entry : entriesOf(*read))
    ADD_FAILURE() << voAnomalyName(entry.code) << " at " << entry.offset;
}

TEST_F(Collecting, AFloodIsCounted) {
  std::string flood;
  for (int i = 0; i < 50; ++i) flood += "Subject: a\r\n";
  std::string message = "Content-Type: multipart/mixed; boundary=b\r\n\r\n";
  for (int i = 0; i < 50; ++i) message += "--b\r\n" + flood + "\r\nText\r\n";
  MessageFixture read(message + "--b--\r\n");
  const VoMsgAnomalyList* const list = read->getAnomalies();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->count(), VoMsgAnomalyList::kMaxEntries);
  EXPECT_EQ(list->countAll(), 49u * 50u);
  EXPECT_EQ(list->at(list->count()), nullptr);
}

TEST(Anomalies, AreNotLookedForUnlessAskedFor) {
  MessageFixture read("Subject: a\r\nSubject: b\r\n\r\nText\r\n");
  VoMsgSetCollectAnomalies(true);  // too late
  EXPECT_EQ(read->getAnomalies(), nullptr);
  VoMsgSetCollectAnomalies(false);
}

TEST_F(Collecting, PublicMailHasNothingDangerous) {
  const auto messages = corpusMessages();
  if (messages.empty()) GTEST_SKIP() << "the public corpus is not there";
  unsigned looked = 0;
  for (const auto& [path, bytes] : messages) {
    if (path.find("malformed") != path.npos || path.find("error_emails") != path.npos) continue;
    // Its text part holds two texts, each encoded and padded by itself.
    if (path.find("thirdparty/002.eml") != path.npos) continue;
    MessageFixture read(bytes);
    for (const VoMsgAnomaly& entry : entriesOf(*read))
      if (entry.level == kVoAnomalyDangerous)
        ADD_FAILURE() << path << ": " << voAnomalyName(entry.code) << " at " << entry.offset;
    ++looked;
  }
  EXPECT_GT(looked, 100u);
}

}  // namespace
}  // namespace vomsg::test
