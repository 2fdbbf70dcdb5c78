// Sizes in bytes that cannot wrap.
#pragma once

#include <cstdint>
#include <limits>

namespace vorel {

// A number of bytes that saturates instead of wrapping, so that sizes can be written as plain formulas.
class ByteCount {
 public:
  constexpr ByteCount(uint64_t value = 0) : value_(value) {}  // NOLINT(google-explicit-constructor): formulas mix in numbers

  constexpr uint64_t value() const { return value_; }
  // No block is larger: a 32-bit process cannot have one, and both builds refuse the same pictures.
  constexpr bool fits_block() const { return value_ <= kMostBlockBytes; }

  friend constexpr ByteCount operator+(ByteCount a, ByteCount b) {
    return a.value_ > kTooMany - b.value_ ? ByteCount(kTooMany) : ByteCount(a.value_ + b.value_);
  }
  friend constexpr ByteCount operator*(ByteCount a, ByteCount b) {
    return b.value_ != 0 && a.value_ > kTooMany / b.value_ ? ByteCount(kTooMany) : ByteCount(a.value_ * b.value_);
  }
  friend constexpr auto operator<=>(ByteCount, ByteCount) = default;

 private:
  static constexpr uint64_t kTooMany = std::numeric_limits<uint64_t>::max();
  static constexpr uint64_t kMostBlockBytes = std::numeric_limits<int32_t>::max();

  uint64_t value_;
};

}  // namespace vorel
