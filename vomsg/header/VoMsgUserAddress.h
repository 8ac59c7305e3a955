// One mailbox of an address header: the text as written and, on demand, its address and its display name. Strings it
// returns are its own; those of the name are valid until the default charset changes.
#pragma once

#include <cstdio>
#include <memory>
#include <string_view>

#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgExport.h"
#include "vomsg/foundation/VoMsgMultiString.h"

class VOMSG_API VoMsgUserAddress {
 public:
  // Copied; may be null. Line breaks, which would end the header line, become one space each with the blanks after
  // them.
  explicit VoMsgUserAddress(const char* raw);
  virtual ~VoMsgUserAddress();
  VoMsgUserAddress(const VoMsgUserAddress&) = delete;
  VoMsgUserAddress& operator=(const VoMsgUserAddress&) = delete;

  VoMsgUserAddress* copy() const;                                  // yours
  const char* getRawAddress() const { return mRawAddress.get(); }  // as split from the header value
  const char* getAddress();                                        // the bare address; the raw one without "<...>"
  const char* getRawName();                                        // the name as written, or ""
  // The name decoded and converted to `charset`; "" without a name, for a null `charset` and on failure.
  const char* getName(const char* charset);
  const char* getDefaultCharset() const { return mDefaultCharset.get(); }
  void _setDefaultCharset(const char* charset);  // charset of 8-bit names; copied, may be null
  void dumpUserAddress(std::FILE* out) const;

 private:
  bool _parseRawAddress();

  vomsg::detail::CString mRawAddress;
  vomsg::detail::CString mAddress;
  std::unique_ptr<VoMsgMultiString> mRawName;
  vomsg::detail::CString mDefaultCharset;
  enum class Parsed : unsigned char { notYet, failed, done } mParsed = Parsed::notYet;
};

namespace vomsg::detail {
// Cuts the next address off the front of an address header's value, at a "," or ";" that stands neither in a quoted
// string nor behind a "<" still without ">". `address` is the piece less its leading spaces (the last one less its
// leading tabs and line ends too), a view into the value; empty ones are passed over. `rest` shrinks. False when
// nothing is left. Linear over all calls.
bool cutAddress(std::string_view& rest, std::string_view& address);
}  // namespace vomsg::detail
