// The bytes of one record of a metafile, and the DIB in it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

#include "core/byte_count.h"

namespace vorel::metafile {

// Offsets count from the record's beginning.
class Record {
 public:
  explicit Record(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  size_t size() const { return bytes_.size(); }
  bool has(ByteCount offset, ByteCount count) const { return offset + count <= ByteCount(bytes_.size()); }

  // 0 if the record ends before it.
  template <class Integer>
  Integer at(size_t offset) const {
    Integer value = 0;
    if (has(offset, sizeof value)) std::memcpy(&value, bytes_.data() + offset, sizeof value);
    return value;
  }

 private:
  std::span<const uint8_t> bytes_;
};

// Sizes of the parts of a DIB, as its header states them.
struct DibParts {
  ByteCount info;  // header, masks and colour table
  ByteCount row;   // 0 for a compressed picture
  ByteCount image;
  bool is_for_printers = false;  // a compression that screens do not draw
};

// Entries of the colour table, by the system's numbers: colours, or 16-bit indices.
enum class ColorUse : uint32_t { kColors = 0, kIndices = 1 };

// The parts of the DIB that begins at an offset. None for a header that is incomplete or that no player supports.
std::optional<DibParts> dib_parts(const Record& record, size_t offset, ColorUse use);

}  // namespace vorel::metafile
