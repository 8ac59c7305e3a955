// One parameter of a header field: `;name=value` (RFC 2045, section 5.1; RFC 2231).
#pragma once

#include <cstdio>
#include <memory>

#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgExport.h"
#include "vomsg/foundation/VoMsgMultiString.h"

// Strings that getters return stay valid until the value is replaced.
class VOMSG_API VoMsgHeaderParameter {
 public:
  // `isEncoded`: the value holds encoded words. Otherwise, with a `charset`, the value is text in that charset.
  VoMsgHeaderParameter(const char* name, const char* value, bool isEncoded, const char* charset);
  virtual ~VoMsgHeaderParameter();
  VoMsgHeaderParameter(const VoMsgHeaderParameter&) = delete;
  VoMsgHeaderParameter& operator=(const VoMsgHeaderParameter&) = delete;

  VoMsgHeaderParameter* newCopy() const;  // yours
  const char* getName() const { return mName.get(); }
  const char* getRawParameterValue() const;  // borrowed; null without a value
  // Decoded and converted; borrowed. Without a converter the raw value. Null for a null `charset`, without a value
  // and when decoding or conversion fails.
  // A failed conversion is reported once; later calls give what could be converted.
  const char* getParameterValue(const char* charset);
  // Decoded, in the charset of its encoded words, which `charsetOut` names (null without any).
  const char* getParameterValueEx(const char*& charsetOut);
  void setRawParameterValue(const char* value, bool isEncoded, const char* charset);
  bool isEncoded() const { return mIsEncoded; }
  void dumpHeaderParameter(std::FILE* out) const;

  // The value and its converted copies; borrowed, may be null.
  VoMsgMultiString* getMultiString() const { return mValue.get(); }

 private:
  vomsg::detail::CString mName;
  std::unique_ptr<VoMsgMultiString> mValue;
  bool mIsEncoded;
  std::unique_ptr<VoMsgString> mDecoded;  // what getParameterValueEx found
};
