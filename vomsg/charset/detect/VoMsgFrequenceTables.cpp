#include "vomsg/charset/detect/VoMsgFrequenceTables.h"

#include "vomsg/charset/detect/tables/VoMsgFrequenceOrders.h"

namespace {

constexpr int kNone = -1;

int big5Order(int b0, int b1) {
  if (b0 < 0xA4) return kNone;
  return 157 * (b0 - 0xA4) + (b1 >= 0xA1 ? b1 - 0xA1 + 63 : b1 - 0x40);
}

int gb2312Order(int b0, int b1) { return b0 < 0xB0 || b1 < 0xA1 ? kNone : 94 * (b0 - 0xB0) + b1 - 0xA1; }

int eucKrOrder(int b0, int b1) { return b0 < 0xB0 ? kNone : 94 * (b0 - 0xB0) + b1 - 0xA1; }

// From 0xA0 on, so that this lead byte gives negative orders.
int eucJpOrder(int b0, int b1) { return b0 < 0xA0 ? kNone : 94 * (b0 - 0xA1) + b1 - 0xA1; }

int eucTwOrder(int b0, int b1) { return b0 < 0xC4 ? kNone : 94 * (b0 - 0xC4) + b1 - 0xA1; }

int sjisOrder(int b0, int b1) {
  const bool isLow = b0 >= 0x81 && b0 <= 0x9F;
  if (!isLow && (b0 < 0xE0 || b0 > 0xEF)) return kNone;
  return 188 * (isLow ? b0 - 0x81 : b0 - 0xE0 + 31) + b1 - 0x40 - (b1 >= 0x80);
}

template <int (*order)(int, int)>
int orderAt(const char* c) {
  return order(static_cast<unsigned char>(c[0]), static_cast<unsigned char>(c[1]));
}

template <class Order>
VoMsgCharCounts count(const VoMsgFrequenceTable& table, const char* chars, unsigned number, Order order) {
  VoMsgCharCounts counts;
  for (const char* c = chars; c != chars + 2 * static_cast<std::size_t>(number); c += 2) {
    const auto at = static_cast<std::uint32_t>(order(c));  // a negative order becomes one beyond every table
    if (at >= table.tableSize) continue;
    ++counts.total;
    counts.frequent += table.freqOrder[at] < VoMsgFrequenceTable::kFrequent;
  }
  return counts;
}

}  // namespace

VoMsgFrequenceTable::~VoMsgFrequenceTable() = default;

VoMsgCharCounts VoMsgFrequenceTable::countChars(const char* chars, unsigned number) const {
  return count(*this, chars, number, [this](const char* c) { return evaluateChar(c); });
}

// The ratios of Big5, GB2312 and EUC-TW are set lower than the published ones, so that these decide at all: real mail
// mixes in more rare characters than the texts that the ranks were taken from.
VoMsgBig5FrequenceTable::VoMsgBig5FrequenceTable() : VoMsgFrequenceTable(gBig5FrequenceOrder, 5376, 1.5f) {}
VoMsgGB2312FrequenceTable::VoMsgGB2312FrequenceTable() : VoMsgFrequenceTable(gGB2312FrequenceOrder, 3760, 1.8f) {}
VoMsgEUCKRFrequenceTable::VoMsgEUCKRFrequenceTable() : VoMsgFrequenceTable(gEUCKRFrequenceOrder, 2352, 6.0f) {}
VoMsgEUCJPFrequenceTable::VoMsgEUCJPFrequenceTable() : VoMsgFrequenceTable(gEUCJPFrequenceOrder, 4368, 3.0f) {}
VoMsgEUCTWFrequenceTable::VoMsgEUCTWFrequenceTable() : VoMsgFrequenceTable(gEUCTWFrequenceOrder, 8102, 1.5f) {}
VoMsgSJISFrequenceTable::VoMsgSJISFrequenceTable() : VoMsgFrequenceTable(gSJISFrequenceOrder, 4368, 3.0f) {}

int VoMsgBig5FrequenceTable::evaluateChar(const char* c) const { return orderAt<big5Order>(c); }
int VoMsgGB2312FrequenceTable::evaluateChar(const char* c) const { return orderAt<gb2312Order>(c); }
int VoMsgEUCKRFrequenceTable::evaluateChar(const char* c) const { return orderAt<eucKrOrder>(c); }
int VoMsgEUCJPFrequenceTable::evaluateChar(const char* c) const { return orderAt<eucJpOrder>(c); }
int VoMsgEUCTWFrequenceTable::evaluateChar(const char* c) const { return orderAt<eucTwOrder>(c); }
int VoMsgSJISFrequenceTable::evaluateChar(const char* c) const { return orderAt<sjisOrder>(c); }

VoMsgCharCounts VoMsgBig5FrequenceTable::countChars(const char* chars, unsigned number) const {
  return count(*this, chars, number, orderAt<big5Order>);
}
VoMsgCharCounts VoMsgGB2312FrequenceTable::countChars(const char* chars, unsigned number) const {
  return count(*this, chars, number, orderAt<gb2312Order>);
}
VoMsgCharCounts VoMsgEUCKRFrequenceTable::countChars(const char* chars, unsigned number) const {
  return count(*this, chars, number, orderAt<eucKrOrder>);
}
VoMsgCharCounts VoMsgEUCJPFrequenceTable::countChars(const char* chars, unsigned number) const {
  return count(*this, chars, number, orderAt<eucJpOrder>);
}
VoMsgCharCounts VoMsgEUCTWFrequenceTable::countChars(const char* chars, unsigned number) const {
  return count(*this, chars, number, orderAt<eucTwOrder>);
}
VoMsgCharCounts VoMsgSJISFrequenceTable::countChars(const char* chars, unsigned number) const {
  return count(*this, chars, number, orderAt<sjisOrder>);
}
