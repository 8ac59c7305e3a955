// The character frequencies of the East Asian two-byte encodings.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgExport.h"

// How often a text's characters were counted, and how many of them were frequent ones.
struct VoMsgCharCounts {
  unsigned total = 0;
  unsigned frequent = 0;
};

class VOMSG_API VoMsgFrequenceTable {
 public:
  static constexpr int kFrequent = 512;  // ranks below are those of frequent characters

  VoMsgFrequenceTable(const VoMsgFrequenceTable&) = delete;
  VoMsgFrequenceTable& operator=(const VoMsgFrequenceTable&) = delete;
  virtual ~VoMsgFrequenceTable();

  // The order of the two-byte character at `c`; negative, or not below `tableSize`, when the table does not cover it.
  virtual int evaluateChar(const char* c) const = 0;
  // Counts `count` such characters, which lie one behind the other. What it counts is what evaluateChar says; a table
  // overrides it to save the call for each.
  virtual VoMsgCharCounts countChars(const char* chars, unsigned count) const;

  const std::int16_t* const freqOrder;  // rank by order
  const std::uint32_t tableSize;        // number of valid orders
  const float typicalRatio;             // frequent to rare characters in usual text, as far as they are counted

 protected:
  VoMsgFrequenceTable(const std::int16_t* ranks, std::uint32_t size, float ratio)
      : freqOrder(ranks), tableSize(size), typicalRatio(ratio) {}
};

class VOMSG_API VoMsgBig5FrequenceTable final : public VoMsgFrequenceTable {
 public:
  VoMsgBig5FrequenceTable();
  int evaluateChar(const char* c) const override;
  VoMsgCharCounts countChars(const char* chars, unsigned count) const override;
};

class VOMSG_API VoMsgGB2312FrequenceTable final : public VoMsgFrequenceTable {
 public:
  VoMsgGB2312FrequenceTable();
  int evaluateChar(const char* c) const override;
  VoMsgCharCounts countChars(const char* chars, unsigned count) const override;
};

class VOMSG_API VoMsgEUCKRFrequenceTable final : public VoMsgFrequenceTable {
 public:
  VoMsgEUCKRFrequenceTable();
  int evaluateChar(const char* c) const override;
  VoMsgCharCounts countChars(const char* chars, unsigned count) const override;
};

class VOMSG_API VoMsgEUCJPFrequenceTable final : public VoMsgFrequenceTable {
 public:
  VoMsgEUCJPFrequenceTable();
  int evaluateChar(const char* c) const override;
  VoMsgCharCounts countChars(const char* chars, unsigned count) const override;
};

class VOMSG_API VoMsgEUCTWFrequenceTable final : public VoMsgFrequenceTable {
 public:
  VoMsgEUCTWFrequenceTable();
  int evaluateChar(const char* c) const override;
  VoMsgCharCounts countChars(const char* chars, unsigned count) const override;
};

class VOMSG_API VoMsgSJISFrequenceTable final : public VoMsgFrequenceTable {
 public:
  VoMsgSJISFrequenceTable();
  int evaluateChar(const char* c) const override;
  VoMsgCharCounts countChars(const char* chars, unsigned count) const override;
};
