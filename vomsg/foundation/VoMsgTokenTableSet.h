// The tables that drive VoMsgTokenizer.
#pragma once

// One token of a state. Entries are tried in order; `length` bytes are compared as strncmp does, so an entry
// whose length is one more than its text's matches only where the input ends, its NUL included.
struct VoMsgTokenEntry {
  int id;  // 0 ends a table
  const char* text;
  unsigned length;  // bytes compared and consumed
  int nextState;    // state after the token
};

// What a byte can be in one state, worked out ahead of the scan so that a byte of ordinary text costs one
// look-up however long the table is.
struct VoMsgTokenClasses {
  static constexpr unsigned char kText = 0;      // begins no token
  static constexpr unsigned char kEscape = 255;  // the backslash of a state that escapes
  // Any other value is one more than the index of the first entry worth trying at that byte.
  static constexpr unsigned kLastEntry = kEscape - 2;

  unsigned char first[256] = {};
};

struct VoMsgTokenState {
  signed char escape;            // 1: a backslash makes the next character text
  const VoMsgTokenEntry* table;  // ended by id 0
  // Those of exactly this table and flag (vomsg::detail::classifyTokens), or null: then every scan works them out.
  const VoMsgTokenClasses* classes = nullptr;
};

struct VoMsgTokenTableSet {
  const VoMsgTokenState* states;
  unsigned count;
};

namespace vomsg::detail {

constexpr VoMsgTokenClasses classifyTokens(const VoMsgTokenEntry* table, signed char escape) {
  VoMsgTokenClasses classes;
  unsigned index = 0;
  for (const VoMsgTokenEntry* entry = table; entry->id != 0; ++entry, ++index) {
    const auto mark = static_cast<unsigned char>(1 + (index < classes.kLastEntry ? index : classes.kLastEntry));
    if (entry->length == 0) {  // nothing is compared, so it stands everywhere
      for (unsigned char& first : classes.first)
        if (first == classes.kText) first = mark;
    } else if (unsigned char& first = classes.first[static_cast<unsigned char>(entry->text[0])];
               first == classes.kText) {
      first = mark;
    }
  }
  if (escape == 1) classes.first[static_cast<unsigned char>('\\')] = classes.kEscape;
  return classes;
}

}  // namespace vomsg::detail
