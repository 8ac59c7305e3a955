// ICU's converters, called in pieces of some thousand units: a conversion needs memory for its result and no more.
#pragma once

#include <cstddef>
#include <string_view>

#include "vomsg/charset/convert/VoMsgIcuHandle.h"

namespace vomsg::detail {

inline constexpr std::size_t kIcuPiece = 4096;

// Hands the text of `bytes` to `sink` piece by piece, with `last` the last one (perhaps empty) marked as such; false
// when ICU fails.
template <class Sink>
bool decodePieces(IcuConverter& converter, std::string_view bytes, bool last, Sink&& sink) {
  char16_t piece[kIcuPiece];
  IcuStep step;
  do {
    step = decodeStep(converter, bytes, last, piece, kIcuPiece);
    if (step.state == IcuStep::failed) return false;
    sink(piece, step.count, last && step.state == IcuStep::done);
  } while (step.state == IcuStep::more);
  return true;
}

// The other way. Only the call with the last piece ends the conversion.
template <class Sink>
bool encodePiece(IcuConverter& converter, std::u16string_view text, bool last, Sink&& sink) {
  char block[kIcuPiece];
  IcuStep step;
  do {
    step = encodeStep(converter, text, last, block, sizeof block);
    sink(std::string_view(block, step.count));
  } while (step.state == IcuStep::more);
  return step.state == IcuStep::done;
}

// From one charset straight into another.
template <class Sink>
bool transcodePieces(IcuConverter& from, IcuConverter& to, IcuPivot& pivot, std::string_view bytes, bool last,
                     Sink&& sink) {
  char block[kIcuPiece];
  IcuStep step;
  do {
    step = transcodeStep(from, to, pivot, bytes, last, block, sizeof block);
    sink(std::string_view(block, step.count));
  } while (step.state == IcuStep::more);
  return step.state == IcuStep::done;
}

}  // namespace vomsg::detail
