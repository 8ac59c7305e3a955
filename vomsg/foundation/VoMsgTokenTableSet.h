// The tables that drive VoMsgTokenizer.
#pragma once

// One token of a state. Entries are tried in order; `length` bytes are compared, so an entry whose length is
// one more than its text's matches only where the input ends, its NUL included.
struct VoMsgTokenEntry {
  int id;            // 0 ends a table
  const char* text;
  unsigned length;   // bytes compared and consumed
  int nextState;     // state after the token
};

struct VoMsgTokenState {
  signed char escape;            // 1: a backslash makes the next character text
  const VoMsgTokenEntry* table;  // ended by id 0
};

struct VoMsgTokenTableSet {
  const VoMsgTokenState* states;
  unsigned count;
};
