#include "vomsg/tnef/VoMsgMapiProperty.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/WindowStreams.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"

namespace vomsg::test {
namespace {

VoErrorCode readProperty(VoMsgMapiProperty& one, VoMsgBufferedReader& reader) {
  int result = 0;
  reader.rseek(0, 0);
  one.readMapiProperty(result, nullptr, &reader);
  return static_cast<VoErrorCode>(result);
}

std::string writtenBy(VoMsgMapiProperty& one, VoMsgBufferedReader& source, unsigned short* sum = nullptr) {
  LimitedWriter writer;
  unsigned short own = 0;
  const VoErrorCode code = one.writeMapiProperty(&writer, &source, own);
  writer.flush();
  if (sum) *sum = own;
  return voFailed(code) ? codeText(code) : writer.text;
}

struct Form {
  const char* name;
  std::vector<unsigned> types;
  std::string value;
  std::uint32_t size;
  std::uint32_t padding;
};

const Form kForms[] = {
    {"I2", {0x0002}, "ab\xEE\xEE", 2, 2},
    {"long, R4, error, boolean", {0x0003, 0x0004, 0x000A, 0x000B}, "abcd", 4, 0},
    {"double, currency, apptime, I8, systime", {0x0005, 0x0006, 0x0007, 0x0014, 0x0040}, "abcdefgh", 8, 0},
    {"clsid", {0x0048}, "0123456789abcdef", 16, 0},
    {"object of 16", {0x000D}, prefixed(kInterfaceId), 16, 0},
    {"object of 19", {0x000D}, prefixed(kInterfaceId + "xyz"), 19, 1},
    {"object of 21", {0x000D}, prefixed(kInterfaceId + "xyzzy"), 21, 3},
    {"empty", {0x000D, 0x001E, 0x001F, 0x0102}, le32(0), 0, 0},
    {"of 5", {0x001E, 0x001F, 0x0102}, prefixed(std::string("\0\xFFxyz", 5)), 5, 3},
    {"of 6", {0x001E, 0x001F, 0x0102}, prefixed("binary"), 6, 2},
    {"of 7", {0x001E, 0x001F, 0x0102}, prefixed(std::string("abcdef\0", 7)), 7, 1},
    {"of 8", {0x001E, 0x001F, 0x0102}, prefixed("eight by"), 8, 0},
};

// A form alone or several times, over readers that show everything or single bytes; the value's last byte is the last
// of the data. Texts, binaries and objects always have a count, numbers when they are multi-valued, but booleans and
// errors not even then.
void expectReadAndWritten(const Form& form, unsigned base, bool several) {
  const bool hasLength = base == 0x000D || base == 0x001E || base == 0x001F || base == 0x0102;
  const bool isCounted = hasLength || (several && base != 0x000A && base != 0x000B);
  const unsigned type = several ? base | 0x1000 : base;
  const Values values(several && isCounted ? 3 : 1, form.value);
  const std::string bytes = isCounted ? counted(type, 0x3333, values) : property(type, 0x3333, form.value);
  for (const std::size_t window : {std::size_t{1}, bytes.size()}) {
    WindowReader reader(bytes, window);
    VoMsgMapiProperty one;
    ASSERT_EQ(readProperty(one, reader), kVoSuccess);
    EXPECT_EQ(reader.getOffset(), bytes.size());
    ASSERT_EQ(one.countMapiData(), values.size());
    EXPECT_EQ(one.getMapiDataAt(0)->getDataSize(), form.size);
    EXPECT_EQ(one.getMapiDataAt(0)->getPaddingSize(), form.padding);
    EXPECT_EQ(one._isMultipleValue(), isCounted);
    EXPECT_EQ(one._getSize(), bytes.size());
    VoMsgMapiProperty copied;
    ASSERT_TRUE(copied.copy(one));
    unsigned short sum = 0;
    EXPECT_EQ(writtenBy(copied, reader, &sum), bytes);
    EXPECT_EQ(sum, sumOf(bytes));
    if (base != 0x000D && form.size > 0) {
      EXPECT_EQ(std::string(one.getMapiDataAt(0)->getData(), form.size),
                form.value.substr(hasLength ? 4 : 0, form.size));
    }
  }
}

TEST(MapiProperty, ReadsEveryFormAndWritesItBack) {
  for (const Form& form : kForms)
    for (const unsigned type : form.types)
      for (const bool several : {false, true}) {
        if (several && type == 0x000D) continue;  // there is no such type
        SCOPED_TRACE(std::string(form.name) + " as " + std::to_string(type) + (several ? ", several" : ""));
        expectReadAndWritten(form, type, several);
      }
}

TEST(MapiProperty, ReadsNamesOfBothKinds) {
  const std::tuple<unsigned, unsigned, std::string> rows[] = {
      {0x8000, 1, ""},        {0x8000, 1, "n"},          {0x8000, 1, wide("")}, {0xFFFF, 1, "odd"},
      {0x8001, 1, wide("n")}, {0x8000, 0, le32(0x8554)}, {0xFFFF, 7, le32(5)}};
  for (const auto& [id, kind, name] : rows) {
    SCOPED_TRACE(name);
    const std::string set = "the property set";
    ExactReader exact(le16(0x0003) + le16(id) + set + le32(kind) + (kind == 1 ? prefixed(name) : name) + "abcd");
    VoMsgMapiProperty one;
    ASSERT_EQ(readProperty(one, exact.reader), kVoSuccess);
    EXPECT_EQ(std::string(one.getPropertySet(), 16), set);
    EXPECT_EQ(one.getNameKind(), kind);
    EXPECT_EQ(kind == 1 ? one.getNameText() : le32(one.getNameNumber()), name);
    EXPECT_EQ(std::string(one.getMapiDataAt(0)->getData(), 4), "abcd");
    EXPECT_EQ(writtenBy(one, exact.reader), exact.bytes());
  }
}

TEST(MapiProperty, FailsWithACodeForEachFault) {
  const std::string set(16, 's');
  struct Row {
    const char* name;
    std::string bytes;
    VoErrorCode code;
  };
  const Row rows[] = {
      {"PT_NULL", property(0x0001, 1, "abcd"), kVoTnefMalformed},
      {"PT_UNSPECIFIED", property(0x0000, 1, "abcd"), kVoTnefMalformed},
      {"several of type 9", property(0x1009, 1, "abcd"), kVoTnefMalformed},
      {"nothing at all", "", kVoTnefMalformed},
      {"no value", property(0x0003, 1, ""), kVoBadFormat},
      {"a number cut short", property(0x0003, 1, "a"), kVoSuccess},
      {"a clsid cut short", property(0x0048, 1, "abc"), kVoSuccess},
      {"a filler cut short", property(0x0002, 1, "abc"), kVoBadFormat},
      {"no filler", property(0x0002, 1, "ab"), kVoBadFormat},
      {"no values, 2^32-1 claimed", le16(0x1003) + le16(1) + le32(0xFFFFFFFF), kVoBadFormat},
      {"one value, 2^32-1 claimed", le16(0x101E) + le16(1) + le32(0xFFFFFFFF) + prefixed("a"), kVoBadFormat},
      {"no values", le16(0x0102) + le16(1) + le32(0), kVoSuccess},
      {"longer than the source", le16(0x0102) + le16(1) + le32(1) + le32(17) + "abcd", kVoReadFailed},
      {"longer than what is left", le16(0x0102) + le16(1) + le32(1) + le32(5) + "abcd", kVoBadFormat},
      {"length near 2^32", le16(0x0102) + le16(1) + le32(1) + le32(0xFFFFFFFE) + "abcd", kVoReadFailed},
      {"padding cut short", le16(0x0102) + le16(1) + le32(1) + le32(3) + "abc", kVoBadFormat},
      {"length cut short", le16(0x0102) + le16(1) + le32(1) + "abc", kVoBadFormat},
      {"object of 1", counted(0x000D, 1, {prefixed("a")}), kVoTnefMalformed},
      {"object of 15", counted(0x000D, 1, {prefixed(std::string(15, 'a'))}), kVoTnefMalformed},
      {"name longer than the source", le16(3) + le16(0x8000) + set + le32(1) + le32(99) + "abcd", kVoReadFailed},
      {"name longer than what is left", le16(3) + le16(0x8000) + set + le32(1) + le32(9) + "abcd", kVoBadFormat},
      {"padding of a name cut short", le16(3) + le16(0x8000) + set + le32(1) + le32(3) + "abc", kVoBadFormat},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ExactReader exact(row.bytes);
    VoMsgMapiProperty one;
    EXPECT_EQ(codeText(readProperty(one, exact.reader)), codeText(row.code));
  }
  VoMsgMapiProperty none;
  int result = 0;
  EXPECT_EQ(none.readMapiProperty(result, nullptr, nullptr), nullptr);
  EXPECT_EQ(result, static_cast<int>(kVoReadFailed));
}

TEST(MapiProperty, SetsAndGetsTexts) {
  const std::tuple<unsigned, std::string, const char*> rows[] = {
      {0x001E, std::string("up to\0here", 10), "up to"},
      {0x001E, "no NUL", "no NUL"},
      {0x001E, "", ""},
      {0x101E, "first of several", "first of several"},
      {0x001F, wide("wide"), "wide"},
      {0x0102, "no text", nullptr},
      {0x001F, le16(0xD83D) + le16(0xDE00), "\xF0\x9F\x98\x80"},
      {0x001F, le16(0xD83D) + le16('a'),
       "\xEF\xBF\xBD"
       "a"},  // half a pair costs itself alone
      {0x001F, le16(0xD83D) + le16(0xD83D) + le16(0xDE00), "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
      {0x001F, le16(0xDE00) + le16('a') + le16(0xD83D),
       "\xEF\xBF\xBD"
       "a\xEF\xBF\xBD"},
  };
  for (const auto& [type, stored, text] : rows) {
    SCOPED_TRACE(stored);
    ExactReader exact(counted(type, 0x3707, {prefixed(stored)}));
    VoMsgMapiProperty one;
    ASSERT_EQ(readProperty(one, exact.reader), kVoSuccess);
    EXPECT_STREQ(one.getStringData(), text);
    EXPECT_EQ(one.setStringData(nullptr), kVoBadArgument);
    EXPECT_FALSE(one.isModified());
    EXPECT_EQ(one.setStringData("new"), text ? kVoSuccess : kVoNotSupported);
    EXPECT_EQ(one.isModified(), text != nullptr);
    EXPECT_STREQ(one.getStringData(), text ? "new" : nullptr);
    const std::string changed = type == 0x001F ? wide("new") : std::string("new\0", 4);
    const std::string want = counted(type, 0x3707, {prefixed(text ? changed : stored)});
    EXPECT_EQ(writtenBy(one, exact.reader), want);
    EXPECT_EQ(one._getSize(), want.size());
  }
}

TEST(MapiAttachment, ReadsAListAndRegeneratesItWhenChanged) {
  const Values properties = {text8(0x3707, "old.txt"), property(0x0003, 0x370B, "abcd"), text8(0x370E, "text/x-old")};
  // A list that ends before its record, one that ends with it, and one that runs beyond.
  for (const int slack : {8, 0, -8}) {
    SCOPED_TRACE(slack);
    const std::string data = list(properties);
    const auto claimed = static_cast<std::uint32_t>(static_cast<int>(data.size()) + slack);
    const std::string filler(slack > 0 ? static_cast<std::size_t>(slack) : 0, 'f');
    const std::string bytes =
        "\2" + le16(0x9005) + le16(6) + le32(claimed) + data + filler + le16(0xBEEF) + "next record";
    ExactReader exact(bytes);
    exact.reader.rseek(5, 0);
    VoMsgMapiAttachment one(2, 6, 0x9005);
    int result = 0;
    EXPECT_EQ(one.readData(result, nullptr, &exact.reader), nullptr);
    ASSERT_EQ(result, static_cast<int>(kVoSuccess));
    EXPECT_EQ(exact.reader.getOffset(), bytes.size() - 11);
    EXPECT_EQ(one.getCheckSum(), 0xBEEF);
    EXPECT_STREQ(one.getFileName(), "old.txt");
    EXPECT_STREQ(one.getContentType(), "text/x-old");
    EXPECT_EQ(one.getMapiTypeID(), 0x001E);
    EXPECT_FALSE(one._isModified());

    one.getMapiPropertyByName(0x3707)->setStringData("a longer name.txt");
    const std::unique_ptr<VoMsgTnefAttribute> copied(one.copy(nullptr));
    for (VoMsgTnefAttribute* each : {static_cast<VoMsgTnefAttribute*>(&one), copied.get()}) {
      LimitedWriter writer;
      EXPECT_TRUE(each->_isModified());
      EXPECT_EQ(each->writeData(&writer, &exact.reader), kVoSuccess);
      writer.flush();
      EXPECT_EQ(writer.text, record(0x9005, list({text8(0x3707, "a longer name.txt"), properties[1], properties[2]})));
      LimitedWriter full(20);
      EXPECT_EQ(each->writeData(&full, &exact.reader), kVoWriteFailed);
    }
  }
}

}  // namespace
}  // namespace vomsg::test
