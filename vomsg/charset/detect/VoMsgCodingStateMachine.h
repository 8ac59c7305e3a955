// A coding-scheme machine at work: steps through a text byte by byte and says when a character is complete, when the
// bytes are impossible, and when they can be nothing else.
#pragma once

#include "vomsg/charset/detect/tables/VoMsgSMModels.h"

struct VoMsgCodingStateMachine {
  enum : std::uint32_t { kStart = 0, kFailed = 1, kItsMe = 2 };

  explicit VoMsgCodingStateMachine(const SMModel* smModel) : model(smModel) {}

  // The state after the next byte.
  std::uint32_t nextState(unsigned char byte) {
    const std::uint32_t byteClass = model->classTable.at(byte);
    if (currentState == kStart) {
      currentBytePos = 0;
      currentCharLen = model->charLenTable[byteClass];
    }
    currentState = model->stateTable.at(currentState * model->classFactor + byteClass);
    ++currentBytePos;
    return currentState;
  }

  std::uint32_t currentState = kStart;
  std::uint32_t currentCharLen = 0;  // as the character's first byte announces it
  std::uint32_t currentBytePos = 0;  // bytes of the character read so far
  const SMModel* model;
};
