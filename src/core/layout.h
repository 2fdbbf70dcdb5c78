// Where colours and rows are in a packed DIB. Each operation has its own rule. The rules differ for headers of other than 40
// bytes, for colour tables of other than the depth's length, and for several planes.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/byte_count.h"
#include "core/header.h"
#include "core/view.h"

namespace vorel {

enum class RowsAt {
  kBehindStatedHeader,  // behind as many bytes as the header states, and its table
  kBehindTable,         // behind 40 bytes and the table
  kBehindFullTable,     // behind 40 bytes and as many colours as the depth has
  kBehindEveryValue,    // behind 40 bytes and 1 << depth colours, at depths without a table too
};

struct LayoutRule {
  RowsAt rows_at = RowsAt::kBehindStatedHeader;
  bool joins_planes = false;  // a row holds all planes, a pixel the bits of one plane
  uint32_t least_colors = 0;  // entries behind 40 bytes that can be read; the last ones may be rows
};

// The parts of a DIB in bytes.
struct Layout {
  ByteCount offset;  // from the block's start to the first row
  ByteCount stride;  // from one row to the next
  ByteCount rows;    // all of them; 0 for a picture without pixels
  ByteCount needed;  // bytes of the block that the rule covers

  static Layout of(const DibHeader& header, const LayoutRule& rule = {}) {
    Layout layout;
    switch (rule.rows_at) {
      case RowsAt::kBehindStatedHeader: layout.offset = bits_offset(header); break;
      case RowsAt::kBehindTable: layout.offset = kHeaderBytes + palette_bytes(header); break;
      case RowsAt::kBehindFullTable:
        layout.offset = kHeaderBytes + ByteCount(implied_colors(header.depth)) * sizeof(Rgb);
        break;
      case RowsAt::kBehindEveryValue: {
        const ByteCount values = header.depth < 32 ? ByteCount(uint64_t{1} << header.depth) : ByteCount(UINT64_MAX);
        layout.offset = kHeaderBytes + values * sizeof(Rgb);
        break;
      }
    }
    const uint32_t row_bits = (rule.joins_planes ? header.planes : 1u) * header.depth;
    if (has_pixels(header)) {
      layout.stride = row_stride(row_bits, header.width);
      layout.rows = layout.stride * static_cast<uint32_t>(header.height);
    }
    layout.needed = std::max(layout.offset + layout.rows, kHeaderBytes + ByteCount(rule.least_colors) * sizeof(Rgb));
    return layout;
  }
};

// The pixels of a complete DIB; an empty view if it has none.
template <class Byte>
BasicView<Byte> pixels_in(std::span<Byte> dib, const DibHeader& header, const Layout& layout) {
  if (layout.rows == ByteCount(0)) return {dib.data(), 0, 0, 0, header.depth};
  return {dib.data() + layout.offset.value(), static_cast<std::ptrdiff_t>(layout.stride.value()), header.width,
          header.height, header.depth};
}

// The first `count` colours right behind the 40-byte header. The DIB must have them.
template <class Byte>
auto colors_in(std::span<Byte> dib, size_t count) {
  using Color = std::conditional_t<std::is_const_v<Byte>, const Rgb, Rgb>;
  return std::span<Color>(reinterpret_cast<Color*>(dib.data() + kHeaderBytes), count);
}

}  // namespace vorel
