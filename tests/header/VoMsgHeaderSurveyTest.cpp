// The survey, the full parse and the fields built after a survey must see the same block, whatever its bytes and
// however the reader cuts them; and that block must be the one that a reading of the rules line by line gives.
#include "vomsg/header/VoMsgHeaderSurvey.h"

#include <gtest/gtest.h>

#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/header/HeaderBlocks.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgFileReader.h"

namespace vomsg::detail {
namespace {

using test::ExactReader;
using test::KeepOptions;
using test::parseBlock;

// What is compared, as text, so that a failure shows it.
struct Seen {
  VoErrorCode code = kVoSuccess;
  std::size_t size = 0, after = 0, fields = 0, markAt = 0;
  HeaderMark mark = HeaderMark::none;
  bool differ = false;
  std::string values;
  friend bool operator==(const Seen&, const Seen&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Seen& seen) {
    return out << std::hex << seen.code << std::dec << " size " << seen.size << " reader at " << seen.after
               << " fields " << seen.fields << " mark " << static_cast<int>(seen.mark) << " at " << seen.markAt
               << " differ " << seen.differ << "\n"
               << seen.values;
  }
};

std::string show(const char* value, const VoMsgHeaderField* field, const StructuredValue* parsed) {
  std::string out = value ? value : "";
  const std::size_t count = field ? field->countParameter() : parsed->count;
  for (std::size_t i = 0; i < count; ++i) {
    const auto at = static_cast<unsigned>(i);
    out += field ? std::string(" ") + field->getParameterNameAt(at) + "=" + field->getRawParameterValueAt(at)
                 : " " + parsed->parameters[i].name + "=" + parsed->parameters[i].value;
  }
  return out + "\n";
}

// The value of the first field of each structured name, for comparison with what a survey keeps.
std::string structuredOf(const VoMsgEntityHeader& header) {
  std::string out;
  for (const char* name : {"Content-Type", "Content-Transfer-Encoding", "Content-Disposition"})
    if (const VoMsgHeaderField* field = header.getHeader(name)) out += show(field->getRawFieldValue(), field, nullptr);
  return out;
}
std::string structuredOf(const HeaderSurvey& survey) {
  std::string out;
  if (survey.hasContentType) out += show(survey.contentType.value.c_str(), nullptr, &survey.contentType);
  if (survey.hasEncoding) out += show(survey.encoding.value.c_str(), nullptr, &survey.encoding);
  if (survey.hasDisposition) out += show(survey.disposition.value.c_str(), nullptr, &survey.disposition);
  return out;
}
std::string fieldsOf(const VoMsgEntityHeader& header) {
  std::string out;
  for (unsigned i = 0; i < header.countHeaders(); ++i)
    out += std::string(header.getHeaderAt(i)->getName()) + ": " +
           show(header.getHeaderAt(i)->getRawFieldValue(), header.getHeaderAt(i), nullptr);
  for (const char* name : {"From", "To", "Cc", "Bcc"})
    for (unsigned i = 0; i < header.countAddress(name); ++i)
      out += std::string(name) + " " + header.getAddressAt(name, i)->getRawAddress() + "\n";
  return out;
}

// One line at a time, as the rules say it; no limits, and names and values only.
struct SlowBlock {
  explicit SlowBlock(const std::string& text) : rest(text) {
    const std::size_t whole = text.size();
    while (true) {
      const std::string before = rest;
      std::string end, line = cut(end);
      const std::string bare = line.substr(0, line.find_last_not_of(" \t") + 1);
      if (bare == "--b" || bare == "--b--") rest = before;
      if (bare.empty() || bare == "--b" || bare == "--b--") break;
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
      fields.push_back(line.substr(0, nameEnd) + ": " + (value == line.npos ? "" : line.substr(value)));
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
  std::vector<std::string> fields;
};

Seen survey(HeaderSurvey& out, VoMsgBufferedReader& reader, bool isChild, const BoundaryTable& table) {
  surveyHeaderBlock(out, reader, isChild, &table);
  return {out.code,       out.size, reader.getOffset(),     0,
          out.markOffset, out.mark, out.contentTypesDiffer, structuredOf(out)};
}
Seen parse(VoMsgEntityHeader& header, VoMsgBufferedReader& reader) {
  VoMsgBoundaryList boundaries = {"b", "outer"};
  const VoErrorCode code = header.parseHeaderPart(&reader, "us-ascii", &boundaries);
  return {code,
          header.getHeaderSize(),
          reader.getOffset(),
          header.countHeaders(),
          header.getMarkOffset(),
          header.getMark(),
          header.contentTypesDiffer(),
          structuredOf(header)};
}

constexpr std::string_view kPieces[] = {"a",
                                        "From",
                                        "to",
                                        "Cc",
                                        "Bcc",
                                        "Content-Type",
                                        "content-type",
                                        "Content-Transfer-Encoding",
                                        "Content-Disposition",
                                        ":",
                                        ":",
                                        ":",
                                        ": ",
                                        " ",
                                        "\t",
                                        " \r\n",
                                        "\r\n",
                                        "\r\n",
                                        "\r\n",
                                        "\n",
                                        "\r",
                                        "\r\n\t",
                                        "\n ",
                                        "--b",
                                        "--b--",
                                        ",",
                                        ";",
                                        "=",
                                        "\"",
                                        "text/plain",
                                        "x",
                                        "boundary",
                                        "boundary=b b",
                                        "<",
                                        ">",
                                        "\n\n",
                                        "?",
                                        std::string_view("\0", 1),
                                        "Content-Type: a;b=c\r\n",
                                        "To: a, b;c\r\n",
                                        "x: y\r\n",
                                        "Content-Transfer-Encoding: z;b=c;d=e\n"};

TEST(HeaderSurvey, AgreesWithTheParseOnHostileBlocks) {
  const KeepOptions keep;
  const std::uint32_t seed = 20261;
  std::mt19937 random(seed);
  HeaderSurvey reused;
  BoundaryTable table;
  table.push("outer");
  table.push("b");
  for (int round = 0; round < 30000; ++round) {
    std::string text;
    for (auto n = random() % 14; n > 0; --n) text += kPieces[random() % std::size(kPieces)];
    const bool hasLimits = random() % 2 == 0;
    MaxEntityHeaders = hasLimits ? 2 : 0;
    MaxHeaderAddress = hasLimits ? 2 : 0;
    MaxHeaderParams = hasLimits ? 2 : 0;
    NoMaxAddressForChild = random() % 2 == 0;
    VoMsgExtraOption = static_cast<int>(random() % 2 * 4 + random() % 4 * 32);
    const bool isChild = random() % 2 == 0;
    SCOPED_TRACE(testing::Message() << "seed " << seed << " round " << round << ": " << testing::PrintToString(text));

    ExactReader whole(text);
    VoMsgEntityHeader parsed;
    parsed.setChild(isChild);
    const Seen want = parse(parsed, whole.reader);
    if (!hasLimits) {
      const SlowBlock slow(text);
      ASSERT_EQ(want.size, slow.size);
      std::vector<std::string> plain, slowPlain;
      const auto isPlain = [](std::string_view line) { return line.substr(0, 7) != "Content" && line[0] != 'c'; };
      for (const std::string& field : slow.fields)
        if (isPlain(field)) slowPlain.push_back(field);
      for (unsigned i = 0; i < parsed.countHeaders(); ++i) {
        const VoMsgHeaderField& field = *parsed.getHeaderAt(i);
        plain.push_back(std::string(field.getName()) + ": " + field.getRawFieldValue());
        if (!isPlain(plain.back())) plain.pop_back();
      }
      ASSERT_EQ(plain, slowPlain);
    }
    ASSERT_EQ(want.after, want.size);
    ASSERT_EQ(parsed.isNewHeader(), want.mark != HeaderMark::none);
    ASSERT_FALSE(parsed.isEdited());

    const std::size_t window = 1 + random() % 20;
    test::WindowReader cut(text, window);
    VoMsgEntityHeader parsedCut;
    parsedCut.setChild(isChild);
    ASSERT_EQ(parse(parsedCut, cut), want) << "window " << window;
    ASSERT_EQ(fieldsOf(parsedCut), fieldsOf(parsed));

    Seen wantSurvey = want;
    wantSurvey.fields = 0;  // no survey tells
    ExactReader again(text);
    ASSERT_EQ(survey(reused, again.reader, isChild, table), wantSurvey);
    cut.rseek(0, 0);
    ASSERT_EQ(survey(reused, cut, isChild, table), wantSurvey) << "window " << window;

    VoMsgEntityHeader rebuilt;
    rebuilt.setChild(isChild);
    ExactReader block(std::string_view(text).substr(0, want.size));
    const std::string_view bytes(reinterpret_cast<const char*>(block.bytes.get()), want.size);
    ASSERT_EQ(rebuilt.parseSurveyedBlock(bytes, "us-ascii"), kVoSuccess);
    ASSERT_EQ(fieldsOf(rebuilt), fieldsOf(parsed));
    ASSERT_FALSE(rebuilt.isNewHeader());
  }
}

TEST(HeaderSurvey, ReadsOffsetsFromTheMiddleOfASource) {
  const std::string text = "junk\r\nA: b\r\nbad line\r\nContent-Type: multipart/mixed; boundary=a b\r\n\r\nbody";
  ExactReader source(text);
  ASSERT_TRUE(source.reader.seek(6));
  HeaderSurvey out;
  surveyHeaderBlock(out, source.reader, false, nullptr);
  EXPECT_EQ(out.offset, 6u);
  EXPECT_EQ(out.size, text.size() - 4 - 6);
  EXPECT_EQ(out.end, HeaderEnd::emptyLine);
  EXPECT_EQ(out.mark, HeaderMark::droppedLine);  // the first reason stays
  EXPECT_EQ(text.substr(out.markOffset, 8), "bad line");
  EXPECT_EQ(out.contentType.find("boundary")->value, "a b");
}

TEST(HeaderSurvey, SaysWhatEndedTheBlock) {
  struct Row {
    const char* text;
    HeaderEnd end;
    std::size_t size;
  };
  constexpr Row rows[] = {
      {"", HeaderEnd::endOfData, 0},
      {"A: b", HeaderEnd::endOfData, 4},
      {"A: b\n\nc", HeaderEnd::emptyLine, 6},
      {"\r\rc", HeaderEnd::emptyLine, 1},
      {" \t\nA: b", HeaderEnd::blankLine, 3},
      {"A: b\n \nC: d\n", HeaderEnd::endOfData, 12},
      {"A: b\n--b \nc", HeaderEnd::boundaryLine, 5},
      {"--b", HeaderEnd::boundaryLine, 0},
      {"A: b\n --b\n", HeaderEnd::endOfData, 10},
      {"--c\n\n", HeaderEnd::emptyLine, 5},
  };
  BoundaryTable table;
  table.push("b");
  HeaderSurvey out;
  for (const Row& row : rows) {
    ExactReader source(row.text);
    surveyHeaderBlock(out, source.reader, false, &table);
    EXPECT_EQ(out.end, row.end) << row.text;
    EXPECT_EQ(out.size, row.size) << row.text;
  }
}

}  // namespace
}  // namespace vomsg::detail
