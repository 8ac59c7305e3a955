#include "vomsg/charset/convert/VoMsgIcuHandle.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <mutex>
#include <new>
#include <utility>

#include "vomsg/charset/convert/VoMsgIcuPieces.h"

namespace vomsg::detail {

class IcuConverter {
 public:
  IcuConverter(std::string_view name, IcuSetup setup, UConverter* converter)
      : mpConverter(converter), mSetup(setup), mLength(std::min(name.size(), sizeof mName + 1)) {
    if (isNameKept()) name.copy(mName, sizeof mName);
  }
  ~IcuConverter() { ucnv_close(mpConverter); }
  IcuConverter(const IcuConverter&) = delete;
  IcuConverter& operator=(const IcuConverter&) = delete;

  UConverter& get() { return *mpConverter; }
  IcuSetup setup() const { return mSetup; }
  bool isNameKept() const { return mLength <= sizeof mName; }
  bool is(std::string_view name, IcuSetup setup) const {
    return setup == mSetup && std::string_view(mName, mLength) == name;
  }

 private:
  UConverter* mpConverter;
  IcuSetup mSetup;
  std::size_t mLength;
  char mName[40];
};

namespace {

bool mayReachIcu(std::string_view name) {
  return !name.empty() && std::none_of(name.begin(), name.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || c == '/' || c == '\\';
  });
}

// What the bytes are worth as replacements.
constexpr auto kReplacementUnits = [] {
  std::array<char16_t, 256> units{};
  for (std::size_t byte = 0; byte < units.size(); ++byte) units[byte] = static_cast<char16_t>(byte);
  return units;
}();

// What ICU calls at invalid input; the context points to the unit to write for it.
void U_CALLCONV writeReplacement(const void* context, UConverterToUnicodeArgs* args, const char*, int32_t,
                                 UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;  // a reset or the end, no character
  *status = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(args, static_cast<const char16_t*>(context), 1, 0, status);
}

void applySetup(UConverter* converter, IcuSetup setup) {
  UErrorCode status = U_ZERO_ERROR;
  if (setup.invalid == IcuSetup::kStop)
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  else if (setup.invalid >= 0)
    ucnv_setToUCallBack(converter, writeReplacement, &kReplacementUnits[static_cast<unsigned char>(setup.invalid)],
                        nullptr, nullptr, &status);
  status = U_ZERO_ERROR;
  if (setup.unknown == IcuSetup::kStop) {
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  } else if (setup.unknown >= 0) {
    const char byte = static_cast<char>(setup.unknown);
    ucnv_setSubstChars(converter, &byte, 1, &status);
  }
}

// ICU takes at most 2^31 - 1 bytes a call.
constexpr std::size_t kLongestInput = std::size_t{1} << 24;

IcuStep::State stateOf(UErrorCode status, bool isAllGiven) {
  if (status == U_BUFFER_OVERFLOW_ERROR) return IcuStep::more;
  return U_FAILURE(status) ? IcuStep::failed : isAllGiven ? IcuStep::done : IcuStep::more;
}

// What waits for its next user. Constant at load and never destroyed, because static objects that go late convert, too.
class IdleConverters {
 public:
  constexpr IdleConverters() = default;

  IcuHandle take(std::string_view name, IcuSetup setup) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    for (IcuConverter*& slot : mIdle)
      if (slot && slot->is(name, setup)) {
        IcuHandle taken(slot);
        slot = nullptr;
        return taken;
      }
    return nullptr;
  }

  // The one that has to make room for `converter`, perhaps itself; null when there was room.
  IcuConverter* put(IcuConverter* converter) noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mIsClosed) return converter;
    for (IcuConverter*& slot : mIdle)
      if (!slot) {
        slot = converter;
        return nullptr;
      }
    std::swap(mIdle[mOldest], converter);
    mOldest = (mOldest + 1) % mIdle.size();
    return converter;
  }

  void close() noexcept {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsClosed = true;
    for (IcuConverter*& slot : mIdle) delete std::exchange(slot, nullptr);
  }

 private:
  static constexpr std::size_t kMost = 24;  // some hundred bytes each

  std::mutex mMutex;
  std::array<IcuConverter*, kMost> mIdle{};
  std::size_t mOldest = 0;
  bool mIsClosed = false;
};

constinit IdleConverters idleConverters;

}  // namespace

void IcuReturn::operator()(IcuConverter* converter) const noexcept {
  if (converter->isNameKept()) {
    ucnv_reset(&converter->get());
    converter = idleConverters.put(converter);
  }
  delete converter;
}

IcuHandle openIcu(const char* name, IcuSetup setup) noexcept {
  if (!name) return nullptr;
  if (IcuHandle idle = idleConverters.take(name, setup)) return idle;
  if (!mayReachIcu(name)) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  UConverter* const converter = ucnv_open(name, &status);
  // Warnings are negative and harmless: an ambiguous alias opens all the same.
  if (U_FAILURE(status)) return nullptr;
  ucnv_setFallback(converter, false);
  applySetup(converter, setup);
  IcuHandle opened(new (std::nothrow) IcuConverter(name, setup, converter));
  if (!opened) ucnv_close(converter);
  return opened;
}

void closeIdleIcu() noexcept { idleConverters.close(); }

void resetIcu(IcuConverter& converter) noexcept { ucnv_reset(&converter.get()); }

IcuSetup setupOf(const IcuConverter& converter) noexcept { return converter.setup(); }

int maxBytesPerChar(IcuConverter& converter) noexcept { return ucnv_getMaxCharSize(&converter.get()); }

bool isIcuUtf8(IcuConverter& converter) noexcept { return ucnv_getType(&converter.get()) == UCNV_UTF8; }

IcuStep decodeStep(IcuConverter& from, std::string_view& bytes, bool last, char16_t* to, std::size_t room) {
  const std::string_view now = bytes.substr(0, kLongestInput);
  const bool isAll = now.size() == bytes.size();
  const char* at = now.data();
  char16_t* out = to;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_toUnicode(&from.get(), &out, to + room, &at, now.data() + now.size(), nullptr, last && isAll, &status);
  bytes.remove_prefix(static_cast<std::size_t>(at - now.data()));
  return {stateOf(status, isAll), static_cast<std::size_t>(out - to)};
}

IcuStep encodeStep(IcuConverter& to, std::u16string_view& units, bool last, char* out, std::size_t room) {
  const char16_t* at = units.data();
  char* end = out;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_fromUnicode(&to.get(), &end, out + room, &at, units.data() + units.size(), nullptr, last, &status);
  units.remove_prefix(static_cast<std::size_t>(at - units.data()));
  return {stateOf(status, true), static_cast<std::size_t>(end - out)};
}

IcuStep transcodeStep(IcuConverter& from, IcuConverter& to, IcuPivot& pivot, std::string_view& bytes, bool last,
                      char* out, std::size_t room) {
  if (bytes.empty()) bytes = "";  // with an address, which ICU insists on here
  const std::string_view now = bytes.substr(0, kLongestInput);
  const bool isAll = now.size() == bytes.size();
  const char* at = now.data();
  char* end = out;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_convertEx(&to.get(), &from.get(), &end, out + room, &at, now.data() + now.size(), pivot.units, &pivot.source,
                 &pivot.target, std::end(pivot.units), false, last && isAll, &status);
  bytes.remove_prefix(static_cast<std::size_t>(at - now.data()));
  return {stateOf(status, isAll), static_cast<std::size_t>(end - out)};
}

bool decodeWithIcu(IcuConverter& converter, std::string_view bytes, std::u16string& text) {
  resetIcu(converter);
  return decodePieces(converter, bytes, true,
                      [&](const char16_t* piece, std::size_t count, bool) { text.append(piece, count); });
}

bool encodeWithIcu(IcuConverter& converter, std::u16string_view text, std::string& bytes) {
  resetIcu(converter);
  return encodePiece(converter, text, true, [&](std::string_view block) { bytes.append(block); });
}

}  // namespace vomsg::detail
