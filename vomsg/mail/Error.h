// How the modern face reports: a Result is a value or an Error, a Status is success or an Error. Nothing here throws
// unless the caller asks: orThrow() is the throwing twin of every operation, and it throws in the caller's code.
#pragma once

#include <cstdint>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoErrorText.h"

namespace vomsg {

// Why something failed: a result code of the library and, where it is known, the byte of the source it is about.
class Error {
 public:
  explicit Error(VoErrorCode code, std::optional<std::uint32_t> offset = std::nullopt) : mCode(code), mOffset(offset) {}

  VoErrorCode code() const { return mCode; }
  const char* sentence() const { return voErrorText(mCode); }      // one clause, see voErrorText
  std::optional<std::uint32_t> offset() const { return mOffset; }  // in the source of the message
  std::string text() const {                                       // sentence, code and offset
    char number[48];
    std::snprintf(number, sizeof number, " (0x%08X", static_cast<unsigned>(mCode));
    std::string all = std::string(sentence()) + number;
    if (mOffset) all += ", near byte " + std::to_string(*mOffset);
    return all + ")";
  }

 private:
  VoErrorCode mCode;
  std::optional<std::uint32_t> mOffset;
};

// What orThrow() throws.
class Failure : public std::exception {
 public:
  explicit Failure(Error error) : mError(error), mText(error.text()) {}
  const char* what() const noexcept override { return mText.c_str(); }
  const Error& error() const { return mError; }

 private:
  Error mError;
  std::string mText;
};

// Success or an Error.
class [[nodiscard]] Status {
 public:
  Status() = default;
  Status(Error error) : mError(error) {}  // NOLINT: failures return themselves
  static Status of(VoErrorCode code) { return voFailed(code) ? Status(Error(code)) : Status(); }

  bool ok() const { return !mError; }
  explicit operator bool() const { return ok(); }
  const Error& error() const { return *mError; }  // of a failure only
  VoErrorCode code() const { return mError ? mError->code() : kVoSuccess; }
#if defined(__cpp_exceptions)
  void orThrow() const {
    if (mError) throw Failure(*mError);
  }
#endif

 private:
  std::optional<Error> mError;
};

// A value or an Error. A failed reading may leave something behind: salvaged() is that, for those who want to look at
// damaged mail; everybody else sees a failure.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : mValue(std::move(value)) {}  // NOLINT: values and failures return themselves
  Result(Error error) : mError(error) {}         // NOLINT
  Result(Error error, T rest) : mValue(std::move(rest)), mError(error) {}

  bool ok() const { return !mError; }
  explicit operator bool() const { return ok(); }
  const Error& error() const { return *mError; }  // of a failure only
  VoErrorCode code() const { return mError ? mError->code() : kVoSuccess; }

  // Of a success only.
  T& operator*() & { return *mValue; }
  const T& operator*() const& { return *mValue; }
  T&& operator*() && { return std::move(*mValue); }
  T* operator->() { return &*mValue; }
  const T* operator->() const { return &*mValue; }
  T valueOr(T other) && { return ok() ? std::move(*mValue) : std::move(other); }
#if defined(__cpp_exceptions)
  T orThrow() && {
    if (mError) throw Failure(*mError);
    return std::move(*mValue);
  }
#endif

  // The value, or what a failure left of it; null when that is nothing.
  T* salvaged() { return mValue ? &*mValue : nullptr; }

 private:
  std::optional<T> mValue;
  std::optional<Error> mError;
};

}  // namespace vomsg
