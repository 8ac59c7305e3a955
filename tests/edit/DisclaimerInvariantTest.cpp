// Messages put together at random, a disclaimer added in every way: what was there is there after, bit for bit, and the
// disclaimer is there once for each alternative, in the charset that the part names. A longer run:
//   VOMSG_EDIT_COMBINATIONS=1000000 VOMSG_EDIT_SEED=7 edit_test --gtest_filter=DisclaimerInvariant.*
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <random>

#include "tests/edit/EditFixture.h"
#include "tests/edit/FailingMemory.h"
#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace vomsg::test {
namespace {

constexpr std::string_view kMarker = "MARK-7";

// What declares no charset is UTF-8 here.
std::string utf8Of(VoMsgEntity& part) {
  if (!part.getCharset()) return contentOf(part);
  int err = 0;
  return bytesOf(part.getTextContent(err, nullptr, "utf-8"));
}

std::string encoded(std::string text, const char* encoding) {
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  {
    const std::unique_ptr<VoMsgBufferedWriter> out(target.getOutputStream(VoMsgResourceLocator::dataPart));
    detail::encodeTransfer(detail::transferEncodingOf(encoding), *out, *resourceOver(text));
  }
  return bytesOf(&target);
}

// The part of the sample, with its header block.
const std::string& winmailPart() {
  static const std::string part = [] {
    for (const auto& [name, bytes] : sampleMessages())
      if (const std::size_t begin = bytes.find("Content-Disposition"); name == "winmail.eml")
        return bytes.substr(begin, bytes.find("\r\n--", begin) - begin);
    ADD_FAILURE() << "the sample is missing";
    return std::string();
  }();
  return part;
}

struct Charset {
  const char* name;  // "": declares none
  const char* text;  // in that charset
};
constexpr Charset kCharsets[] = {{"", "no label"},
                                 {"", "no label \xC3\xA4"},
                                 {"us-ascii", "plain words"},
                                 {"utf-8", "\xC3\xA4\xE2\x82\xAC \xE6\x97\xA5\xF0\x9F\x98\x80"},
                                 {"iso-8859-1", "caf\xE9 \xFC"},
                                 {"iso-2022-jp", "\x1B$BF|K\\\x1B(B x"},
                                 {"shift_jis", "\x93\xFA\x96\x7B\x83\x5C"},
                                 {"gb2312", "\xD6\xD0\xCE\xC4"},
                                 {"big5", "\xA4\xA4\xA4\xE5"}};
constexpr const char* kDisclaimers[] = {
    "MARK-7",         "MARK-7\n2 & <b>\n", "MARK-7 \xC3\xA4", "MARK-7 \xE6\x97\xA5", "\xE2\x82\xAC MARK-7\r\n",
    "a;b,c\\\nMARK-7"};

// A part for each letter: p plain, u without type, d plain and attached, h HTML, c an invitation, b binary, n an
// attached message, N a bundle of them, t what claims to be TNEF, w a winmail.dat; m a r s multiparts of what stands in
// the parentheses behind them.
constexpr const char* kShapes[] = {"p",     "u",     "h",     "c",      "m(pb)", "a(ph)", "m(a(pr(hb))b)", "m(r(hb)b)",
                                   "s(pb)", "m(dp)", "m(pn)", "a(phc)", "m(b)",  "m(pN)", "m(pt)",         "m(pwb)"};

class Generator {
 public:
  explicit Generator(unsigned seed) : mRandom(seed) {}

  unsigned below(std::size_t n) { return static_cast<unsigned>(mRandom() % n); }
  template <class T, std::size_t N>
  const T& pick(const T (&all)[N]) {
    return all[below(N)];
  }

  std::string message() {
    const char* shape = pick(kShapes);
    std::string all = "From: a@example.org\r\nSubject: s\r\nX-Other: kept\r\nMIME-Version: 1.0\r\n" + part(shape);
    if (below(4) == 0) std::erase(all, '\r');  // as messages lie in files
    return all;
  }

 private:
  std::string part(const char*& shape) {
    constexpr const char* kSubtypes[] = {"mixed", "alternative", "related", "signed"};
    const char kind = *shape++;
    if (const std::size_t i = std::string_view("mars").find(kind); i != std::string_view::npos)
      return multipart(kSubtypes[i], shape);
    if (kind == 't') return "Content-Type: application/ms-tnef\r\n\r\nno stream";
    if (kind == 'w') return winmailPart();
    if (kind == 'n') return "Content-Type: message/rfc822\r\n\r\nSubject: in\r\n" + text('p');
    if (kind == 'N') {
      const char* all = "m(nnnnnnnnnnnnnnnnnn)";
      return part(all);
    }
    if (kind != 'b') return text(kind);
    std::string bytes(below(200) + 1, '\0');
    for (char& c : bytes) c = static_cast<char>(mRandom());
    return "Content-Type: image/png\r\nContent-Transfer-Encoding: base64\r\n\r\n" + encoded(bytes, "base64");
  }

  std::string multipart(const std::string& subtype, const char*& shape) {
    const std::string boundary = "b" + std::to_string(++mBoundaries);
    std::string out = "Content-Type: multipart/" + subtype + "; boundary=" + boundary + "\r\n\r\n";
    if (below(2)) out += "preamble\r\n";
    for (++shape; *shape != ')';) out += "--" + boundary + "\r\n" + part(shape) + "\r\n";
    ++shape;
    return out + "--" + boundary + "--\r\n" + (below(2) ? "epilogue\r\n" : "");
  }

  std::string text(char kind) {
    constexpr const char* kFrames[][2] = {{"<html><head></head><body bgcolor='>'>", "</body></html>"},
                                          {"<HTML><BODY>", "</BODY >\r\n</HTML>\r\n"},
                                          {"", ""},
                                          {"<script>'</body>'</script><p>", "<!-- </body> -->"}};
    constexpr const char* kEncodings[] = {"", "7bit", "8bit", "base64", "quoted-printable"};
    const Charset& charset = kind == 'u' ? kCharsets[below(2)] : pick(kCharsets);
    const char* const lineEnd = kind == 'c' ? "" : "\r\n";
    std::string body;
    for (unsigned lines = below(9); lines-- > 0;) body += charset.text + std::string(lines ? lineEnd : "");
    if (kind == 'c')
      body = "BEGIN:VEVENT\r\nDESCRIPTION:" + body + "\r\nEND:VEVENT\r\n";
    else if (below(2))
      body += "\r\n";
    const auto& frame = kFrames[kind == 'h' ? below(4) : 2];
    std::string head = "Content-Type: text/";
    head += kind == 'h' ? "html" : kind == 'c' ? "calendar" : "plain";
    if (*charset.name) head += std::string("; charset=") + charset.name;
    if (kind == 'u') head = "X-Type: none";
    if (kind == 'd') head += "\r\nContent-Disposition: attachment";
    const std::string encoding = pick(kEncodings);
    if (!encoding.empty()) head += "\r\nContent-Transfer-Encoding: " + encoding;
    const char* const softEnd = encoding == "quoted-printable" && below(2) ? "=\r\n" : "";
    return head + "\r\n\r\n" + encoded(frame[0] + body + frame[1], encoding.c_str()) + softEnd;
  }

  std::mt19937 mRandom;
  unsigned mBoundaries = 0;
};

std::vector<VoMsgEntity*> leavesOf(VoMsgEntity& root) {
  std::vector<VoMsgEntity*> leaves = entitiesOf(root);
  std::erase_if(leaves, [](VoMsgEntity* entity) { return entity->isMultipartEntity() || entity->hasChildEntity(); });
  return leaves;
}

std::string unfolded(std::string text) {
  for (const char* fold : {"\r\n ", "\n "})
    for (std::size_t at; (at = text.find(fold)) != text.npos;) text.erase(at, std::strlen(fold));
  return text;
}

// The disclaimer is there once, and nothing became a replacement character.
void checkText(VoMsgEntity& part) {
  EXPECT_EQ(occurrences(unfolded(utf8Of(part)), kMarker), 1u);
  EXPECT_EQ(utf8Of(part).find("\xEF\xBF\xBD"), std::string::npos);
}

// The old text with the disclaimer, in UTF-8, as a reader of the rules would write it down.
std::string expectedPlain(const std::string& old, const std::string& text, bool top) {
  std::string disclaimer;
  for (const char c : text)
    if (c != '\r') disclaimer += c == '\n' ? "\r\n" : std::string(1, c);
  if (disclaimer.back() != '\n') disclaimer += "\r\n";
  const bool isOpen = !old.empty() && old.back() != '\n';
  return top ? disclaimer + old : old + (isOpen ? "\r\n" : "") + disclaimer;
}

std::string expectedCalendar(const std::string& old, const std::string& text, bool top) {
  std::string escaped;
  for (const char c : text.substr(0, text.find_last_not_of("\r\n") + 1)) {
    if (c == '\\' || c == ';' || c == ',') escaped += '\\';
    if (c != '\r') escaped += c == '\n' ? "\\n" : std::string(1, c);
  }
  const std::size_t begin = old.find(':', old.find("DESCRIPTION")) + 1;
  const std::size_t end = old.find_first_of("\r\n", begin);
  const std::string value = old.substr(begin, end - begin);
  const std::string& first = top ? escaped : value;
  return old.substr(0, begin) + first + (first.empty() ? "" : "\\n") + "*~*~*~*~*~*~*~*~*~*\\n" +
         (top ? value : escaped) + old.substr(end);
}

// As the text of a message whose lines end in LF alone must come out, whatever ended its lines.
std::string withoutCr(std::string text, bool isLineFeed) {
  if (isLineFeed) std::erase(text, '\r');
  return text;
}

void checkTarget(VoMsgEntity& was, VoMsgEntity& is, const std::string& disclaimer, bool top, bool isLineFeed) {
  checkText(is);
  std::string after = utf8Of(is);
  if (is.isContentType("text", "plain")) {
    EXPECT_EQ(after, withoutCr(expectedPlain(utf8Of(was), disclaimer, top), isLineFeed));
  } else if (is.isContentType("text", "html")) {
    constexpr std::string_view kEnd = "</table>";
    const std::size_t begin = after.find("<table><tr><td bgcolor=#ffffff>");
    ASSERT_NE(begin, std::string::npos);
    EXPECT_EQ(after.erase(begin, after.find(kEnd) + kEnd.size() - begin), withoutCr(utf8Of(was), isLineFeed));
  } else {
    EXPECT_EQ(unfolded(after), withoutCr(expectedCalendar(utf8Of(was), disclaimer, top), isLineFeed));
  }
}

// What was in one part of a multipart stands in the result as it stood, header block included.
void checkRange(VoMsgEntity& was, const std::string& before, const std::string& after) {
  const auto* const part = dynamic_cast<VoMsgRfc822Entity*>(&was);
  if (!part || was.getNestingLevel() > 0 || !was.getParentEntity() || !was.getParentEntity()->isMultipartEntity())
    return;
  EXPECT_NE(after.find(before.substr(part->getHeaderOffset(), part->getHeaderSize() + part->getBodySize())),
            after.npos);
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
      checkRange(*old[i], before, after);
      continue;
    }
    ++changed;
    for (VoMsgEntity* up = old[i]; up; up = up->getParentEntity())
      inAlternative = inAlternative || VoMsgRfc822Message::_isAlternative(up);
    checkTarget(*old[i], *now[i], disclaimer, top, before[before.find('\n') - 1] != '\r');
  }
  EXPECT_EQ(changed, inAlternative ? 2u : 1u);
  for (VoMsgEntity* entity : entitiesOf(*was))  // attached messages, winmail.dat
    if (entity->hasChildEntity() && !entity->isMultipartEntity()) checkRange(*entity, before, after);
}

// The old leaves in order, and one more with the disclaimer.
void checkAdded(MessageFixture& was, MessageFixture& is) {
  const auto old = leavesOf(*was);
  const auto now = leavesOf(*is);
  ASSERT_EQ(now.size(), old.size() + 1);
  std::size_t i = 0;
  for (VoMsgEntity* leaf : now)
    if (i < old.size() && contentOf(*leaf) == contentOf(*old[i]))
      ++i;
    else
      checkText(*leaf);
  EXPECT_EQ(i, old.size());
}

// Whether the shape of the message turns every mode into the one that keeps few header fields.
bool isForced(VoMsgRfc822Message& message, const std::string& bytes, int option) {
  if (VoMsgRfc822Message::_isAlternative(&message)) return !(option & kVoDisclaimerHtml);
  return !(option & kVoDisclaimerTnefOk) && occurrences(bytes, "application/ms-tnef");
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
    checkText(*is->getChildEntity());
    EXPECT_EQ(is->getHeader("X-Other") != nullptr, (option & 3) == 2 && !isForced(*was, before, option));
    EXPECT_EQ(leavesOf(*last).size(), leavesOf(*was).size());
  } else if (leavesOf(*is).size() > leavesOf(*was).size()) {
    ++outcomes[occurrences(after, "disclaimer.txt") ? "attached" : "new body"];
    checkAdded(was, is);
  } else {
    ++outcomes["inserted"];
    checkInserted(was, is, before, after, disclaimer, position == kVoDisclaimerTop);
  }
}

unsigned setting(const char* name, unsigned usual) {
  const char* const value = std::getenv(name);
  return value ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : usual;
}

TEST(DisclaimerInvariant, NothingIsLost) {
  const unsigned seed = setting("VOMSG_EDIT_SEED", 1);
  const unsigned end = seed + setting("VOMSG_EDIT_COMBINATIONS", 20000);
  std::map<std::string, unsigned> outcomes;
  for (unsigned next = seed; next < end && !HasFailure(); ++next) checkOne(next, outcomes);
  std::printf("seeds %u to %u:", seed, end - 1);
  for (const auto& [name, n] : outcomes) std::printf(" %s %u", name.c_str(), n);
  std::printf("\n");
}

// Each allocation fails in turn: nothing of a disclaimer that could not be added stays behind.
TEST(DisclaimerInvariant, WhereverMemoryRunsOutTheMessageIsAsItWas) {
  for (unsigned seed = 0; seed < 24; ++seed) {
    Generator make(seed);
    std::string before = make.message();
    if (seed == 0)
      before = "Subject: s\r\n\r\ntext\r\nbegin 644 a\r\n#86)C\r\n`\r\nend\r\n";  // its child comes back too
    const int option = static_cast<int>(make.below(4) ? make.below(4) | 4 : 0x86);
    bool isShort = true;
    for (long n = 0; isShort; ++n) {
      SCOPED_TRACE("seed " + std::to_string(seed) + " allocation " + std::to_string(n));
      MessageFixture message(before);
      const std::string tree = outline(*message);
      std::string text = "MARK-7 \xC3\xA4";
      std::unique_ptr<VoMsgResourceLocator> disclaimer = resourceOver(text);
      const VoErrorCode code = withFailingMemory(n, isShort, [&] {
        return message->insertDisclaimerMessage(kVoDisclaimerTop, disclaimer.get(), option, "utf-8", nullptr);
      });
      if (!voFailed(code)) static_cast<void>(disclaimer.release());
      ASSERT_EQ(written(*message) == before && outline(*message) == tree, voFailed(code));
    }
  }
}

}  // namespace
}  // namespace vomsg::test
