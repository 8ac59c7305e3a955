#include "cli/SafeName.h"

#include <gtest/gtest.h>

#include <random>

#include "cli/Printable.h"

namespace vomsg::test {
namespace {

struct Row {
  std::string name;
  const char* type;
  std::string want;
};
const Row kRows[] = {
    {"report.pdf", "application/pdf", "007_report.pdf"},
    {"", "text/html", "007_part.html"},
    {"", "TEXT/x-strange", "007_part.txt"},
    {"", "x/y", "007_part.bin"},
    {"../../etc/passwd", "", "007_passwd"},
    {"..\\..\\boot.ini", "", "007_boot.ini"},
    {"/etc/", "", "007_part.txt"},
    {"C:autoexec.bat", "", "007_C_autoexec.bat"},
    {"..", "image/png", "007_part.png"},
    {" . .hidden. ", "", "007_hidden"},
    {"-rf", "", "007_-rf"},
    {"a\tb\nc\x7f.txt", "", "007_a_b_c_.txt"},
    {std::string("evil\0.txt", 9), "", "007_evil_.txt"},
    {"gro\xC3\x9F.txt", "", "007_gro\xC3\x9F.txt"},
    {"bad\xC3.txt", "", "007_bad_.txt"},
    {"exe\xE2\x80\xAEtxt.scr", "", "007_exe_txt.scr"},  // right-to-left override
    {"$(reboot)`x`|y;z", "", "007___reboot__x__y_z"},
    {"CON", "", "007_CON"},
};

TEST(SafeName, HostileNames) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(cli::printable(row.name));
    EXPECT_EQ(cli::safeFileName(7, row.name, row.type), row.want);
  }
}

TEST(SafeName, LongNamesKeepTheirExtension) {
  std::string name;
  for (int i = 0; i < 200; ++i) name += "\xC3\xA4";
  const std::string safe = cli::safeFileName(1, name + ".docx", "");
  EXPECT_LE(safe.size(), 104u);
  EXPECT_EQ(safe.substr(safe.size() - 5), ".docx");
  EXPECT_EQ(cli::printable(safe).find('\\'), std::string::npos) << "cut inside a character";
  EXPECT_LE(cli::safeFileName(1, "x." + std::string(500, 'y'), "").size(), 104u);
}

// Whatever the bytes: one path component, nothing that printable() would have to escape.
TEST(SafeName, RandomBytes) {
  std::mt19937 random(42);
  for (int round = 0; round < 20000; ++round) {
    std::string name(random() % 150, '\0');
    constexpr char kLikely[] = "./\\\xC3\xA4\xE2\x80\xAE";
    for (char& c : name) c = random() % 2 ? static_cast<char>(random()) : kLikely[random() % (sizeof kLikely - 1)];
    const std::string safe = cli::safeFileName(static_cast<unsigned>(round), name, "");
    ASSERT_EQ(safe.find_first_of("/\\:"), std::string::npos) << round;
    ASSERT_EQ(cli::printable(safe), safe) << round;
    ASSERT_GT(safe.size(), 4u);
    ASSERT_LE(safe.size(), 120u);
  }
}

}  // namespace
}  // namespace vomsg::test
