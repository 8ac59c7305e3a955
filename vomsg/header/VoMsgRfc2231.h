// Parameter values in pieces (RFC 2231): `name*` is a whole value with its charset, `name*<n>` and `name*<n>*` are
// numbered pieces of one, the latter percent-encoded. Numbers are decimal strings of any length: a sender may leave
// gaps of any width, so they are compared as digits and never counted through.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class VoMsgHeaderParameter;

namespace vomsg::detail {

using ParameterList = std::vector<std::unique_ptr<VoMsgHeaderParameter>>;

// `parameterName` is `name` followed by "*" and anything.
bool isPieceOf(std::string_view parameterName, std::string_view name);
// Its number without leading zeros: what stands between the first "*" and the next one or the end. Empty when
// that is no number.
std::string_view pieceNumber(std::string_view parameterName);
bool isSmallerNumber(std::string_view a, std::string_view b);

// The pieces of one parameter in the order in which they are read.
class Rfc2231Pieces {
 public:
  // `parameters` is borrowed and must not change meanwhile. Sorts once.
  Rfc2231Pieces(const ParameterList& parameters, std::string_view name);
  // The same step by step: add() each parameter that may be a piece, in order, then sort(). All is borrowed.
  explicit Rfc2231Pieces(std::string_view name) : mName(name) {}
  void add(std::string_view parameterName, const char* value);
  void sort();

  // Puts the value together. False when there is nothing. `charset` becomes what the first piece declares.
  bool assemble(std::string& text, std::string& charset) const;
  // The charset that the first encoded piece with anything before its "'" declares; false when an unencoded
  // piece comes first.
  bool findCharset(std::string& charset) const;

 private:
  struct Piece {
    std::string_view number;  // empty for `name*`
    const char* value;        // null without one
    bool isEncoded;
  };
  std::string_view mName;
  bool mIsWhole = false;  // `name*` was there
  std::vector<Piece> mPieces;
};

}  // namespace vomsg::detail
