#include "vomsg/mail/Message.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "vomsg/mail.h"

namespace {

std::string sample(const std::string& name) { return VOMSG_TEST_DATA "/messages/" + name + ".eml"; }
std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}
std::string joined(const std::vector<std::string>& words) {
  std::string out;
  for (const std::string& word : words) out += (out.empty() ? "" : " ") + word;
  return out;
}
std::string attachmentNames(const vomsg::Message& message) {
  std::vector<std::string> names;
  for (const vomsg::Part& part : message.attachments()) names.push_back(part.name().value_or(part.type()));
  return joined(names);
}

class Folder {
 public:
  Folder() {
    char name[] = "/tmp/vomsg-mail-XXXXXX";
    mPath = ::mkdtemp(name);
  }
  ~Folder() { std::filesystem::remove_all(mPath); }
  std::string operator/(const std::string& name) const { return mPath + "/" + name; }

 private:
  std::string mPath;
};

struct SampleRow {
  const char* file;
  const char* text;  // how it begins
  const char* html;
  const char* attachments;
};
const SampleRow kSamples[] = {
    {"plain", "Dear Jun,", "", ""},
    {"alternative", "Lunch at noon", "<html><body><p>Lunch", ""},
    {"mixed_base64", "Der Punkt hängt an.", "", "dot.png bytes.bin"},
    {"nested_plain", "See below.", "", "message/rfc822"},
    {"nested_base64", "", "", "message/rfc822"},
    {"winmail", "Guten Tag,", "", "Zahlen März.csv kurve.png"},
    {"embedded_blocks", "Dear all,", "", "parts list.txt Sketch 3"},
    {"signed", "The offer stands", "", "offer.pdf"},
    {"report", "", "", "message/delivery-status text/rfc822-headers"},
};

TEST(FaceMessage, TellsLetterFromAttachments) {
  for (const SampleRow& row : kSamples) {
    SCOPED_TRACE(row.file);
    const vomsg::Message message = vomsg::Message::open(sample(row.file)).orThrow();
    EXPECT_EQ(message.text().orThrow().substr(0, std::strlen(row.text)), row.text);
    EXPECT_EQ(message.html().orThrow().substr(0, std::strlen(row.html)), row.html);
    if (*row.html == '\0') {
      EXPECT_FALSE(message.htmlPart());
    }
    EXPECT_EQ(attachmentNames(message), row.attachments);
  }
}

constexpr char kRelated[] =
    "MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=b\r\n\r\n--b\r\nContent-Type: text/html\r\n\r\n"
    "<img src=\"CID:a%40x\"><img src='cid:B@x'>cid:\r\n--b\r\nContent-Type: image/png; name=a\r\nContent-ID: <a@x>\r\n"
    "\r\nA\r\n--b\r\nContent-Type: image/png; name=b\r\nContent-ID: <b@x>\r\n\r\nB\r\n--b\r\nContent-Type: text/css; "
    "name=c\r\nContent-ID: <B@x>\r\n\r\nC\r\n--b\r\nContent-Type: application/pgp-signature\r\n\r\nS\r\n--b\r\n"
    "Content-Type: image/png; name=d\r\n\r\nD\r\n--b--\r\n";

// Only an image that the HTML names belongs to the letter; Content-IDs are compared exactly.
TEST(FaceMessage, ImagesOfTheHtml) {
  const vomsg::Message message = vomsg::Message::parse(kRelated).orThrow();
  EXPECT_EQ(attachmentNames(message), "b c d");
  ASSERT_TRUE(message.imageByCid("a@x"));
  EXPECT_EQ(message.imageByCid("a@x")->bytes().orThrow(), "A");
  EXPECT_FALSE(message.imageByCid("A@x"));
  EXPECT_FALSE(message.imageByCid(""));
}

TEST(FaceMessage, Fields) {
  vomsg::Message message =
      vomsg::Message::parse(
          "Subject: =?utf-8?Q?K=C3=B6ln?=\r\nX-Odd : a\r\n b\r\nReferences: <a@b>\r\n <c@d> junk\r\n"
          "Date: Tue, 3 Mar 2026 09:15:05 +0100\r\nMessage-ID:<m@n>\r\nx-odd: second\r\n\r\n")
          .orThrow();
  EXPECT_EQ(message.subject(), "Köln");
  EXPECT_EQ(message.date()->seconds, 1772525705);
  EXPECT_EQ(message.messageId(), "m@n");
  EXPECT_EQ(joined(message.references()), "a@b c@d");
  EXPECT_EQ(message.fieldBytes("X-ODD"), "X-Odd : a\r\n b\r\n");
  EXPECT_EQ(message.fieldBytes("x-odd", 1), "x-odd: second\r\n");
  EXPECT_EQ(message.fieldBytes("x-odd", 2), std::nullopt);
  EXPECT_EQ(message.header("none"), std::nullopt);
  EXPECT_EQ(message.fields().size(), 6u);

  message.setSubject("森さん").orThrow();
  message.setReferences({"x@y", "z@y"}).orThrow();
  message.addHeader("X-New", "ä").orThrow();
  message.removeHeader("X-Odd").orThrow();
  const vomsg::Message again = vomsg::Message::parse(message.toString().orThrow()).orThrow();
  EXPECT_EQ(again.subject(), "森さん");
  EXPECT_EQ(joined(again.references()), "x@y z@y");
  EXPECT_EQ(again.header("x-new"), "ä");
  EXPECT_EQ(again.header("x-odd"), std::nullopt);

  // What would be another field, or hide the rest of a value, is refused.
  for (const char* name : {"", "a b", "a:b", "a\n", "ä"}) EXPECT_FALSE(message.setHeader(name, "x")) << name;
  EXPECT_FALSE(message.addHeader("X", std::string("a\0b", 3)));
  message.setHeader("X-Split", "a\r\nBcc: b").orThrow();
  EXPECT_TRUE(vomsg::Message::parse(message.toString().orThrow()).orThrow().bcc().empty());
}

// However a message comes in, it is the same message and goes out as it came, small or beyond what is kept in memory.
TEST(FaceMessage, EverySourceAndTarget) {
  const Folder folder;
  for (const std::size_t padding : {std::size_t{0}, std::size_t{3} << 20}) {
    const std::string bytes = "Subject: s\r\n\r\n" + std::string(padding, 'x') + "\nend";
    const std::string path = folder / "in.eml";
    std::ofstream(path, std::ios::binary) << bytes;
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    std::FILE* const pipe = ::popen(("cat " + path).c_str(), "r");
    std::istringstream stream(bytes);
    std::vector<vomsg::Message> all;
    all.push_back(vomsg::Message::open(path).orThrow());
    all.push_back(vomsg::Message::read(fd).orThrow());
    all.push_back(vomsg::Message::read(::fileno(pipe)).orThrow());
    all.push_back(vomsg::Message::read(stream).orThrow());
    all.push_back(vomsg::Message::parse(bytes).orThrow());
    ::pclose(pipe);
    EXPECT_EQ(::lseek(fd, 0, SEEK_CUR), 0);
    for (std::size_t i = 0; i < all.size(); ++i) {
      SCOPED_TRACE(i);
      EXPECT_EQ(all[i].subject(), "s");
      EXPECT_TRUE(all[i].toString().orThrow() == bytes);
      std::ostringstream out;
      all[i].write(out).orThrow();
      EXPECT_TRUE(out.str() == bytes);
      const std::string copy = folder / "copy.eml";
      all[i].write(copy).orThrow();
      EXPECT_TRUE(readFile(copy) == bytes);
      // Onto its own source, under whatever name.
      EXPECT_EQ(all[i].write(path + "/../in.eml").code() == kVoSuccess, false);
      EXPECT_EQ(all[i].write(fd).code() == kVoBadArgument, i < 2);
      EXPECT_EQ(::ftruncate(fd, 0), 0);
      std::ofstream(path, std::ios::binary) << bytes;
    }
    ::close(fd);
  }
  EXPECT_EQ(vomsg::Message::open(folder / "none").code(), kVoReadFailed);
  EXPECT_EQ(vomsg::Message::open("/").code(), kVoReadFailed);
}

// From the middle of a file, as a caller has it who read something in front.
TEST(FaceMessage, ReadsFromWhereTheDescriptorStands) {
  const Folder folder;
  const std::string path = folder / "in";
  std::ofstream(path) << "junk\nSubject: s\n\n" << std::string(70000, 'y');
  const int fd = ::open(path.c_str(), O_RDONLY);
  ::lseek(fd, 5, SEEK_SET);
  const vomsg::Message message = vomsg::Message::read(fd).orThrow();
  ::close(fd);
  EXPECT_EQ(message.subject(), "s");
  EXPECT_EQ(message.root().bytes().orThrow(), std::string(70000, 'y'));
}

TEST(FaceMessage, DamageIsAFailureWithTheRestSalvaged) {
  std::string bytes =
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\none\r\n--b\r\nContent-Type: text/plain\r\n";
  const std::string::size_type where = bytes.find("Content-Type: text/plain");
  bytes += "Content-Type: text/html\r\n\r\ntwo\r\n--b--\r\n";
  vomsg::Result<vomsg::Message> message = vomsg::Message::parse(bytes);
  ASSERT_FALSE(message);
  EXPECT_EQ(message.error().code(), kVoMalformed);
  EXPECT_EQ(message.error().offset(), where);
  EXPECT_THROW((void)vomsg::Message::parse(bytes).orThrow(), vomsg::Failure);
  ASSERT_NE(message.salvaged(), nullptr);
  EXPECT_EQ(message.salvaged()->toString().orThrow(), bytes);
}

// A part's range is where its bytes stand in the file, however deep it lies; inside an encoding it is its carrier's.
TEST(FaceMessage, SourceRanges) {
  for (const char* name : {"nested_plain", "nested_base64", "winmail", "embedded_blocks", "alternative"}) {
    SCOPED_TRACE(name);
    const std::string bytes = readFile(sample(name));
    const vomsg::Message message = vomsg::Message::open(sample(name)).orThrow();
    unsigned carried = 0;
    for (const vomsg::Part part : message.parts()) {
      const std::optional<vomsg::SourceRange> range = part.sourceRange();
      ASSERT_TRUE(range);
      ASSERT_LE(std::size_t{range->offset} + range->size, bytes.size());
      if (range->isCarrier) ++carried;
      if (range->isCarrier || !part.isLeaf()) continue;
      EXPECT_EQ(bytes.substr(range->offset + range->headerSize, range->size - range->headerSize),
                part.rawBytes().orThrow());
    }
    EXPECT_EQ(carried > 0, name != std::string_view("alternative") && name != std::string_view("nested_plain"));
  }
}

TEST(FaceMessage, DisclaimerAndSignatures) {
  vomsg::Message message = vomsg::Message::open(sample("signed")).orThrow();
  message.addDisclaimer({"Confidential: ä.\r\n"}).orThrow();
  message.stripSignatures().orThrow();
  const vomsg::Message again = vomsg::Message::parse(message.toString().orThrow()).orThrow();
  EXPECT_NE(again.text().orThrow().find("Confidential: ä."), std::string::npos);
  for (const vomsg::Part part : again.parts()) EXPECT_FALSE(part.isSignature());
}

TEST(FaceMessage, ComposedFromNothing) {
  vomsg::Message message;
  message.setFrom({{"Ada", "a@b", ""}}).orThrow();
  message.setDate({0, 60}).orThrow();
  message.root().setText("Grüße\r\n").orThrow();
  const vomsg::Message again = vomsg::Message::parse(message.toString().orThrow()).orThrow();
  EXPECT_EQ(again.from().at(0).address, "a@b");
  EXPECT_EQ(again.date()->iso8601(), "1970-01-01T01:00:00+01:00");
  EXPECT_EQ(again.text().orThrow(), "Grüße\r\n");
}

TEST(FaceMessage, SettingsReachTheLibrary) {
  const std::string bytes = "A: 1\r\nB: 2\r\nC: 3\r\n\r\n";
  vomsg::Settings settings;
  settings.maxFields = 2;
  settings.apply();
  EXPECT_EQ(vomsg::Message::parse(bytes).code(), kVoMalformed);
  vomsg::Settings().apply();
  EXPECT_TRUE(vomsg::Message::parse(bytes));
}

}  // namespace
