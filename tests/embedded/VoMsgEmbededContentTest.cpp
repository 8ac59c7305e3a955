// Attachments embedded in text, from the parsed message to the written one.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/embedded/EmbeddedBlocks.h"
#include "tests/support/MessageFixture.h"
#include "vomsg/embedded/VoMsgEmbededEntity.h"
#include "vomsg/embedded/VoMsgMultiEmbededEntity.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoQuotedPrintable.h"

namespace {

using namespace vomsg::detail;
using namespace vomsg::test;

std::string encodedWith(const std::string& encoding, const std::string& bytes) {
  if (encoding == "x-uuencode") return uuencode(bytes, "noname");
  if (encoding == "mac-binhex40") return binHex(bytes, "noname");
  return through(bytes, 4096, [&](auto& out, auto& in) {
    if (encoding == "base64") {
      encodeBase64(out, in, true);
    } else if (encoding == "quoted-printable") {
      encodeQuotedPrintable(out, in, true);
    } else {
      out.copyFrom(&in);
    }
  });
}

std::string withLineFeeds(std::string text) {
  std::erase(text, '\r');
  return text;
}

const std::string kFirst = "Hello,\r\n\r\nhere is the first:\r\n";
const std::string kSecond = "\r\nand the second \xC3\xA9:\r\n";
const std::string kThird = "\r\nBye.\r\n";
const std::string kMacBytes(200, 'm');

// Text, block, text, block, text.
std::string mixedText(const std::string& first = "first file") {
  return kFirst + uuencode(first, "first.bin") + kSecond + binHex(kMacBytes, "second file") + kThird;
}

std::string header(const char* encoding) {
  return std::string("Subject: x\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: ") +
         encoding + "\r\n\r\n";
}

std::vector<VoMsgEntity*> piecesOf(VoMsgEntity& part) {
  std::vector<VoMsgEntity*> pieces;
  VoMsgEntity* const whole = part.getChildEntity();
  for (VoMsgEntity* piece = whole ? whole->getChildEntity() : nullptr; piece; piece = piece->getNextSiblingEntity())
    pieces.push_back(piece);
  return pieces;
}

VoErrorCode replace(VoMsgEntity& entity, std::string bytes, const char* encoding = nullptr) {
  VoMsgMemoryResource content(bytes.data(), static_cast<unsigned>(bytes.size()), nullptr, nullptr);
  return entity.replaceContent(&content, encoding);
}

constexpr const char* kEncodings[] = {"8bit", "quoted-printable", "base64", "x-uuencode", "mac-binhex40"};

// Kinds, types and names are in the golden trees of the samples.
TEST(EmbeddedContent, PiecesAreReadAndTheMessageComesOutAsItWas) {
  for (const char* encoding : kEncodings) {
    for (const Source source : {Source::memory, Source::file}) {
      const std::string mail = header(encoding) + encodedWith(encoding, mixedText());
      MessageFixture message(mail, source);
      const auto pieces = piecesOf(*message);
      ASSERT_EQ(pieces.size(), 5u) << encoding;
      const std::string contents[] = {kFirst, "first file", kSecond, kMacBytes, kThird};
      for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(contentOf(*pieces[i]), contents[i]) << encoding << i;
        EXPECT_EQ(pieces[i]->getContentSize(), contents[i].size());
      }
      int err = 0;
      EXPECT_EQ(bytesOf(pieces[2]->getTextContent(err, nullptr, "iso-8859-1")), "\r\nand the second \xE9:\r\n");
      EXPECT_EQ(bytesOf(pieces[1]->getRawContent(err, nullptr)), uuencode("first file", "first.bin"));
      EXPECT_EQ(message->getChildEntity()->getContent(err, nullptr), nullptr);
      EXPECT_EQ(static_cast<VoErrorCode>(err), kVoNoContent);
      EXPECT_EQ(contentOf(*message), mixedText());
      EXPECT_EQ(written(*message), mail);
    }
  }
}

TEST(EmbeddedContent, AnEditChangesItsOwnRange) {
  for (const char* encoding : kEncodings) {
    const std::string mail = header(encoding) + encodedWith(encoding, mixedText());
    MessageFixture message(mail);
    ASSERT_EQ(replace(*piecesOf(*message)[1], "something else"), kVoSuccess);
    EXPECT_TRUE(message->isModified());
    EXPECT_EQ(written(*message), header(encoding) + encodedWith(encoding, mixedText("something else"))) << encoding;
    const std::unique_ptr<VoMsgMailMessage> copy(message->split());
    ASSERT_TRUE(copy);
    EXPECT_EQ(written(*copy), written(*message));
    // The other kind of block, another name, and a piece less.
    auto* const mac = piecesOf(*message)[3];
    ASSERT_EQ(replace(*mac, "mac", "x-uuencode"), kVoSuccess);
    ASSERT_EQ(mac->setFileName("renamed"), kVoSuccess);
    ASSERT_EQ(message->getChildEntity()->removeChildEntityAt(1), kVoSuccess);
    EXPECT_EQ(written(*message),
              header(encoding) + encodedWith(encoding, kFirst + kSecond + uuencode("mac", "renamed") + kThird));
  }
}

TEST(EmbeddedContent, NewPiecesKeepToTheLinesAroundThem) {
  const std::string text = withLineFeeds("a\n" + uuencode("one", "1") + "b\n" + uuencode("two", "2"));
  const std::string cut = text.substr(0, text.size() - 1);  // the last line has no end
  const std::string head = "Content-Type: text/plain\n\n";
  MessageFixture message(head + cut);
  const auto pieces = piecesOf(*message);
  ASSERT_EQ(pieces.size(), 4u);
  ASSERT_EQ(replace(*pieces[3], "three"), kVoSuccess);
  ASSERT_EQ(replace(*pieces[2], "no line end"), kVoSuccess);
  std::string expected = withLineFeeds("a\n" + uuencode("one", "1") + "no line end\n" + uuencode("three", "2"));
  expected.pop_back();
  EXPECT_EQ(written(*message), head + expected);
  MessageFixture again(written(*message));
  EXPECT_EQ(contentOf(*piecesOf(*again)[3]), "three");
}

TEST(EmbeddedContent, TheRestOfAQuotedPrintableTextStaysWhatItWas) {
  for (const std::string lineEnd : {"\r\n", "\n"}) {
    const std::string head = "Content-Transfer-Encoding: quoted-printable" + lineEnd + lineEnd;
    MessageFixture message(head + "caf=C3=A9" + lineEnd + "=0A=0D" + lineEnd + uuencode("one", "1"));
    const std::string before = contentOf(*piecesOf(*message)[0]);
    ASSERT_EQ(replace(*piecesOf(*message)[1], "two"), kVoSuccess);
    EXPECT_TRUE(written(*message).starts_with(head + "caf=C3=A9" + lineEnd));
    MessageFixture again(written(*message));
    EXPECT_EQ(contentOf(*piecesOf(*again)[0]), before);
  }
}

TEST(EmbeddedContent, SettersRefuseWhatABlockCannotHold) {
  MessageFixture message(header("8bit") + mixedText());
  const auto pieces = piecesOf(*message);
  EXPECT_EQ(pieces[1]->setContent(nullptr, nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(replace(*pieces[1], "x", "quoted-printable"), kVoNotSupported);
  EXPECT_EQ(replace(*pieces[1], "x", "base64"), kVoBadEncoding);
  EXPECT_EQ(replace(*pieces[1], "x", "8bit"), kVoBadEncoding);
  EXPECT_EQ(replace(*pieces[0], "x", "nonsense"), kVoBadEncoding);
  EXPECT_EQ(replace(*message->getChildEntity(), "x"), kVoNoContent);
  EXPECT_EQ(pieces[0]->setFileName("x"), kVoNotSupported);
  EXPECT_EQ(message->getChildEntity()->removeChildEntityAt(5), kVoOutOfRange);
  EXPECT_FALSE(message->isModified());
  ASSERT_EQ(replace(*pieces[3], std::string(300, '\0')), kVoSuccess);  // which BinHex cannot say
  EXPECT_EQ(contentOf(*pieces[3]), std::string(300, '\0'));
  EXPECT_STREQ(pieces[3]->getEncoding(), "x-uuencode");
  std::string named = "content";
  VoMsgMemoryResource content(named.data(), 7, "from\r\nresource", "us-ascii");
  ASSERT_EQ(pieces[1]->setContent(&content, nullptr, "X-UUEncode"), kVoSuccess);
  EXPECT_STREQ(pieces[1]->getFileName("utf-8"), "from");
  std::string latin = "\xE9";
  VoMsgMemoryResource text(latin.data(), 1, nullptr, nullptr);
  ASSERT_EQ(pieces[2]->setTextContent(&text, nullptr, "iso-8859-1"), kVoSuccess);
  EXPECT_EQ(contentOf(*pieces[2]), "\xC3\xA9\r\n");
}

TEST(EmbeddedContent, ATextAfterTheCloseDelimiter) {
  const std::string before =
      "Content-Type: multipart/mixed; boundary=q\r\n\r\npreamble\r\n--q\r\n\r\npart\r\n--q--\r\n";
  const std::string text = "\r\n" + mixedText() + "no line end";
  MessageFixture message(before + text);
  ASSERT_EQ(message->countChildEntity(), 2u);
  VoMsgEntity* const whole = message->getChildEntityAt(1);
  EXPECT_STREQ(whole->getCharset(), "us-ascii-59428");
  EXPECT_EQ(contentOf(*whole->getChildEntityAt(1)), "first file");
  EXPECT_EQ(written(*message), before + text);
  EXPECT_EQ(message->_findMessageBody(false), message->getChildEntity());
  ASSERT_EQ(replace(*whole->getChildEntityAt(1), "something else"), kVoSuccess);
  std::string expected = before + "\r\n" + mixedText("something else") + "no line end";
  EXPECT_EQ(written(*message), expected);
  const std::unique_ptr<VoMsgMailMessage> copy(message->split());
  EXPECT_EQ(written(*copy), expected);
}

TEST(EmbeddedContent, AMessageInABlock) {
  const std::string inner = "Subject: inner\r\n\r\ntext\r\n" + uuencode("deep", "d.bin");
  const std::string text = kFirst + uuencode(inner, "forwarded.EML") + kThird;
  MessageFixture message(header("8bit") + text);
  const auto pieces = piecesOf(*message);
  ASSERT_EQ(pieces.size(), 3u);
  EXPECT_EQ(pieces[1]->getEntityTypeID(), kVoEntityEmbeded | kVoEntityIsContainer);
  VoMsgEntity* const nested = pieces[1]->getChildEntity();
  ASSERT_TRUE(nested);
  EXPECT_EQ(nested->getNestingLevel(), 0u);
  EXPECT_EQ(contentOf(*piecesOf(*nested)[1]), "deep");
  EXPECT_EQ(written(*message), header("8bit") + text);
  ASSERT_EQ(replace(*piecesOf(*nested)[1], "deeper"), kVoSuccess);
  const std::string edited = "Subject: inner\r\n\r\ntext\r\n" + uuencode("deeper", "d.bin");
  const std::string expected = header("8bit") + kFirst + uuencode(edited, "forwarded.EML") + kThird;
  EXPECT_EQ(written(*message), expected);
  const std::unique_ptr<VoMsgMailMessage> copy(message->split());
  EXPECT_EQ(written(*copy), expected);
  for (const char* name : {".eml", "x.txt"}) {
    MessageFixture plain(header("8bit") + uuencode(inner, name));
    EXPECT_FALSE(piecesOf(*plain)[0]->hasChildEntity()) << name;
  }
}

// The charset of the text says what its names are in; without one they are UTF-8 or else windows-1252.
TEST(EmbeddedContent, NamesOfBlocks) {
  const struct {
    const char *type, *name, *charset, *expected;
  } rows[] = {
      {"text/plain", "caf\xC3\xA9", "utf-8", "caf\xC3\xA9"},
      {"text/plain", "caf\xC3\xA9", "iso-8859-1", "caf\xE9"},
      {"text/plain", "caf\xE9 \x80", "utf-8", "caf\xC3\xA9 \xE2\x82\xAC"},
      {"text/plain", "caf\xE9", nullptr, "caf\xE9"},
      {"text/plain", "\xC3\xA9 \xE9", "utf-8", "\xC3\x83\xC2\xA9 \xC3\xA9"},    // not all of it is UTF-8
      {"text/plain", "\xED\xA0\x80", "utf-8", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // a surrogate is not UTF-8
      {"text/plain; charset=windows-1251", "\xC4\xE0", "utf-8", "\xD0\x94\xD0\xB0"},
      {"text/plain; charset=iso-8859-5", "\xC3\xA9", "utf-8", "\xD0\xA3\xD0\x89"},
  };
  for (const auto& [type, name, charset, expected] : rows) {
    for (const std::string& block : {uuencode("x", name), binHex("x", name)}) {
      MessageFixture message("Content-Type: " + std::string(type) + "\r\n\r\n" + block);
      ASSERT_EQ(piecesOf(*message).size(), 1u);
      EXPECT_STREQ(piecesOf(*message)[0]->getFileName(charset), expected) << type << name;
      MessageFixture behind("Content-Type: multipart/mixed; boundary=q\r\n\r\n--q--\r\n" + block);
      const bool isDeclared = std::string_view(type).find(';') != std::string::npos;
      ASSERT_TRUE(behind->getChildEntity());
      VoMsgEntity* const piece = behind->getChildEntity()->getChildEntity();
      if (isDeclared) continue;
      EXPECT_STREQ(piece->getFileName(charset), expected) << name;
    }
  }
}

// A part that says it is BinHex is one whatever it is called; only what comes out of it may be a message.
TEST(EmbeddedContent, ABinHexPartNamedAsAMessage) {
  const std::string inner = "Subject: inner\r\n\r\ntext\r\n";
  for (const char* type : {"application/mac-binhex40", "Application/Mac-BinHex"}) {
    MessageFixture message("Content-Type: " + std::string(type) + "; name=outer.eml\r\n\r\n" +
                           binHex(inner, "inner.eml"));
    const bool isText = std::string_view(type).ends_with("40");
    ASSERT_EQ(message->hasChildEntity(), isText) << type;
    if (!isText) continue;
    EXPECT_EQ(message->getChildEntity()->getEntityTypeID(), kVoEntityMultiEmbeded);
    VoMsgEntity* const block = piecesOf(*message)[0];
    ASSERT_TRUE(block->getChildEntity());
    EXPECT_STREQ(block->getChildEntity()->getHeaderValue("Subject", "utf-8"), "inner");
    EXPECT_EQ(contentOf(*block), inner);
  }
}

TEST(EmbeddedContent, NestingEndsAtTheExtractLevel) {
  std::string inner = "\r\ninnermost\r\n";
  for (int level = 0; level < 25; ++level) inner = "Subject: x\r\n\r\n" + uuencode(inner, "a.eml");
  MessageFixture message(inner);
  int depth = 0;
  for (VoMsgEntity* entity = message->getChildEntity(); entity; entity = entity->getChildEntity())
    depth += entity->getEntityTypeID() == kVoEntityRfc822Message;
  EXPECT_EQ(depth, 20);
  EXPECT_EQ(written(*message), inner);
}

TEST(EmbeddedContent, PartsWithoutBlocksGetNoChild) {
  const std::string bodies[] = {"Hello\r\n", "begin 644 x\r\nnot really\r\n", "", "begin 644 cut"};
  for (const char* encoding : kEncodings) {
    for (const std::string& body : bodies) {
      MessageFixture message(header(encoding) + encodedWith(encoding, body));
      EXPECT_EQ(message.code, kVoSuccess) << encoding;
      EXPECT_FALSE(message->hasChildEntity()) << encoding << body;
    }
  }
  MessageFixture other("Content-Type: application/pdf\r\n\r\n" + mixedText());
  EXPECT_FALSE(other->hasChildEntity());
}

TEST(EmbeddedContent, NewContentOfAPartIsNamedAsThePartIs) {
  const std::string head = "Content-Type: application/x-y; name=n.bin\r\nContent-Transfer-Encoding: ";
  for (const std::string encoding : {"uuencode", "mac-binhex40"}) {
    const auto encode = encoding == "uuencode" ? &uuencode : &binHex;
    MessageFixture message(head + encoding + "\r\n\r\n" + encode("old", "a"));
    EXPECT_EQ(message->getContentSize(), 3u);
    ASSERT_EQ(replace(*message, "new"), kVoSuccess);
    EXPECT_EQ(written(*message), head + encoding + "\r\n\r\n" + encode("new", "n.bin"));
  }
}

TEST(EmbeddedContent, MutatedMessagesStayReadableAndComeOutAsTheyWere) {
  std::mt19937 random(2);
  for (int round = 0; round < 1500; ++round) {
    const char* const encoding = kEncodings[round % 5];
    std::string mail = header(encoding) + encodedWith(encoding, mixedText());
    for (std::size_t n = random() % 5; n > 0; --n)
      mail[header(encoding).size() + random() % (mail.size() - header(encoding).size())] = static_cast<char>(random());
    if (random() % 3 == 0) mail.resize(header(encoding).size() + random() % 900);
    MessageFixture message(mail);
    EXPECT_EQ(written(*message), mail);
    std::string whole;
    for (VoMsgEntity* piece : piecesOf(*message)) {
      int err = 0;
      piece->getContent(err, nullptr);
      piece->getFileName("utf-8");
      whole += bytesOf(piece->getRawContent(err, nullptr));
    }
    EXPECT_TRUE(!message->hasChildEntity() || whole.starts_with(contentOf(*message)));
    for (VoMsgEntity* piece : piecesOf(*message)) EXPECT_EQ(replace(*piece, "new\r\n"), kVoSuccess);
    written(*message);
  }
}

}  // namespace
