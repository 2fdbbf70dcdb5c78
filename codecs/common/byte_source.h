// Headers as bytes, and sequential reading of a file in memory.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "common/entry.h"

namespace codec {

static_assert(std::endian::native == std::endian::little, "headers are copied as they lie in files");

template <class Header>
std::span<const uint8_t> bytes_of(const Header& header) {
  static_assert(std::is_trivially_copyable_v<Header>);
  return {reinterpret_cast<const uint8_t*>(&header), sizeof header};
}

// Throws Failure at the end of the bytes.
class ByteSource {
 public:
  explicit ByteSource(std::span<const uint8_t> bytes) : rest_(bytes) {}

  std::span<const uint8_t> rest() const { return rest_; }

  std::span<const uint8_t> take(size_t count) {
    if (rest_.size() < count) fail(IMG_E_FORMAT);
    const auto taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }

  uint8_t take_byte() { return take(1)[0]; }

  template <class Header>
  Header take_header() {
    static_assert(std::is_trivially_copyable_v<Header>);
    Header header;
    std::memcpy(&header, take(sizeof header).data(), sizeof header);
    return header;
  }

 private:
  std::span<const uint8_t> rest_;
};

}  // namespace codec
