// The header block of one entity: its fields, the addresses of From, To, Cc and Bcc, and how it is written back:
// unchanged blocks byte for byte, changed ones anew, folded at 76 columns (RFC 5322, section 2.1.1).
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgBoundary.h"
#include "vomsg/foundation/VoMsgExport.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/header/VoMsgHeaderMark.h"
#include "vomsg/header/VoMsgUserAddress.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
namespace vomsg::detail {
class HeaderBlockBuilder;
class HeaderLineWriter;
enum class HeaderName : std::uint8_t;
}  // namespace vomsg::detail

class VOMSG_API VoMsgEntityHeader {
 public:
  VoMsgEntityHeader();
  ~VoMsgEntityHeader();
  VoMsgEntityHeader(const VoMsgEntityHeader&) = delete;
  VoMsgEntityHeader& operator=(const VoMsgEntityHeader&) = delete;

  VoMsgEntityHeader* newCopy() const;  // deep; yours; an edited block stays edited
  void dumpEntityHeader(std::FILE* out) const;

  // Reads the block at the reader's position, to its empty line or to a delimiter in force (which is left to the
  // next reader). kVoReadFailed: no reader; kVoMalformed: a limit was passed, the fields so far stay. The reader
  // stands behind what was read.
  VoErrorCode parseHeaderPart(VoMsgBufferedReader* reader, const char* defaultCharset, VoMsgBoundaryList* boundaries);
  // One unfolded line without its terminator, for free(); null at the end of the data.
  char* getNextLine(VoMsgBufferedReader* reader);
  // Adds the field of one logical line. kVoMalformed: a limit was passed; kVoBadArgument: a line break in the name.
  VoErrorCode parseHeaderLine(const char* line, const char* defaultCharset);
  // A field of a structured header with its parameters; yours. Null when name or value is null.
  VoMsgHeaderField* createHeader(const char* name, const char* value, const char* defaultCharset);
  static bool isStructuredHeader(const char* name);

  unsigned getHeaderOffset() const { return mHeaderOffset; }
  unsigned getHeaderSize() const { return mHeaderSize; }
  void setHeaderRange(unsigned offset, unsigned size);

  unsigned countHeaders() const;
  VoMsgHeaderField* getHeaderAt(unsigned i) const;      // borrowed; null past the end
  VoMsgHeaderField* getHeader(const char* name) const;  // the first of that name; null for null
  // Sets the first field of that name, or appends one. `value` is in `srcCharset` and is stored in `dstCharset` (null:
  // stays). Of a list of addresses only the display names are encoded. A structured value may bring parameters; those
  // it does not name stay. kVoBadArgument: null, or no name for a new field, or an unknown `dstCharset`; else as
  // VoMsgHeaderField::setFieldValue. A failure changes nothing.
  VoErrorCode setHeaderValue(const char* name, const char* value, const char* srcCharset, const char* dstCharset);
  // The block takes the field over unless the call fails, which changes nothing. kVoBadArgument: null, or a name that
  // is new and not one of printable ASCII without blank and ":".
  VoErrorCode appendHeader(VoMsgHeaderField* field);
  // Appends a copy of a field that stands in another block, whatever its name. The rest as appendHeader.
  VoErrorCode _moveHeader(VoMsgHeaderField* field);
  VoErrorCode insertHeaderAt(VoMsgHeaderField* field, unsigned i);  // before the i-th; an empty list takes 0 only
  VoErrorCode removeHeaderAt(unsigned i);
  VoErrorCode removeHeader(const char* name);  // every field of that name; succeeds when there is none

  // Addresses by header name: "From", "To", "Cc" or "BCC". Other names: count 0, null, kVoBadArgument. The value of
  // the name's first field follows the list; a field is made when there is none. Addresses come back borrowed.
  unsigned countAddress(const char* name) const;
  VoMsgUserAddress* getAddressAt(const char* name, unsigned i) const;
  // Null is kVoBadArgument. The list takes an address object over unless the call fails, which changes nothing.
  VoErrorCode appendAddress(const char* name, const char* text);
  VoErrorCode appendAddress(const char* name, VoMsgUserAddress* address);
  // Before the i-th; an empty list takes 0 only. kVoOutOfRange.
  VoErrorCode insertAddressAt(const char* name, const char* text, unsigned i);
  VoErrorCode insertAddressAt(const char* name, VoMsgUserAddress* address, unsigned i);
  VoErrorCode removeAddressAt(const char* name, unsigned i);
  // Replaces value and list by `text` and the addresses in it.
  VoErrorCode setAddressList(const char* name, const char* text);
  // Cuts the list anew from the values of its fields, after one of these was changed by itself.
  VoErrorCode refreshAddressList(const char* name);

  // The block or a field must be written anew: a caller changed it or the parser marked it.
  bool isNewHeader() const;
  // A caller changed the block or a field of it; what the parser marked does not count.
  bool isEdited() const;
  void setEdited();
  // The fields so far were put together from unchanged ones, and nobody edited anything.
  void setUnedited();
  // The parser's mark: the first reason and the source offset of the line that caused it.
  void setMark(VoMsgHeaderMark mark, unsigned offset);
  VoMsgHeaderMark getMark() const { return mMark; }
  unsigned getMarkOffset() const { return mMarkOffset; }
  // Of several Content-Type fields in the source, one that was replaced said something else than the next.
  bool contentTypesDiffer() const { return mContentTypesDiffer; }

  // Who says the tag of the block's log lines, asked only when a line is written; both are borrowed.
  void _setLogOwner(void* owner, const char* (*tagOf)(void* owner)) {
    mpLogOwner = owner;
    mpTagOf = tagOf;
  }
  const char* _logTag() const { return mpTagOf ? mpTagOf(mpLogOwner) : ""; }

  bool isChild() const { return mIsChild; }
  void setChild(bool child) { mIsChild = child; }

  // Writes the block: anew when isNewHeader(), else from the source.
  VoErrorCode writeHeaderPart(VoMsgBufferedReader* reader, VoMsgBufferedWriter* writer);
  VoErrorCode writeHeaderPartFromSource(VoMsgBufferedReader* reader, VoMsgBufferedWriter* writer);
  VoErrorCode writeNewHeaderPart(VoMsgBufferedWriter* writer);

  // For the message parser: builds the fields of a block that surveyHeaderBlock has passed, given its bytes, without
  // testing the limits again (what they cut short stays short, so setChild() comes first); range and marks are set by
  // the caller. A failure, kVoNoMemory, leaves a block that is good for nothing.
  VoErrorCode parseSurveyedBlock(std::string_view block, const char* defaultCharset);

 private:
  friend class vomsg::detail::HeaderBlockBuilder;

  struct AddressList {
    std::vector<std::unique_ptr<VoMsgUserAddress>> items;
    std::string rest;              // what a limit left uncut
    mutable bool isAhead = false;  // changed, and the fields do not know yet
  };

  const AddressList* addressList(const char* name) const;  // null for other names
  AddressList& addresses(vomsg::detail::HeaderName name) { return mAddressLists[static_cast<std::size_t>(name)]; }
  std::size_t findHeader(std::string_view name) const;  // an index; the count when there is none
  void take(std::size_t at, std::unique_ptr<VoMsgHeaderField> field);
  VoErrorCode add(VoMsgHeaderField* field, std::size_t at, bool isNew = true);
  VoErrorCode setAddresses(const char* name, const char* list);
  VoErrorCode setStructured(const char* name, const char* value, const char* srcCharset, const char* dstCharset);
  VoErrorCode setText(const char* name, const char* value, const char* srcCharset, const char* dstCharset);
  VoErrorCode install(std::unique_ptr<VoMsgHeaderField> made);
  std::unique_ptr<VoMsgHeaderField> draftOf(const char* name) const;
  void splitAddresses(AddressList& into, vomsg::detail::HeaderName name, std::string_view value) const;
  AddressList addressesOfFields(vomsg::detail::HeaderName name) const;
  void followFields(vomsg::detail::HeaderName name);
  void makeAddressField(const char* name);
  VoErrorCode insertAddress(const char* name, std::unique_ptr<VoMsgUserAddress>& address, std::optional<unsigned> i);
  void settleAddresses(vomsg::detail::HeaderName name) const;  // without memory it throws, and nothing changes
  void settleAddresses() const;
  void writeAddresses(vomsg::detail::HeaderLineWriter& out, vomsg::detail::HeaderName name) const;

  unsigned mHeaderOffset = 0;
  unsigned mHeaderSize = 0;
  std::vector<std::unique_ptr<VoMsgHeaderField>> mpHeaderList;
  std::array<AddressList, 4> mAddressLists;  // From, To, Cc, Bcc
  bool mIsNewHeader = false;
  bool mIsChild = false;
  bool mIsEdited = false;
  bool mContentTypesDiffer = false;
  VoMsgHeaderMark mMark{};
  unsigned mMarkOffset = 0;
  void* mpLogOwner = nullptr;
  const char* (*mpTagOf)(void* owner) = nullptr;
};
