// Messages put together at random, a disclaimer added in every way: what was there is there after, bit for bit, and the
// disclaimer is there once for each alternative, in the charset that the part names. A longer run:
//   VOMSG_EDIT_COMBINATIONS=1000000 VOMSG_EDIT_SEED=7 edit_test --gtest_filter=DisclaimerInvariant.*
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>

#include "tests/edit/EditFixture.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"

namespace vomsg::test {
namespace {

constexpr std::string_view kMarker = "MARK-7";

// What declares no charset is UTF-8 here.
std::string utf8Of(VoMsgEntity& part) {
  if (!part.getCharset()) return contentOf(part);
  int err = 0;
  return bytesOf(part.getTextContent(err, nullptr, "utf-8"));
}

std::string encoded(std::string_view text, std::string_view encoding, bool softEnd) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  constexpr char kHex[] = "0123456789ABCDEF";
  if (encoding != "base64" && encoding != "quoted-printable") return std::string(text);
  std::string out;
  if (encoding == "quoted-printable") {
    std::size_t column = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto c = static_cast<unsigned char>(text[i]);
      if (text.substr(i, 2) == "\r\n") {
        out += "\r\n";
        column = 0;
        ++i;
        continue;
      }
      if (column > 70) out += "=\r\n", column = 0;
      if (std::isalnum(c)) {
        out += text[i];
        ++column;
      } else {
        out += {'=', kHex[c >> 4], kHex[c & 15]};
        column += 3;
      }
    }
    return softEnd ? out + "=\r\n" : out;
  }
  for (std::size_t i = 0; i < text.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k)
      group = group << 8 | (i + k < text.size() ? static_cast<unsigned char>(text[i + k]) : 0u);
    for (unsigned k = 0; k < 4; ++k) out += i + k > text.size() ? '=' : kAlphabet[group >> (18 - 6 * k) & 63];
    if (i % 57 == 54) out += "\r\n";
  }
  return out;
}

struct Charset {
  const char* name;  // "": declares none
  const char* text;  // in that charset
};
constexpr Charset kCharsets[] = {{"us-ascii", "plain words"},
                                 {"", "no label"},
                                 {"", "no label \xC3\xA4"},
                                 {"utf-8", "\xC3\xA4\xE2\x82\xAC \xE6\x97\xA5\xF0\x9F\x98\x80"},
                                 {"iso-8859-1", "caf\xE9 \xFC"},
                                 {"windows-1252", "\x80 \x93q\x94"},
                                 {"iso-2022-jp", "\x1B$BF|K\\\x1B(B x"},
                                 {"shift_jis", "\x93\xFA\x96\x7B\x83\x5C"},
                                 {"euc-jp", "\xC6\xFC\xCB\xDC"},
                                 {"gb2312", "\xD6\xD0\xCE\xC4"},
                                 {"big5", "\xA4\xA4\xA4\xE5"}};
constexpr const char* kDisclaimers[] = {"MARK-7 words", "MARK-7\nsecond & <line>\n", "MARK-7 \xC3\xA4\xC3\xB6",
                                        "MARK-7 \xE6\x97\xA5\xE6\x9C\xAC", "\xE6\x97\xA5 MARK-7 \xE2\x82\xAC\r\n"};

class Generator {
 public:
  explicit Generator(unsigned seed) : mRandom(seed) {}

  unsigned below(std::size_t n) { return static_cast<unsigned>(mRandom() % n); }
  template <class T, std::size_t N>
  const T& pick(const T (&all)[N]) {
    return all[below(N)];
  }

  std::string text(std::string_view subtype, std::string_view fields = "") {
    const Charset& charset = pick(kCharsets);
    std::string body;
    for (unsigned lines = below(4) + 1; lines-- > 0;) body += std::string(charset.text) + (lines ? "\r\n" : "");
    if (below(2)) body += "\r\n";
    if (below(20) == 0) body.clear();
    if (subtype == "html") {
      constexpr const char* kFrames[][2] = {{"<html><head></head><body bgcolor='>'>", "</body></html>"},
                                            {"<HTML><BODY>", "</BODY >\r\n</HTML>\r\n"},
                                            {"", ""},
                                            {"<script>'</body>'</script><p>", "<!-- </body> -->"}};
      const auto& frame = pick(kFrames);
      body = frame[0] + body + frame[1];
    } else if (subtype == "calendar") {
      body = "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nDESCRIPTION:" + body.substr(0, body.find('\r')) +
             "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
    }
    constexpr const char* kEncodings[] = {"", "7bit", "8bit", "base64", "quoted-printable"};
    const std::string encoding = pick(kEncodings);
    std::string head = "Content-Type: text/" + std::string(subtype);
    if (*charset.name) head += std::string("; charset=") + charset.name;
    if (below(3) == 0) head += "; format=flowed";
    head += "\r\n";
    if (!encoding.empty()) head += "Content-Transfer-Encoding: " + encoding + "\r\n";
    return head + std::string(fields) + "\r\n" + encoded(body, encoding, below(2));
  }

  std::string binary() {
    std::string bytes(below(200) + 1, '\0');
    for (char& c : bytes) c = static_cast<char>(mRandom());
    return "Content-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
           encoded(bytes, "base64", false);
  }

  std::string multipart(const char* subtype, const std::vector<std::string>& parts) {
    const std::string boundary = "b" + std::to_string(++mBoundaries);
    std::string out = "Content-Type: multipart/" + std::string(subtype) + "; boundary=" + boundary + "\r\n\r\n";
    if (below(2)) out += "preamble\r\n";
    for (const std::string& part : parts) out += "--" + boundary + "\r\n" + part + "\r\n";
    out += "--" + boundary + "--\r\n";
    return below(2) ? out + "epilogue\r\n" : out;
  }

  std::string message() {
    std::string content;
    switch (below(12)) {
      case 0:
        content = text("plain");
        break;
      case 1:
        content = text("html");
        break;
      case 2:
        content = text("calendar");
        break;
      case 3:
        content = multipart("mixed", {text("plain"), binary()});
        break;
      case 4:
        content = multipart("alternative", {text("plain"), text("html")});
        break;
      case 5:
        content = multipart(
            "mixed",
            {multipart("alternative", {text("plain"), multipart("related", {text("html"), binary()})}), binary()});
        break;
      case 6:
        content = multipart("signed", {text("plain"), binary()});
        break;
      case 7:
        content = multipart("mixed", {text("plain", "Content-Disposition: attachment\r\n"), text("plain")});
        break;
      case 8:
        content =
            multipart("mixed", {text("plain"), "Content-Type: message/rfc822\r\n\r\nSubject: in\r\n" + text("plain")});
        break;
      case 9:
        content = multipart("alternative", {text("plain"), text("html"), text("calendar")});
        break;
      case 10:
        content = multipart("mixed", {binary()});
        break;
      default:
        content = multipart("mixed", {text("plain"), "Content-Type: application/ms-tnef\r\n\r\nno stream"});
    }
    std::string out = "From: a@example.org\r\nSubject: s\r\nX-Other: kept\r\nMIME-Version: 1.0\r\n" + content;
    if (below(4) == 0) {  // as messages lie in files
      std::string lines;
      for (const char c : out)
        if (c != '\r') lines += c;
      out = lines;
    }
    return out;
  }

 private:
  std::mt19937 mRandom;
  unsigned mBoundaries = 0;
};

bool isLeaf(VoMsgEntity& entity) { return !entity.isMultipartEntity() && !entity.hasChildEntity(); }

std::vector<VoMsgEntity*> leavesOf(VoMsgEntity& root) {
  std::vector<VoMsgEntity*> leaves;
  for (VoMsgEntity* entity : entitiesOf(root))
    if (isLeaf(*entity)) leaves.push_back(entity);
  return leaves;
}

bool isText(VoMsgEntity& entity, const char* subtype) { return entity.isContentType("text", subtype); }

// The old text with the disclaimer, in UTF-8, as a reader of the rules would write it down.
std::string expectedPlain(const std::string& old, const std::string& text, bool top) {
  std::string disclaimer;
  for (const char c : text)
    if (c != '\r') disclaimer += c == '\n' ? "\r\n" : std::string(1, c);
  if (disclaimer.back() != '\n') disclaimer += "\r\n";
  if (top) return disclaimer + old;
  const bool open = !old.empty() && old.back() != '\n';
  return old + (open ? "\r\n" : "") + disclaimer;
}

void checkTarget(VoMsgEntity& was, VoMsgEntity& is, const std::string& disclaimer, bool top) {
  const std::string before = utf8Of(was);
  const std::string after = utf8Of(is);
  EXPECT_EQ(occurrences(after, kMarker), 1u);
  EXPECT_EQ(after.find("\xEF\xBF\xBD"), std::string::npos);
  if (isText(is, "plain")) {
    EXPECT_EQ(after, expectedPlain(before, disclaimer, top));
  } else if (isText(is, "html")) {
    const std::size_t begin = after.find("<table><tr><td bgcolor=#ffffff>");
    constexpr std::string_view kEnd = "</table>";
    ASSERT_NE(begin, std::string::npos);
    std::string without = after;
    EXPECT_EQ(without.erase(begin, after.find(kEnd) + kEnd.size() - begin), before);
  }
}

// What was in one part of a multipart stands in the result as it stood, header block included.
void checkRanges(VoMsgEntity& was, const std::string& before, const std::string& after) {
  const auto& part = dynamic_cast<VoMsgRfc822Entity&>(was);
  if (!was.getParentEntity() || !was.getParentEntity()->isMultipartEntity()) return;
  EXPECT_NE(after.find(before.substr(part.getHeaderOffset(), part.getHeaderSize() + part.getBodySize())), after.npos);
}

void checkInserted(MessageFixture& was, MessageFixture& is, const std::string& before, const std::string& after,
                   const std::string& disclaimer, bool top) {
  const auto old = leavesOf(*was);
  const auto now = leavesOf(*is);
  ASSERT_EQ(old.size(), now.size());
  unsigned changed = 0;
  bool inAlternative = false;
  for (std::size_t i = 0; i < old.size(); ++i) {
    if (contentOf(*old[i]) == contentOf(*now[i])) {
      if (old[i]->getNestingLevel() == 0) checkRanges(*old[i], before, after);
      continue;
    }
    ++changed;
    for (VoMsgEntity* up = old[i]; up; up = up->getParentEntity())
      inAlternative = inAlternative || VoMsgRfc822Message::_isAlternative(up);
    checkTarget(*old[i], *now[i], disclaimer, top);
  }
  EXPECT_EQ(changed, inAlternative ? 2u : 1u);
}

// The old leaves in order, and one more with the disclaimer.
void checkAdded(MessageFixture& was, MessageFixture& is) {
  const auto old = leavesOf(*was);
  unsigned added = 0;
  std::size_t i = 0;
  for (VoMsgEntity* leaf : leavesOf(*is)) {
    const std::string content = contentOf(*leaf);
    if (i < old.size() && content == contentOf(*old[i])) {
      ++i;
    } else {
      ++added;
      EXPECT_EQ(occurrences(utf8Of(*leaf), kMarker), 1u);
      EXPECT_EQ(utf8Of(*leaf).find("\xEF\xBF\xBD"), std::string::npos);
    }
  }
  EXPECT_EQ(i, old.size());
  EXPECT_EQ(added, 1u);
}

// Whether the shape of the message turns every mode into the one that keeps few header fields.
bool isForced(VoMsgRfc822Message& message, int option) {
  if (VoMsgRfc822Message::_isAlternative(&message)) return !(option & kVoDisclaimerHtml);
  return !(option & kVoDisclaimerTnefOk) && find(message, "application/ms-tnef");
}

void checkOne(unsigned seed, std::map<std::string, unsigned>& outcomes) {
  Generator make(seed);
  const std::string before = make.message();
  const std::string disclaimer = make.pick(kDisclaimers);
  constexpr const char* kPreferred[] = {"utf-8", "utf-8", "iso-8859-1", "iso-2022-jp"};
  constexpr int kBits[] = {0, 0x04, 0x04, 0x08, 0x0C, 0x10, 0x14, 0x40, 0x80, 0x9C};
  const int option = static_cast<int>(make.below(8) < 5 ? 0 : make.below(4)) | make.pick(kBits);
  const int position = static_cast<int>(make.below(4));
  const char* const prefer = make.pick(kPreferred);
  SCOPED_TRACE("seed " + std::to_string(seed) + " option " + std::to_string(option) + " prefer " + prefer + "\n" +
               before);

  MessageFixture was(before);
  MessageFixture message(before);
  const VoErrorCode code = insert(*message, disclaimer, option, position, "utf-8", prefer);
  const std::string after = written(*message);
  if (voFailed(code)) {
    ++outcomes["refused"];
    EXPECT_EQ(code, kVoDisclaimerRefused);
    EXPECT_EQ(after, before);
    return;
  }
  MessageFixture is(after);
  EXPECT_FALSE(voFailed(is.code));
  EXPECT_STREQ(is->getHeaderValue("Subject", "us-ascii"), "s");
  for (std::size_t begin = 0, end; (end = after.find('\n', begin)) != after.npos; begin = end + 1)
    EXPECT_LE(end - begin, 999u);

  VoMsgEntity* const last = is->getChildEntityAt(1);
  if (last && last->isContentType("message", "rfc822") && occurrences(after, "originalmail.eml")) {
    ++outcomes["wrapped"];
    int err = 0;
    EXPECT_EQ(bytesOf(last->getRawContent(err, nullptr)), before);
    EXPECT_EQ(occurrences(utf8Of(*is->getChildEntity()), kMarker), 1u);
    EXPECT_EQ(is->getHeader("X-Other") != nullptr, (option & 3) == 2 && !isForced(*was, option));
    EXPECT_EQ(leavesOf(*last).size(), leavesOf(*was).size());
  } else if (leavesOf(*is).size() > leavesOf(*was).size()) {
    ++outcomes[occurrences(after, "disclaimer.txt") ? "attached" : "new body"];
    checkAdded(was, is);
  } else {
    ++outcomes["inserted"];
    checkInserted(was, is, before, after, disclaimer, position == kVoDisclaimerTop);
  }
}

TEST(DisclaimerInvariant, NothingIsLost) {
  const char* const count = std::getenv("VOMSG_EDIT_COMBINATIONS");
  const char* const first = std::getenv("VOMSG_EDIT_SEED");
  const unsigned combinations = count ? static_cast<unsigned>(std::strtoul(count, nullptr, 10)) : 20000;
  const unsigned seed = first ? static_cast<unsigned>(std::strtoul(first, nullptr, 10)) : 1;
  std::map<std::string, unsigned> outcomes;
  for (unsigned i = 0; i < combinations && !HasFailure(); ++i) checkOne(seed + i, outcomes);
  std::printf("seeds %u to %u:", seed, seed + combinations - 1);
  for (const auto& [name, n] : outcomes) std::printf(" %s %u", name.c_str(), n);
  std::printf("\n");
}

}  // namespace
}  // namespace vomsg::test
