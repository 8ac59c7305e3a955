// A value in pieces is gathered in three steps: collect the parameters that are its pieces, sort them by number,
// read them in order. `name*` is a value by itself and makes numbered pieces of the same name irrelevant. Of pieces
// with the same number the first one counts; a piece whose number is none (`name*1a`) is no piece.
#include "vomsg/header/VoMsgRfc2231.h"

#include <algorithm>

#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/header/VoMsgHeaderParameter.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kMaxDigits = 8192;

// An encoded piece reads charset'language'text. Only a piece with both marks and a text after them is taken
// apart; anything else is text from its first byte.
struct EncodedPiece {
  std::string_view charset;
  std::string_view text;
};

EncodedPiece cutEncodedPiece(std::string_view value) {
  EncodedPiece piece{{}, value};
  const std::size_t first = value.find('\'');
  if (first == value.npos) return piece;
  piece.charset = value.substr(0, first);
  const std::size_t second = value.find('\'', first + 1);
  if (second != value.npos && second + 1 < value.size()) piece.text = value.substr(second + 1);
  return piece;
}

bool appendDecoded(VoMsgMemoryWriter& out, std::string_view text) {
  if (text.empty()) return true;
  // The reader only reads; its interface predates const.
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(text.data())),
                           static_cast<unsigned>(text.size()));
  return reader.open() && !voFailed(voDecodeHexChar(&out, &reader));
}

}  // namespace

bool isPieceOf(std::string_view parameterName, std::string_view name) {
  return parameterName.size() > name.size() && parameterName[name.size()] == '*' &&
         startsWithNoCase(parameterName, name);
}

std::string_view pieceNumber(std::string_view parameterName) {
  const std::size_t star = parameterName.find('*');
  if (star == parameterName.npos) return {};
  std::string_view digits = parameterName.substr(star + 1);
  digits = digits.substr(0, digits.find('*')).substr(0, kMaxDigits);
  if (digits.empty() || digits.find_first_not_of("0123456789") != digits.npos) return {};
  const std::size_t significant = digits.find_first_not_of('0');
  return significant == digits.npos ? digits.substr(0, 1) : digits.substr(significant);
}

bool isSmallerNumber(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

Rfc2231Pieces::Rfc2231Pieces(const ParameterList& parameters, std::string_view name) : mName(name) {
  for (const auto& parameter : parameters) add(viewOf(parameter->getName()), parameter->getRawParameterValue());
  sort();
}

void Rfc2231Pieces::add(std::string_view parameterName, const char* value) {
  if (mIsWhole || !isPieceOf(parameterName, mName)) return;
  if (parameterName.size() == mName.size() + 1) {
    mPieces.assign(1, Piece{{}, value, true});
    mIsWhole = true;
    return;
  }
  const std::string_view number = pieceNumber(parameterName);
  if (!number.empty()) mPieces.push_back({number, value, parameterName.back() == '*'});
}

void Rfc2231Pieces::sort() {
  std::stable_sort(mPieces.begin(), mPieces.end(),
                   [](const Piece& a, const Piece& b) { return isSmallerNumber(a.number, b.number); });
  mPieces.erase(
      std::unique(mPieces.begin(), mPieces.end(), [](const Piece& a, const Piece& b) { return a.number == b.number; }),
      mPieces.end());
}

bool Rfc2231Pieces::assemble(std::string& text, std::string& charset) const {
  text.clear();
  charset.clear();
  VoMsgMemoryWriter out;
  for (const Piece& piece : mPieces) {
    const std::string_view value = viewOf(piece.value);
    if (!piece.isEncoded) {
      if (!out.write(value.data(), static_cast<unsigned>(value.size()))) return false;
      continue;
    }
    const EncodedPiece encoded = cutEncodedPiece(value);
    if (piece.number.empty() || piece.number == "0") charset = encoded.charset;
    if (!appendDecoded(out, encoded.text)) return false;
  }
  if (!out.flush() || out.getLength() == 0) return false;
  text.assign(out.getData(), out.getLength());
  return true;
}

bool Rfc2231Pieces::findCharset(std::string& charset) const {
  for (const Piece& piece : mPieces) {
    if (!piece.value) continue;
    if (!piece.isEncoded) return false;
    const std::string_view value = piece.value;
    if (value.empty() || value.front() == '\'') continue;
    charset = value.substr(0, value.find('\''));
    return true;
  }
  return false;
}

}  // namespace vomsg::detail
