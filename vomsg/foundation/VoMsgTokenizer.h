// Cuts a structured header value into tokens, driven by tables of states.
#pragma once

#include <string>

#include "vomsg/foundation/VoMsgExport.h"
#include "vomsg/foundation/VoMsgTokenTableSet.h"

class VOMSG_API VoMsgTokenizer {
 public:
  // Token ids of the default tables, and those returned besides a table's own.
  enum Token : int {
    end = 0,
    semicolon = 1,
    commentOpen = 2,
    commentClose = 3,
    quote = 4,
    encodedStart = 5,
    encodedEnd = 6,
    question = 7,
    equals = 8,
    colon = 9,
    whitespace = 10,
    carriageReturn = 11,
    lineFeed = 12,
    text = 100,
    commentText = 300
  };
  // States of the default tables.
  enum State : int { structured = 0, quoted = 1, comment = 2, parameterValue = 3 };

  // Starts in state 0 at position 0. `text` and `set` are borrowed; a null set selects the default tables.
  VoMsgTokenizer(const char* text, const VoMsgTokenTableSet* set);

  // The next token's id. When `expectedId` is not -1 and a token of that id stands here, it is taken before
  // the tables are tried in order.
  int getNextToken(int expectedId = -1);
  // The current token's text; empty when it has no length.
  void getTokenString(std::string& out) const;
  // Recovers a boundary value written without quotes from the current token, and moves back so that the rest
  // is read again.
  void getIllegalBoundary(std::string& out);

  void setState(int state) { mState = state; }
  int getState() const { return mState; }
  int getPosition() const { return mPosition; }

  // Steps of getNextToken.
  bool isToken(int index) const;
  int fetchTokenTable() const;  // index of the entry that matches here, or -1
  int getIndexFromTokenID(int id) const;
  int getCommentString();
  void setToken(int start, int length);

 private:
  int consume(int index);

  const VoMsgTokenTableSet* mpSet;
  int mState = 0;
  int mPosition = 0;
  const char* mpText;
  const char* mpToken = nullptr;
  int mTokenLength = 0;
  int mCommentDepth = 0;
  int mTextLength = 0;
};
