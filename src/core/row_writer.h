// Pixels of a row written one after another.
#pragma once

#include "core/pixel.h"

namespace vorel {

// Writes into a row of zeros, from a column on.
template <int kDepth>
class RowWriter {
 public:
  RowWriter(uint8_t* row, int column) : row_(row), column_(column) {}

  void put(uint32_t value) { Pixel<kDepth>::store(row_, column_++, value); }

 private:
  uint8_t* row_;
  int column_;
};

template <>
class RowWriter<1> {
 public:
  RowWriter(uint8_t* row, int column) : byte_(row + column / 8), mask_(0x80u >> column % 8) {}
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;
  ~RowWriter() {
    if (collected_ != 0) *byte_ = static_cast<uint8_t>(collected_);
  }

  void put(uint32_t value) {
    collected_ |= value != 0 ? mask_ : 0;
    mask_ >>= 1;
    if (mask_ != 0) return;
    *byte_++ = static_cast<uint8_t>(collected_);
    collected_ = 0;
    mask_ = 0x80;
  }

 private:
  uint8_t* byte_;
  uint32_t mask_, collected_ = 0;
};

}  // namespace vorel
