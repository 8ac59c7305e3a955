// The survey, the full parse and the fields built after a survey must see the same block, whatever its bytes and
// however the reader cuts them; and that block must be the one that a reading of the rules line by line gives.
#include "vomsg/header/VoMsgHeaderSurvey.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>

#include "tests/header/HeaderBlocks.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"

namespace vomsg::detail {
namespace {

using namespace std::string_view_literals;

using test::ExactMemoryReader;
using test::KeepOptions;

// Whatever can be compared is, as text, so that a failure shows it.
std::string show(const VoMsgHeaderField& field) {
  std::string out = std::string(field.getRawFieldValue());
  for (unsigned i = 0; i < field.countParameter(); ++i)
    out += std::string(" ") + field.getParameterNameAt(i) + "=" + field.getRawParameterValueAt(i);
  return out + "\n";
}
std::string show(bool has, const StructuredValue& value) {
  std::string out = value.value;
  for (std::size_t i = 0; i < value.count; ++i) out += " " + value.parameters[i].name + "=" + value.parameters[i].value;
  return has ? out + "\n" : "";
}
std::string show(VoErrorCode code, std::size_t size, std::size_t after, HeaderMark mark, std::size_t at, bool differ) {
  return testing::PrintToString(std::make_tuple(code, size, after, static_cast<int>(mark), at, differ)) + "\n";
}

std::string fieldsOf(const VoMsgEntityHeader& header) {
  std::string out;
  for (unsigned i = 0; i < header.countHeaders(); ++i)
    out += std::string(header.getHeaderAt(i)->getName()) + ": " + show(*header.getHeaderAt(i));
  for (const char* name : {"From", "To", "Cc", "Bcc"})
    for (unsigned i = 0; i < header.countAddress(name); ++i)
      out += std::string(name) + " " + header.getAddressAt(name, i)->getRawAddress() + "\n";
  return out;
}

std::string survey(HeaderSurvey& out, VoMsgBufferedReader& reader, bool isChild, const BoundaryTable& table) {
  surveyHeaderBlock(out, reader, isChild, &table);
  return show(out.code, out.size, reader.getOffset(), out.mark, out.markOffset, out.contentTypesDiffer) +
         show(out.hasContentType, out.contentType) + show(out.hasEncoding, out.encoding) +
         show(out.hasDisposition, out.disposition);
}
std::string parse(VoMsgEntityHeader& header, VoMsgBufferedReader& reader, bool isChild) {
  VoMsgBoundaryList boundaries = {"b", "outer"};
  header.setChild(isChild);
  const VoErrorCode code = header.parseHeaderPart(&reader, "us-ascii", &boundaries);
  std::string out = show(code, header.getHeaderSize(), reader.getOffset(), header.getMark(), header.getMarkOffset(),
                         header.contentTypesDiffer());
  for (const char* name : {"Content-Type", "Content-Transfer-Encoding", "Content-Disposition"})
    if (const VoMsgHeaderField* field = header.getHeader(name)) out += show(*field);
  return out;
}

// One line at a time, as the rules say it, without limits.
struct SlowBlock {
  explicit SlowBlock(const std::string& text) : rest(text) {
    const std::size_t whole = text.size();
    while (true) {
      const std::string before = rest;
      std::string end, line = cut(end);
      const std::string bare = line.substr(0, line.find_last_not_of(" \t") + 1);
      if (bare == "--b" || bare == "--b--") {
        rest = before;
        kind = HeaderEnd::boundaryLine;
        break;
      }
      if (bare.empty()) {
        if (!line.empty()) kind = HeaderEnd::blankLine;
        if (line.empty() && !end.empty()) kind = HeaderEnd::emptyLine;
        break;
      }
      while (!rest.empty() && (rest[0] == ' ' || rest[0] == '\t')) {
        const std::string more = cut(end);
        const bool keeps = (more.size() == 1 && end == "\r\n") || (more[0] == ' ' && (VoMsgExtraOption & 4));
        line += more.substr(keeps ? 0 : 1);
      }
      line = line.c_str();  // a NUL ends what the line says
      const std::size_t nameEnd = line.find_first_of("\t :");
      const std::size_t colon = nameEnd == line.npos ? line.npos : line.find_first_not_of(" \t", nameEnd);
      if (colon == line.npos || line[colon] != ':') continue;
      const std::size_t value = line.find_first_not_of(" \t", colon + 1);
      if (toLower(line[0]) != 'c')
        plainFields += line.substr(0, nameEnd) + ": " + (value == line.npos ? "" : line.substr(value)) + "\n";
    }
    size = whole - rest.size();
  }
  std::string cut(std::string& end) {
    const std::size_t at = std::min(rest.find_first_of("\r\n"), rest.size());
    end = rest.substr(at, rest.substr(at, 2) == "\r\n" ? 2 : 1);
    const std::string line = rest.substr(0, at);
    rest.erase(0, at + end.size());
    return line;
  }
  std::string rest;
  std::size_t size = 0;
  HeaderEnd kind = HeaderEnd::endOfData;
  std::string plainFields;  // all but those that begin with a "c": of these some have a value of their own
};

// The pieces that hostile blocks are made of, each behind a "|".
constexpr std::string_view kPieces =
    "|a|From|to|Cc|Bcc|Content-Type|content-type|Content-Transfer-Encoding|Content-Disposition|:|:|:|: | |\t| "
    "\r\n|\r\n|\r\n"
    "|\r\n|\n|\r|\r\n\t|\n |--b|--b--|,|;|=|\"|text/plain|x|boundary|boundary=b b|<|>|\n\n|?|\0|Content-Type: a;b=c\r\n"
    "|To: a, b;c\r\n|x: y\r\n|Content-Transfer-Encoding: z;b=c;d=e\n|"sv;

std::string_view anyPiece(std::mt19937& random) {
  const std::size_t at = kPieces.rfind('|', random() % (kPieces.size() - 1));
  return kPieces.substr(at + 1, kPieces.find('|', at + 1) - at - 1);
}

TEST(HeaderSurvey, AgreesWithTheParseOnHostileBlocks) {
  const KeepOptions keep;
  const std::uint32_t seed = 20261;
  std::mt19937 random(seed);
  HeaderSurvey reused;
  BoundaryTable table;
  table.push("outer");
  table.push("b");
  for (int round = 0; round < 20000; ++round) {
    const bool isLong = random() % 16 == 0;
    std::string text;
    for (auto n = random() % 14; n > 0; --n) {
      text += anyPiece(random);
      if (isLong && random() % 3 == 0) text.append(3000 + random() % 3000, " ab:"[random() % 4]);
    }
    const bool hasLimits = random() % 2 == 0;
    MaxEntityHeaders = hasLimits ? 2 : 0;
    MaxHeaderAddress = hasLimits ? 2 : 0;
    MaxHeaderParams = hasLimits ? 2 : 0;
    NoMaxAddressForChild = random() % 2 == 0;
    VoMsgExtraOption = static_cast<int>(random() % 2 * 4 + random() % 4 * 32);
    const bool isChild = random() % 2 == 0;
    SCOPED_TRACE(testing::Message() << "seed " << seed << " round " << round << ": " << testing::PrintToString(text));

    ExactMemoryReader whole(text);
    VoMsgEntityHeader parsed;
    const std::string want = parse(parsed, whole, isChild);
    if (!hasLimits) {
      const SlowBlock slow(text);
      ASSERT_EQ(parsed.getHeaderSize(), slow.size);
      std::string plain;
      for (unsigned i = 0; i < parsed.countHeaders(); ++i) {
        const VoMsgHeaderField& field = *parsed.getHeaderAt(i);
        if (toLower(field.getName()[0]) != 'c') plain += std::string(field.getName()) + ": " + show(field);
      }
      ASSERT_EQ(plain, slow.plainFields);
    }
    ASSERT_EQ(parsed.isNewHeader(), parsed.getMark() != HeaderMark::none);
    ASSERT_FALSE(parsed.isEdited());

    ExactMemoryReader again(text);
    ASSERT_EQ(survey(reused, again, isChild, table), want);
    if (!hasLimits) {
      ASSERT_EQ(reused.end, SlowBlock(text).kind);
    }
    test::WindowReader cut(text, 1 + random() % (isLong ? 5000 : 20));
    ASSERT_EQ(survey(reused, cut, isChild, table), want);
    cut.rseek(0, 0);
    VoMsgEntityHeader parsedCut;
    ASSERT_EQ(parse(parsedCut, cut, isChild), want);
    ASSERT_EQ(fieldsOf(parsedCut), fieldsOf(parsed));

    VoMsgEntityHeader rebuilt;
    rebuilt.setChild(isChild);
    const ExactMemoryReader block(std::string_view(text).substr(0, parsed.getHeaderSize()));
    ASSERT_EQ(rebuilt.parseSurveyedBlock({block.bytes(), parsed.getHeaderSize()}, "us-ascii"), kVoSuccess);
    ASSERT_EQ(fieldsOf(rebuilt), fieldsOf(parsed));
    ASSERT_FALSE(rebuilt.isNewHeader());
  }
}

TEST(HeaderSurvey, TellsWhatTheParserCannotKeepAndWhere) {
  struct Row {
    std::string text;
    HeaderMark mark;
    unsigned offset;
  };
  const Row rows[] = {
      {"no-blank-at-all\nA: b", HeaderMark::none, 0},
      {"A: b\nno colon\nx y", HeaderMark::droppedLine, 5},
      {"A: b\nname \n", HeaderMark::droppedLine, 5},
      {std::string("A\0B c", 5), HeaderMark::none, 0},
      {" \t\n", HeaderMark::blankTerminator, 0},
      {"Content-Type: a;boundary=(\nx y", HeaderMark::unquotedBoundary, 0},
      {"Content-Disposition: a;boundary=/", HeaderMark::unquotedBoundary, 0},
      {"Content-Type: a\nContent-Type: a;boundary=a b", HeaderMark::repeatedContentType, 16},
  };
  HeaderSurvey out;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    ExactMemoryReader source("junk" + row.text + "\n\nbody");
    ASSERT_TRUE(source.seek(4));
    surveyHeaderBlock(out, source, false, nullptr);
    EXPECT_EQ(out.mark, row.mark);
    EXPECT_EQ(out.markOffset, row.mark == HeaderMark::none ? 0 : 4 + row.offset);
    EXPECT_EQ(out.offset, 4u);

    VoMsgEntityHeader header;
    ASSERT_EQ(source.rseek(4, 0), 4);
    EXPECT_EQ(header.parseHeaderPart(&source, nullptr, nullptr), kVoSuccess);
    const std::unique_ptr<VoMsgEntityHeader> copy(header.newCopy());
    EXPECT_EQ(copy->getMark(), out.mark);
    EXPECT_EQ(copy->getMarkOffset(), out.markOffset);
    EXPECT_EQ(copy->getHeaderOffset(), 4u);
    EXPECT_FALSE(copy->isEdited());
  }
}

TEST(HeaderSurvey, KeepsLittleOfALineThatNobodyWants) {
  for (const std::string start : {"", "name", "name :", " ", "name  x"}) {
    const std::string text = start + std::string(1000000, start.size() % 2 == 0 ? 'a' : ' ');
    test::WindowReader source(text, 1000);
    HeaderSurvey out;
    surveyHeaderBlock(out, source, false, nullptr);
    EXPECT_EQ(out.size, text.size());
    EXPECT_LT(out.scratch.capacity(), 20000u) << start;
  }
  // A delimiter may be long too, and is known all the same.
  BoundaryTable table;
  table.push(std::string(9000, 'b'));
  const std::string delimiter = "--" + std::string(9000, 'b') + std::string(9000, ' ');
  test::WindowReader source(delimiter, 1000);
  HeaderSurvey out;
  surveyHeaderBlock(out, source, false, &table);
  EXPECT_EQ(out.end, HeaderEnd::boundaryLine);
}

}  // namespace
}  // namespace vomsg::detail
