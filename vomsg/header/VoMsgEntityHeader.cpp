#include "vomsg/header/VoMsgEntityHeader.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"
#include "vomsg/header/VoMsgHeaderBlockBuilder.h"
#include "vomsg/header/VoMsgHeaderLimits.h"
#include "vomsg/header/VoMsgHeaderLines.h"
#include "vomsg/header/VoMsgHeaderName.h"

using vomsg::detail::equalNoCase;
using vomsg::detail::guarded;
using vomsg::detail::guardedOr;
using vomsg::detail::HeaderBlockBuilder;
using vomsg::detail::HeaderName;
using vomsg::detail::headerNameOf;
using vomsg::detail::isAddressName;
using vomsg::detail::viewOf;

namespace {

constexpr char kLogSource[] = "VoMsgEntityHeader";

HeaderName nameOf(const VoMsgHeaderField& field) { return headerNameOf(viewOf(field.getName())); }

// Room for one more, so that inserting it cannot fail.
template <class T>
void makeRoom(std::vector<T>& list) {
  if (list.size() == list.capacity()) list.reserve(list.size() * 2 + 4);
}

std::unique_ptr<VoMsgUserAddress> makeAddress(const char* text) {
  auto address = std::make_unique<VoMsgUserAddress>(text);
  if (!address->getRawAddress()) throw std::bad_alloc();
  return address;
}

}  // namespace

VoMsgEntityHeader::VoMsgEntityHeader() = default;
VoMsgEntityHeader::~VoMsgEntityHeader() = default;

VoMsgEntityHeader* VoMsgEntityHeader::newCopy() const {
  return guardedOr<VoMsgEntityHeader*>(nullptr, [this]() -> VoMsgEntityHeader* {
    settleAddresses();
    auto copy = std::make_unique<VoMsgEntityHeader>();
    for (const auto& field : mpHeaderList) {
      std::unique_ptr<VoMsgHeaderField> copied(field->newCopy());
      if (!copied) return nullptr;
      copied->setNewHeader(field->isNewHeader());
      copy->take(copy->mpHeaderList.size(), std::move(copied));
    }
    for (std::size_t i = 0; i < mAddressLists.size(); ++i) {
      copy->mAddressLists[i].rest = mAddressLists[i].rest;
      for (const auto& address : mAddressLists[i].items) {
        copy->mAddressLists[i].items.push_back(std::unique_ptr<VoMsgUserAddress>(address->copy()));
        if (!copy->mAddressLists[i].items.back()) return nullptr;
      }
    }
    copy->mHeaderOffset = mHeaderOffset;
    copy->mHeaderSize = mHeaderSize;
    copy->mIsNewHeader = mIsNewHeader;
    copy->mIsChild = mIsChild;
    copy->mIsEdited = mIsEdited;
    copy->mContentTypesDiffer = mContentTypesDiffer;
    copy->mMark = mMark;
    copy->mMarkOffset = mMarkOffset;
    return copy.release();
  });
}

void VoMsgEntityHeader::dumpEntityHeader(std::FILE* out) const {
  if (!out) return;
  static constexpr char kIndent[] = "    ";
  std::fprintf(out, "%smHeaderOffset     : D'%d\n", kIndent, static_cast<int>(mHeaderOffset));
  std::fprintf(out, "%smHeaderSize       : D'%d\n", kIndent, static_cast<int>(mHeaderSize));
  std::fprintf(out, "%smpHeaderList      : H'%.8x\n", kIndent,
               static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(&mpHeaderList)));
  for (const auto& field : mpHeaderList) field->dumpHeaderField(out);
}

// --- reading

VoErrorCode VoMsgEntityHeader::parseHeaderPart(VoMsgBufferedReader* reader, const char* defaultCharset,
                                               VoMsgBoundaryList* boundaries) {
  const VoErrorCode code = guarded([&] {
    if (!reader) return kVoReadFailed;
    settleAddresses();
    return HeaderBlockBuilder(*this, defaultCharset, HeaderBlockBuilder::Purpose::parse).readBlock(*reader, boundaries);
  });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::parseSurveyedBlock(std::string_view block, const char* defaultCharset) {
  const VoErrorCode code = guarded([&] {
    if (block.size() > UINT32_MAX) return kVoReadFailed;
    // The reader writes nothing; it merely shares its type with readers that own their buffer.
    VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(block.data())),
                             static_cast<unsigned>(block.size()));
    if (!block.empty() && !reader.open()) return kVoReadFailed;
    return HeaderBlockBuilder(*this, defaultCharset, HeaderBlockBuilder::Purpose::rebuild).readBlock(reader, nullptr);
  });
  return VO_LOGGED(_logTag(), code);
}

char* VoMsgEntityHeader::getNextLine(VoMsgBufferedReader* reader) {
  if (!reader) return nullptr;
  return guardedOr<char*>(nullptr, [&]() -> char* {
    std::string scratch;
    vomsg::detail::HeaderLines lines(*reader, scratch);
    if (!lines.nextLogical()) return nullptr;
    return vomsg::detail::copyCString(lines.text()).release();
  });
}

VoErrorCode VoMsgEntityHeader::parseHeaderLine(const char* line, const char* defaultCharset) {
  const VoErrorCode code = guarded([&] {
    if (!line) return kVoBadArgument;
    settleAddresses();
    return HeaderBlockBuilder(*this, defaultCharset, HeaderBlockBuilder::Purpose::parse).readLine(line, mHeaderOffset);
  });
  return VO_LOGGED(_logTag(), code);
}

VoMsgHeaderField* VoMsgEntityHeader::createHeader(const char* name, const char* value, const char* defaultCharset) {
  if (!name || !value) return nullptr;
  return guardedOr<VoMsgHeaderField*>(nullptr, [&] {
    return HeaderBlockBuilder(*this, defaultCharset, HeaderBlockBuilder::Purpose::parse)
        .makeStructured(name, value, mHeaderOffset);
  });
}

bool VoMsgEntityHeader::isStructuredHeader(const char* name) {
  return vomsg::detail::isStructuredName(headerNameOf(viewOf(name)));
}

void VoMsgEntityHeader::setHeaderRange(unsigned offset, unsigned size) {
  mHeaderOffset = offset;
  mHeaderSize = size;
}

// --- fields

unsigned VoMsgEntityHeader::countHeaders() const { return static_cast<unsigned>(mpHeaderList.size()); }

VoMsgHeaderField* VoMsgEntityHeader::getHeaderAt(unsigned i) const {
  if (i >= mpHeaderList.size()) return nullptr;
  return guardedOr<VoMsgHeaderField*>(nullptr, [&] {
    settleAddresses(nameOf(*mpHeaderList[i]));
    return mpHeaderList[i].get();
  });
}

VoMsgHeaderField* VoMsgEntityHeader::getHeader(const char* name) const {
  if (!name) return nullptr;
  return guardedOr<VoMsgHeaderField*>(nullptr, [&]() -> VoMsgHeaderField* {
    settleAddresses(headerNameOf(name));
    const std::size_t at = findHeader(name);
    return at < mpHeaderList.size() ? mpHeaderList[at].get() : nullptr;
  });
}

void VoMsgEntityHeader::take(std::size_t at, std::unique_ptr<VoMsgHeaderField> field) {
  VoMsgHeaderField& taken = *field;
  mpHeaderList.insert(mpHeaderList.begin() + static_cast<std::ptrdiff_t>(at), std::move(field));
  taken.mpBlock = this;
}

// Everything that takes memory is done before the block takes the field over.
VoErrorCode VoMsgEntityHeader::add(VoMsgHeaderField* field, std::size_t at, bool isNew) {
  const std::string_view text = viewOf(field->getName());
  if (!field->getName() || (isNew && !vomsg::detail::isFieldName(text) && findHeader(text) == mpHeaderList.size()))
    return kVoBadArgument;
  settleAddresses();
  makeRoom(mpHeaderList);
  const HeaderName name = headerNameOf(text);
  const auto place = mpHeaderList.begin() + static_cast<std::ptrdiff_t>(at);
  if (isAddressName(name)) {
    mpHeaderList.emplace(place, field);
    AddressList list;
    try {
      list = addressesOfFields(name);
    } catch (...) {
      static_cast<void>(mpHeaderList[at].release());
      mpHeaderList.erase(mpHeaderList.begin() + static_cast<std::ptrdiff_t>(at));
      throw;
    }
    addresses(name) = std::move(list);
  } else {
    mpHeaderList.emplace(place, field);
  }
  field->mpBlock = this;
  field->setNewHeader(1);
  setEdited();
  return kVoSuccess;
}

VoErrorCode VoMsgEntityHeader::appendHeader(VoMsgHeaderField* field) {
  const VoErrorCode code = guarded([&] { return field ? add(field, mpHeaderList.size()) : kVoBadArgument; });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::_moveHeader(VoMsgHeaderField* field) {
  const VoErrorCode code = guarded([&] { return field ? add(field, mpHeaderList.size(), false) : kVoBadArgument; });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::insertHeaderAt(VoMsgHeaderField* field, unsigned i) {
  const VoErrorCode code = guarded([&] {
    if (!field) return kVoBadArgument;
    return i < std::max<std::size_t>(mpHeaderList.size(), 1) ? add(field, i) : kVoOutOfRange;
  });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::removeHeaderAt(unsigned i) {
  const VoErrorCode code = guarded([&] {
    if (i >= mpHeaderList.size()) return kVoOutOfRange;
    settleAddresses();
    const HeaderName name = nameOf(*mpHeaderList[i]);
    std::unique_ptr<VoMsgHeaderField> gone = std::move(mpHeaderList[i]);
    mpHeaderList.erase(mpHeaderList.begin() + static_cast<std::ptrdiff_t>(i));
    if (isAddressName(name)) {
      try {
        addresses(name) = addressesOfFields(name);
      } catch (...) {  // there is still room for it
        mpHeaderList.insert(mpHeaderList.begin() + static_cast<std::ptrdiff_t>(i), std::move(gone));
        throw;
      }
    }
    setEdited();
    return kVoSuccess;
  });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::removeHeader(const char* name) {
  const VoErrorCode code = guarded([&] {
    if (!name) return kVoBadArgument;
    const auto gone = std::remove_if(mpHeaderList.begin(), mpHeaderList.end(), [name](const auto& field) {
      return field->getName() && equalNoCase(field->getName(), name);
    });
    if (gone == mpHeaderList.end()) return kVoSuccess;
    mpHeaderList.erase(gone, mpHeaderList.end());
    setEdited();
    if (isAddressName(headerNameOf(name))) addresses(headerNameOf(name)) = {};
    return kVoSuccess;
  });
  return VO_LOGGED(_logTag(), code);
}

std::size_t VoMsgEntityHeader::findHeader(std::string_view name) const {
  const auto at = std::find_if(mpHeaderList.begin(), mpHeaderList.end(), [name](const auto& field) {
    return field->getName() && equalNoCase(field->getName(), name);
  });
  return static_cast<std::size_t>(at - mpHeaderList.begin());
}

// --- addresses

unsigned VoMsgEntityHeader::countAddress(const char* name) const {
  const AddressList* const list = addressList(name);
  return list ? static_cast<unsigned>(list->items.size()) : 0;
}

VoMsgUserAddress* VoMsgEntityHeader::getAddressAt(const char* name, unsigned i) const {
  const AddressList* const list = addressList(name);
  return list && i < list->items.size() ? list->items[i].get() : nullptr;
}

VoErrorCode VoMsgEntityHeader::appendAddress(const char* name, const char* text) {
  const VoErrorCode code = guarded([&] {
    if (!addressList(name) || !text) return kVoBadArgument;
    auto address = makeAddress(text);
    return insertAddress(name, address, std::nullopt);
  });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::appendAddress(const char* name, VoMsgUserAddress* address) {
  std::unique_ptr<VoMsgUserAddress> owned(address);
  const VoErrorCode code =
      guarded([&] { return addressList(name) && address ? insertAddress(name, owned, std::nullopt) : kVoBadArgument; });
  static_cast<void>(owned.release());  // the list has taken it, or the caller keeps it
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::insertAddressAt(const char* name, const char* text, unsigned i) {
  const VoErrorCode code = guarded([&] {
    if (!addressList(name) || !text) return kVoBadArgument;
    auto address = makeAddress(text);
    return insertAddress(name, address, i);
  });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::insertAddressAt(const char* name, VoMsgUserAddress* address, unsigned i) {
  std::unique_ptr<VoMsgUserAddress> owned(address);
  const VoErrorCode code =
      guarded([&] { return addressList(name) && address ? insertAddress(name, owned, i) : kVoBadArgument; });
  static_cast<void>(owned.release());
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::removeAddressAt(const char* name, unsigned i) {
  const VoErrorCode code = guarded([&] {
    if (!addressList(name)) return kVoBadArgument;
    const HeaderName kind = headerNameOf(name);
    followFields(kind);
    AddressList& list = addresses(kind);
    if (i >= list.items.size()) return kVoOutOfRange;
    makeAddressField(name);
    list.items.erase(list.items.begin() + static_cast<std::ptrdiff_t>(i));
    list.isAhead = true;
    return kVoSuccess;
  });
  return VO_LOGGED(_logTag(), code);
}

VoErrorCode VoMsgEntityHeader::setAddressList(const char* name, const char* text) {
  const VoErrorCode code =
      guarded([&] { return addressList(name) && text ? setAddresses(name, text) : kVoBadArgument; });
  return VO_LOGGED(_logTag(), code);
}

// The first field of the name gets the value, later ones hold nothing more. All new values are made before one is set.
VoErrorCode VoMsgEntityHeader::setAddresses(const char* name, const char* text) {
  const HeaderName kind = headerNameOf(name);
  std::vector<std::unique_ptr<VoMsgHeaderField>> drafts;
  AddressList list;
  splitAddresses(list, kind, text);
  for (const auto& field : mpHeaderList) {
    if (nameOf(*field) != kind) continue;
    drafts.push_back(std::make_unique<VoMsgHeaderField>(nullptr, drafts.empty() ? text : ""));
    if (!drafts.back()->getRawFieldValue()) return kVoNoMemory;
  }
  std::unique_ptr<VoMsgHeaderField> made;
  if (drafts.empty()) {
    made = draftOf(name);
    if (!made || voFailed(made->store(text, viewOf(text).find("=?") != std::string_view::npos))) return kVoNoMemory;
    made->setNewHeader(1);
    take(mpHeaderList.size(), std::move(made));
  }
  auto draft = drafts.begin();
  for (const auto& field : mpHeaderList) {
    if (nameOf(*field) != kind || draft == drafts.end()) continue;
    if (draft == drafts.begin()) field->setNewHeader(1);
    field->_exchangeContent(**draft++);
  }
  addresses(kind) = std::move(list);
  setEdited();
  return kVoSuccess;
}

VoErrorCode VoMsgEntityHeader::refreshAddressList(const char* name) {
  const VoErrorCode code = guarded([&] {
    if (!addressList(name)) return kVoBadArgument;
    addresses(headerNameOf(name)) = addressesOfFields(headerNameOf(name));
    return kVoSuccess;
  });
  return VO_LOGGED(_logTag(), code);
}

const VoMsgEntityHeader::AddressList* VoMsgEntityHeader::addressList(const char* name) const {
  const HeaderName kind = headerNameOf(viewOf(name));
  return isAddressName(kind) ? &mAddressLists[static_cast<std::size_t>(kind)] : nullptr;
}

// Cuts addresses off `value` and appends them to `into`, which is or becomes the list of that name, until a list is
// longer than the limit allows: a hostile list is not turned into objects. What is left is remembered as text, so that
// an edit of the list does not lose it.
void VoMsgEntityHeader::splitAddresses(AddressList& into, HeaderName name, std::string_view value) const {
  const auto limits = vomsg::detail::HeaderLimits::of(mIsChild);
  bool isOtherTooLong = false;
  for (std::size_t i = 0; i < mAddressLists.size(); ++i)
    isOtherTooLong |= i != static_cast<std::size_t>(name) && limits.tooManyAddresses(mAddressLists[i].items.size());
  std::string text;
  std::string_view address;
  if (limits.tooManyAddresses(into.items.size())) isOtherTooLong = true;
  while (vomsg::detail::cutAddress(value, address)) {
    text.assign(address);
    into.items.push_back(makeAddress(text.c_str()));
    if (!isOtherTooLong && !limits.tooManyAddresses(into.items.size())) continue;
    if (!value.empty()) into.rest.append(into.rest.empty() ? "" : ", ").append(value);
    return;
  }
}

VoMsgEntityHeader::AddressList VoMsgEntityHeader::addressesOfFields(HeaderName name) const {
  AddressList list;
  for (const auto& field : mpHeaderList)
    if (nameOf(*field) == name) splitAddresses(list, name, viewOf(field->getRawFieldValue()));
  return list;
}

// A caller may have changed a field by itself. Before its list is edited, and overrules the field, it takes that in;
// a list that does say what its fields say keeps its objects.
void VoMsgEntityHeader::followFields(HeaderName name) {
  AddressList& list = addresses(name);
  if (list.isAhead) return;
  std::size_t i = 0;
  bool differs = false;
  for (const auto& field : mpHeaderList) {
    if (nameOf(*field) != name) continue;
    std::string_view rest = viewOf(field->getRawFieldValue());
    std::string_view address;
    while (!differs && (i < list.items.size() || list.rest.empty()) && vomsg::detail::cutAddress(rest, address))
      differs = i >= list.items.size() || address != viewOf(list.items[i++]->getRawAddress());
  }
  if (differs || i < list.items.size()) list = addressesOfFields(name);
}

// Makes the first field of that name when there is none, and marks it as changed.
void VoMsgEntityHeader::makeAddressField(const char* name) {
  const std::size_t at = findHeader(name);
  if (at == mpHeaderList.size()) {
    std::unique_ptr<VoMsgHeaderField> made = draftOf(name);
    if (!made) throw std::bad_alloc();
    take(at, std::move(made));
  }
  mpHeaderList[at]->setNewHeader(1);
  setEdited();
}

// Takes `address` over unless it fails. Without `i` at the end.
VoErrorCode VoMsgEntityHeader::insertAddress(const char* name, std::unique_ptr<VoMsgUserAddress>& address,
                                             std::optional<unsigned> i) {
  const HeaderName kind = headerNameOf(name);
  followFields(kind);
  AddressList& list = addresses(kind);
  if (i && *i >= std::max<std::size_t>(list.items.size(), 1)) return kVoOutOfRange;
  makeRoom(list.items);
  makeAddressField(name);
  const std::size_t at = i ? *i : list.items.size();
  list.items.insert(list.items.begin() + static_cast<std::ptrdiff_t>(at), std::move(address));
  list.isAhead = true;
  return kVoSuccess;
}

// Unites a changed list into the value of its first field; later fields of the name hold nothing more. Done when
// somebody looks, because a caller may append a million addresses.
void VoMsgEntityHeader::settleAddresses(HeaderName name) const {
  if (!isAddressName(name)) return;
  const AddressList& list = mAddressLists[static_cast<std::size_t>(name)];
  if (!list.isAhead) return;
  std::string text;
  const auto add = [&text](std::string_view part) { text.append(text.empty() ? "" : ", ").append(part); };
  for (const auto& address : list.items) add(viewOf(address->getRawAddress()));
  if (!list.rest.empty()) add(list.rest);
  bool isFirst = true;
  for (const auto& field : mpHeaderList) {
    if (nameOf(*field) != name) continue;
    const char* const value = std::exchange(isFirst, false) ? text.c_str() : "";
    if (voFailed(field->store(value, viewOf(value).find("=?") != std::string_view::npos))) throw std::bad_alloc();
  }
  list.isAhead = false;
}

void VoMsgEntityHeader::settleAddresses() const {
  for (std::size_t i = 0; i < mAddressLists.size(); ++i)
    if (mAddressLists[i].isAhead) settleAddresses(static_cast<HeaderName>(i));
}

// --- state

// A field that came or went may have been the Content-Type.
void VoMsgEntityHeader::setEdited() {
  mIsNewHeader = mIsEdited = true;
  vomsg::detail::noteTreeChange();
}

bool VoMsgEntityHeader::isNewHeader() const { return mIsNewHeader || isEdited(); }

bool VoMsgEntityHeader::isEdited() const {
  return mIsEdited || std::any_of(mpHeaderList.begin(), mpHeaderList.end(),
                                  [](const auto& field) { return field->isNewHeader() != 0; });
}

void VoMsgEntityHeader::setUnedited() {
  mIsEdited = false;
  for (const auto& field : mpHeaderList) field->setNewHeader(0);
}

void VoMsgEntityHeader::setMark(vomsg::detail::HeaderMark mark, unsigned offset) {
  mIsNewHeader = true;
  if (mMark != vomsg::detail::HeaderMark::none) return;
  mMark = mark;
  mMarkOffset = offset;
}

// --- writing; the anew part is in VoMsgHeaderBlockWriter.cpp

VoErrorCode VoMsgEntityHeader::writeHeaderPart(VoMsgBufferedReader* reader, VoMsgBufferedWriter* writer) {
  return isNewHeader() ? writeNewHeaderPart(writer) : writeHeaderPartFromSource(reader, writer);
}

VoErrorCode VoMsgEntityHeader::writeHeaderPartFromSource(VoMsgBufferedReader* reader, VoMsgBufferedWriter* writer) {
  const VoErrorCode code = guarded([&] {
    return reader && writer ? vomsg::detail::copyRange(*reader, *writer, mHeaderOffset, mHeaderSize) : kVoBadArgument;
  });
  return VO_LOGGED(_logTag(), code);
}
