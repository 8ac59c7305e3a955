// One header field: a name, a raw value and its parameters (RFC 5322, RFC 2045, RFC 2231).
// What is handed in is copied; getters return pointers into the field that stay valid until it changes, and only
// newCopy hands over an object. Names are compared without case; the first match counts.
//
// Nothing that a caller sets can begin another header line: a name with a line break is refused, a value set through
// the encoding setters, and any parameter value, becomes one logical line (each line break with the blanks after it
// one space), and a raw value keeps its folds but no other line break.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgExport.h"
#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/header/VoMsgHeaderParameter.h"

class VoMsgEntityHeader;
namespace vomsg::detail {
class HeaderBlockBuilder;
}

class VOMSG_API VoMsgHeaderField {
 public:
  // Either may be null. A name with a line break or with a blank in front is not taken: getName() is then null, and a
  // field without name is never written. A block takes only what isFieldName allows as a new name: printable ASCII
  // without blank and ":".
  VoMsgHeaderField(const char* name, const char* rawValue);
  ~VoMsgHeaderField();
  VoMsgHeaderField(const VoMsgHeaderField&) = delete;
  VoMsgHeaderField& operator=(const VoMsgHeaderField&) = delete;

  VoMsgHeaderField* newCopy() const;  // yours; caches and the edited flag are not copied
  void dumpHeaderField(std::FILE* out) const;

  const char* getName() const { return mName.get(); }
  int isNewHeader() const { return mIsNewHeader; }  // 1: changed since it was read
  void setNewHeader(int flag) { mIsNewHeader = flag; }
  bool hasEncodedWord() const { return mHasEncodedWord; }
  const char* getDefaultCharset() const { return mDefaultCharset.get(); }
  void _setDefaultCharset(const char* charset);

  // The value as it stood; null without one.
  const char* getRawFieldValue() const;
  // The value decoded and converted to `charset`; the raw value when it cannot be converted. "us-ascii" always
  // gives the raw value. Null for a null `charset` or without a value.
  const char* getFieldValue(const char* charset);
  // The value decoded in the charset of its encoded words, of the last one when they differ; `charsetOut` names it.
  // Without encoded words the raw value and null.
  const char* getFieldValueEx(const char*& charsetOut);
  // Replaces the value as it stands (null: by none); does not count as a change. Of line breaks only folds, CR LF and
  // blanks before more text, are kept; others become a fold, at the end they go. kVoNoMemory: the old value stays.
  VoErrorCode setRawFieldValue(const char* raw);
  // Value and parameters change places with those of `other`; names, flags and owners stay. Takes no memory.
  void _exchangeContent(VoMsgHeaderField& other) noexcept;
  // Converts `value` from `srcCharset` (null: already in `dstCharset`) to `dstCharset` (null: stays) and stores it
  // encoded; a value too long for its line is divided, except in address fields, Received, MIME-Version and those of
  // the content. kVoBadArgument: `value` is null, `dstCharset` unknown, or the charset's name cannot stand in an
  // encoded word; kVoConversionFailed (also when the name leaves no room to divide); kVoEncodeFailed. A failure
  // changes nothing.
  VoErrorCode setFieldValue(const char* value, const char* srcCharset, const char* dstCharset);

  unsigned countParameter() const;
  const char* getParameterNameAt(unsigned i) const;
  const char* getRawParameterValueAt(unsigned i) const;
  const char* getParameterValueAt(unsigned i, const char* charset);
  const char* getParameterValueAtEx(unsigned i, const char*& charsetOut);
  const char* getRawParameterValue(const char* name) const;
  // Decoded and converted, RFC 2231 pieces put together; they win over a plain parameter of the same name.
  const char* getParameterValue(const char* name, const char* charset);
  const char* getParameterValueEx(const char* name, const char*& charsetOut);
  // The names of new parameters must be tokens (RFC 2045, section 5.1); one that is there already may be any. Others
  // are kVoBadArgument in all that follows.
  // Appends as it stands; does not count as a change. `isEncoded`: the value holds encoded words, else `charset` (may
  // be null) is its own. kVoBadArgument: `name` is null; kVoNoMemory.
  VoErrorCode appendRawParameter(const char* name, const char* value, bool isEncoded, const char* charset);
  // Converted and encoded as one word, as setFieldValue does. A null value makes a parameter without value.
  // kVoBadArgument: `name` is null, or `dstCharset` is unknown.
  VoErrorCode appendParameter(const char* name, const char* value, const char* srcCharset, const char* dstCharset);
  // `i` may equal the count. kVoOutOfRange above it.
  VoErrorCode insertParameterAt(unsigned i, const char* name, const char* value, const char* srcCharset,
                                const char* dstCharset);
  // Replaces the first parameter of that name, or appends one; its RFC 2231 pieces go. A null value appends a
  // parameter without value. A failure changes nothing.
  VoErrorCode setParameterValue(const char* name, const char* value, const char* srcCharset, const char* dstCharset);
  // kVoNoSuchHeader: the field never had a parameter; kVoOutOfRange, also once the last one is gone.
  VoErrorCode removeParameterAt(unsigned i);
  // Removes the first parameter of that name, or all its RFC 2231 pieces. Succeeds when there is none of that name;
  // kVoBadArgument: null, or the field never had a parameter.
  VoErrorCode removeParameter(const char* name);
  bool hasRFC2231(const char* name) const;
  // For the message parser, which corrects what it has read: of several parameters of that name the last one stays, and
  // all go. Linear; neither counts as a change.
  void _keepLastParameter(const char* name);
  void _dropParameters();

  // The steps of RFC 2231 assembly: numbers are decimal strings of any length, "" is none.
  static std::string getSequenceNo(const char* pieceName);
  static void _cutFirstZero(std::string& number);
  static bool _isSmallSequenceNo(const std::string& a, const std::string& b);
  static void _incrementString(std::string& number);
  // The piece with the number `seq`, else that with the smallest greater one; `seq` becomes its number, and
  // `*isEncodedOut` tells whether it is percent-encoded. `name*` comes before all others and empties `seq`. Null
  // without a piece.
  const char* getSeqRawParameterValue(const char* name, std::string& seq, bool* isEncodedOut) const;
  // Puts the pieces together and keeps the result, also in `charset`. False when there is nothing.
  bool getConvertRFC2231Value(const char* name, const char* charset, std::string& out);
  // The charset that the pieces declare. False when an unencoded piece comes first, or none declares any.
  bool getRfc2231Charset(const char* name, std::string& out) const;

 private:
  // What the encoded words of the value say, in the charset of the last of them.
  struct Decoded {
    bool tried = false;
    bool isDeclared = false;     // a word named the charset
    const char* text = nullptr;  // both within mValue; null: nothing was decoded
    const char* charset = nullptr;
  };

  friend class VoMsgEntityHeader;
  friend class vomsg::detail::HeaderBlockBuilder;

  VoErrorCode store(const char* raw, bool hasEncodedWord);
  VoErrorCode storeEncoded(const char* value, const char* srcCharset, const char* dstCharset);
  VoErrorCode setEncodedParameter(const char* name, const char* value, const char* srcCharset, const char* dstCharset);
  VoErrorCode addParameter(const char* name, const char* value, bool isEncoded, const char* charset);
  bool canTake(const char* parameterName) const;
  const char* logTag() const;
  bool decode();
  bool cleanJapanese();
  VoMsgHeaderParameter* find(const char* name) const;
  VoErrorCode insertEncoded(std::size_t at, const char* name, const char* value, const char* srcCharset,
                            const char* dstCharset);
  bool removePieces(const char* name);
  void changeParameters();

  int mIsNewHeader = 0;
  vomsg::detail::CString mName;
  std::unique_ptr<VoMsgMultiString> mValue;
  bool mHasEncodedWord = false;
  bool mValueMatters = false;  // somebody may have seen it
  Decoded mDecoded;
  vomsg::detail::CString mCleaned;  // Japanese text with its needed escape sequences only
  vomsg::detail::CString mDefaultCharset;
  bool mHasParameterList = false;  // once it had a parameter
  std::vector<std::unique_ptr<VoMsgHeaderParameter>> mParameterList;
  std::vector<std::unique_ptr<VoMsgHeaderParameter>> mRfc2231List;
  const VoMsgEntityHeader* mpBlock = nullptr;  // the block that holds the field, if any
};
