#include "geometry/dib_turn.h"

#include <algorithm>
#include <utility>

#include "kernels/turn/turn.h"

namespace vorel {
namespace {

// Every result has room behind its pixels for the one that the counter-clockwise turn writes past the last row.
constexpr uint32_t kSpareBytes = 4;

constexpr bool is_quarter(DibTurn turn) { return turn == DibTurn::kClockwise || turn == DibTurn::kCounterClockwise; }

// Rows are as long as all planes together, pixels as long as one plane has bits.
uint32_t row_bits(const DibHeader& header) { return uint32_t{header.planes} * header.depth; }

ByteCount stored_stride(const DibHeader& header) { return row_stride(row_bits(header), header.width); }

ByteCount stored_image(const DibHeader& header) { return stored_stride(header) * static_cast<uint32_t>(header.height); }

DibHeader quarter_turned_header(DibHeader header) {
  std::swap(header.width, header.height);
  std::swap(header.x_per_metre, header.y_per_metre);
  header.image_bytes = static_cast<uint32_t>(stored_image(header).value());
  return header;
}

// The pixels of a DIB that is whole.
template <class Byte>
BasicView<Byte> view_of(std::span<Byte> dib, const DibHeader& header) {
  return {FindDIBBits(dib.data(), header), static_cast<std::ptrdiff_t>(stored_stride(header).value()), header.width,
          header.height, header.depth};
}

void move_pixels(ConstDibView source, DibView result, DibTurn turn) {
  const int width = source.width();
  const int height = source.height();
  switch (turn) {
    case DibTurn::kClockwise:
      return kernels::turn().quarter_turn(source, result,
                                          {.first_column = 0, .column_step = 1, .first_row = width - 1, .row_step = -1});
    case DibTurn::kCounterClockwise:
      // One column further right than the picture asks for: column 0 stays empty, and source row 0 goes to the column past
      // the last, which is padding, the next row's first pixel, or the spare bytes. Callers count on it.
      return kernels::turn().quarter_turn(source, result.with_width(height + 1),
                                          {.first_column = height, .column_step = -1, .first_row = 0, .row_step = 1});
    case DibTurn::kHalf: return kernels::turn().half_turn(source, result);
    case DibTurn::kLeftRight: return kernels::turn().mirror_left_right(source, result);
    case DibTurn::kTopBottom: {
      const int whole_row = static_cast<int>(source.stride());
      return kernels::turn().mirror_top_bottom(source.byte_rows(whole_row), result.byte_rows(whole_row));
    }
  }
}

}  // namespace

Result<OwnedDib> turned(const LockedDib& source, DibTurn turn) {
  const DibHeader& header = source.header();
  if (header.size < kHeaderBytes || header.width < 0 || header.height < 0) return Error::kUnreported;

  const DibHeader result_header = is_quarter(turn) ? quarter_turned_header(header) : header;
  auto result = OwnedDib::allocate(bits_offset(result_header) + stored_image(result_header) + kSpareBytes);
  if (!result) return Error::kUnreported;
  const auto whole = source.complete(bits_offset(header) + stored_image(header));
  if (!whole) return Error::kUnreported;

  std::ranges::copy(whole->bytes().first(static_cast<size_t>(bits_offset(header).value())), result->bytes().begin());
  write_header(result->bytes(), result_header);
  // Rows without length, as those without planes, hold no pixels.
  const bool has_pixels = header.height > 0 && stored_stride(header) != ByteCount(0);
  if (has_pixels) move_pixels(view_of(whole->bytes(), header), view_of(result->bytes(), result_header), turn);
  return result;
}

}  // namespace vorel
