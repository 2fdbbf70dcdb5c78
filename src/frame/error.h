// Error codes: values inside the library, numbers only where an export reports them.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <variant>

namespace vorel {

// The codes of the message table; the public header describes each. Codes of 500 and above have no message.
enum class Error : int32_t {
  kNone = 0,
  kMemory = 1,
  kCreateDc = 2,
  kOpenFile = 3,
  kFileIo = 4,
  kOpenClipboard = 5,
  kReceiveClipboard = 6,
  kCopyBits = 7,
  kParameter = 8,
  kFormat = 9,
  kCreatePalette = 10,
  kCreateBitmap = 11,
  kMappingMode = 12,
  kPixelBits = 13,
  kClipboardFormat = 14,
  kBitmapParameters = 15,
  kCreateMetafile = 16,
  kLock = 17,
  kCompressed = 18,
  kDibSize = 19,
  kDitherParameter = 20,
  kHeaderBits = 21,
  kQuentBits = 22,
  kPrinterDc = 23,
  kPrinterRaster = 24,
  kDisplayDc = 25,
  kSetAbortProc = 26,
  kStartDoc = 27,
  kNextBand = 28,
  kClipboard = 29,
  kNothingToDo = 30,
  kNothingToConvert = 31,

  // Reported to the caller of a turn by any angle.
  kTurnCompressed = 500,
  kTurnSize = 501,
  kTurnMemory = 503,
  kTurnLock = 505,
  kTurnParameter = 506,

  // Stored in the thread's code when combining fails.
  kCombineSizes = 501,
  kCombineMemory = 504,
  kCombineLock = 505,
  kCombineParameter = 506,
  kCombineCopy = 507,
  kCombineCompressed = 508,
  kCombineBitmap = 510,

  // The operation fails and no error report changes.
  kUnreported = -1,
};

// The outcome of an operation: its value, or an error.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::move(value)) {}  // NOLINT(google-explicit-constructor): `return value;` and
  Result(Error error) : state_(error) {}  // NOLINT(google-explicit-constructor): `return Error::kMemory;` both read well

  explicit operator bool() const { return state_.index() == 0; }
  T& operator*() { return std::get<0>(state_); }
  const T& operator*() const { return std::get<0>(state_); }
  T* operator->() { return &std::get<0>(state_); }
  const T* operator->() const { return &std::get<0>(state_); }
  Error error() const { return std::get<1>(state_); }

  // The same value, or another error.
  Result or_error(Error error) && {
    if (*this) return std::move(*this);
    return error;
  }

 private:
  std::variant<T, Error> state_;
};

// The value of an optional, or the given error if it is empty.
template <class T>
Result<T> or_error(std::optional<T> value, Error error) {
  if (!value) return error;
  return std::move(*value);
}

// The value of a Result; a failure returns its error from the function, which returns a Result too.
#define VOREL_TRY(expression)                       \
  __extension__({                                   \
    auto vorel_result = (expression);               \
    if (!vorel_result) return vorel_result.error(); \
    std::move(*vorel_result);                       \
  })

}  // namespace vorel
