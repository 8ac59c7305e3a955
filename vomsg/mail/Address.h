// Mailboxes in header fields (RFC 5322, section 3.4), in UTF-8. The list is cut from the field's value as it stands, so
// it serves every field that holds addresses, Reply-To and Sender too.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/header/VoMsgEncodedWord.h"
#include "vomsg/mail/SafeName.h"
#include "vomsg/mail/Utf8.h"

namespace vomsg {

struct Address {
  std::string name;     // the display name, or the comment that stands for it; may be empty
  std::string address;  // "a@example.org"
  std::string group;    // the group that lists it; mostly empty. Setters leave it out
};

namespace inner {

inline std::string decodedWords(const std::string& raw) {
  if (raw.find("=?") == raw.npos) return asUtf8(raw.c_str());
  char* decoded = nullptr;
  const bool failed = voFailed(voDecodeHeaderValue("utf-8", raw.c_str(), &decoded));
  std::string text = asUtf8(failed ? raw.c_str() : decoded);
  voFreeHeaderValue(decoded);
  return text;
}

// Reads one address list in a single pass. Patient: what no grammar allows ends up in a name or an address, never lost.
class AddressListReader {
 public:
  explicit AddressListReader(std::string_view text) : mText(text) {}

  std::vector<Address> read() {
    while (!mText.empty()) {
      const char c = mText.front();
      if (c == '"') {
        addWord(quoted());
      } else if (c == '(') {
        mComment = comment();
      } else if (c == '<') {
        angle();
      } else if (c == ',' || c == ';') {
        finish();
        if (c == ';') mGroup.clear();
        mText.remove_prefix(1);
      } else if (c == ':' && !mHasAngle && mGroup.empty() && mBare.find('@') == mBare.npos) {
        mGroup = decodedWords(mPhrase);
        startAgain();
        mText.remove_prefix(1);
      } else if (isBlank(c)) {
        mAfterBlank = true;
        mText.remove_prefix(1);
      } else {
        addWord(atom());
      }
    }
    finish();
    return std::move(mList);
  }

 private:
  static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
  static bool isEncodedWord(std::string_view word) {
    return word.size() > 6 && word.substr(0, 2) == "=?" && word.substr(word.size() - 2) == "?=";
  }

  void startAgain() {
    mPhrase.clear();
    mBare.clear();
    mAngle.clear();
    mComment.clear();
    mHasAngle = mAfterBlank = mLastEncoded = false;
  }

  // A phrase keeps one blank where the text has any, except between encoded words, which belong together.
  void addWord(const std::string& word) {
    const bool encoded = isEncodedWord(word);
    if (!mPhrase.empty() && mAfterBlank && !(encoded && mLastEncoded)) mPhrase += ' ';
    mPhrase += word;
    mBare += word;
    mAfterBlank = false;
    mLastEncoded = encoded;
  }

  std::string atom() {
    const std::size_t end = mText.find_first_of("\"(<,;: \t\r\n");
    // Only its own colon can be the front here, one behind the group's name or behind an angle.
    const std::size_t size = end == 0 ? 1 : end;
    const std::string word(mText.substr(0, size));
    mText.remove_prefix(word.size());
    return word;
  }

  // A quoted local part keeps its quotes in mBare, so that the address stays what it is.
  std::string quoted() {
    std::string text;
    std::size_t i = 1;
    for (; i < mText.size() && mText[i] != '"'; ++i) {
      if (mText[i] == '\\' && i + 1 < mText.size()) ++i;
      if (mText[i] != '\r' && mText[i] != '\n') text += mText[i];
    }
    const std::size_t end = i < mText.size() ? i + 1 : i;
    if (end < mText.size() && mText[end] == '@') text = mText.substr(0, end);
    mText.remove_prefix(end);
    return text;
  }

  std::string comment() {
    std::string text;
    unsigned depth = 0;
    std::size_t i = 0;
    for (; i < mText.size(); ++i) {
      if (mText[i] == '\\' && i + 1 < mText.size()) {
        text += mText[++i];
        continue;
      }
      if (mText[i] == ')' && --depth == 0) break;
      if (depth > 0) text += mText[i];
      if (mText[i] == '(') ++depth;
    }
    mText.remove_prefix(i < mText.size() ? i + 1 : i);
    return text;
  }

  void angle() {
    const std::size_t end = mText.find('>');
    std::string_view inside = mText.substr(1, end == mText.npos ? end : end - 1);
    mText.remove_prefix(end == mText.npos ? mText.size() : end + 1);
    inside = trimmed(inside);
    if (!inside.empty() && inside.front() == '@') {  // an obsolete route: "@a,@b:user@host"
      const auto colon = inside.find(':');
      if (colon != inside.npos) inside.remove_prefix(colon + 1);
    }
    for (const char c : inside) {
      if (!isBlank(c)) mAngle += c;
    }
    mHasAngle = true;
  }

  void finish() {
    Address found;
    found.group = mGroup;
    found.address = asUtf8((mHasAngle ? mAngle : mBare).c_str());
    if (mHasAngle) found.name = decodedWords(mPhrase);
    if (found.name.empty()) found.name = decodedWords(mComment);
    if (!found.address.empty() || !found.name.empty()) mList.push_back(std::move(found));
    startAgain();
  }

  std::string_view mText;
  std::vector<Address> mList;
  std::string mGroup, mPhrase, mBare, mAngle, mComment;
  bool mHasAngle = false;
  bool mAfterBlank = false;
  bool mLastEncoded = false;
};

// `name` as it can stand in front of an address: as it is, in quotes, or in encoded words of at most 75 bytes.
inline std::string encodedName(std::string_view name) {
  constexpr std::string_view kSpecial = "()<>[]:;@\\,.\"";
  const bool isPlain = isAscii(name) && name.find("=?") == name.npos;
  if (isPlain && name.find_first_of(kSpecial) == name.npos) return std::string(name);
  std::string out;
  if (isPlain) {
    out += '"';
    for (const char c : name) {
      if (c == '"' || c == '\\') out += '\\';
      out += c;
    }
    return out + '"';
  }
  while (!name.empty()) {
    const std::string piece(cutTo(name, 18));
    name.remove_prefix(piece.size());
    char* word = nullptr;
    if (voFailed(voEncodeHeaderValue("utf-8", piece.c_str(), &word, 1))) return {};
    if (!out.empty()) out += ' ';
    out += word;
    voFreeHeaderValue(word);
  }
  return out;
}

// The value of an address field, in ASCII. Groups are read and not written: their members stand for themselves.
inline std::string addressList(const std::vector<Address>& addresses) {
  std::string out;
  for (const Address& each : addresses) {
    if (!out.empty()) out += ", ";
    out += each.name.empty() ? each.address : encodedName(each.name) + " <" + each.address + ">";
  }
  return out;
}

}  // namespace inner

// The addresses in the raw value of a field.
inline std::vector<Address> parseAddresses(std::string_view value) { return inner::AddressListReader(value).read(); }

}  // namespace vomsg
