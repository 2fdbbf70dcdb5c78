#include "geometry/device_bits.h"

#include <algorithm>

#include "kernels/turn/turn.h"

namespace vorel::geometry {
namespace {

constexpr uint32_t kBlockOrderFrom = 65'536;
constexpr uint32_t kSpareBytes = 4;

template <class Byte>
BasicView<Byte> plane_view(std::span<Byte> bits, const DeviceBitsFormat& format, PlaneOrder order, int plane) {
  const std::ptrdiff_t row = format.width_bytes;
  const bool interleaved = order == PlaneOrder::kInterleavedRows;
  Byte* first = bits.data() + plane * (interleaved ? row : row * format.height);
  return {first, interleaved ? row * format.planes : row, format.width, format.height, format.depth};
}

void turn_plane(ConstDibView source, DibView result, int width_bytes, DeviceTurn turn) {
  const int width = source.width();
  const int height = source.height();
  switch (turn) {
    case DeviceTurn::kCounterClockwise:
      return kernels::turn().quarter_turn(source, result,
                                          {.first_column = 0, .column_step = 1, .first_row = width - 1, .row_step = -1});
    case DeviceTurn::kClockwise: {
      // A quirk that is kept: at 1 bit the picture's bottom row is dropped and column 0 of the result stays zero.
      const ConstDibView carried = source.depth() == 1 ? source.first_rows(std::max(height - 1, 0)) : source;
      return kernels::turn().quarter_turn(carried, result,
                                          {.first_column = height - 1, .column_step = -1, .first_row = 0, .row_step = 1});
    }
    case DeviceTurn::kHalf: return kernels::turn().half_turn(source, result);
    case DeviceTurn::kLeftRight: return kernels::turn().mirror_left_right(source, result);
    case DeviceTurn::kTopBottom:
      return kernels::turn().mirror_top_bottom(source.byte_rows(width_bytes), result.byte_rows(width_bytes));
  }
}

}  // namespace

ByteCount device_bits_size(const DeviceBitsFormat& format) {
  return ByteCount(static_cast<uint32_t>(format.planes)) * static_cast<uint32_t>(format.height) *
         static_cast<uint32_t>(format.width_bytes);
}

PlaneOrder plane_order(const DeviceBitsFormat& format) {
  return device_bits_size(format) < ByteCount(kBlockOrderFrom) ? PlaneOrder::kInterleavedRows : PlaneOrder::kBlocks;
}

DeviceBitsFormat turned_format(const DeviceBitsFormat& format, DeviceTurn turn) {
  if (!is_quarter(turn)) return format;
  const int64_t row_bits = int64_t{format.depth} * format.height;
  return {.width = format.height,
          .height = format.width,
          .width_bytes = static_cast<int>((row_bits + 15) / 16 * 2),
          .planes = format.planes,
          .depth = format.depth};
}

ByteCount turned_bits_size(const DeviceBitsFormat& format, DeviceTurn turn) {
  return device_bits_size(turned_format(format, turn)) + (is_quarter(turn) ? kSpareBytes : 0);
}

void turn_device_bits(const DeviceBitsFormat& format, DeviceTurn turn, std::span<const uint8_t> bits,
                      std::span<uint8_t> result) {
  const PlaneOrder order = plane_order(format);
  const DeviceBitsFormat result_format = turned_format(format, turn);
  for (int plane = 0; plane < format.planes; ++plane)
    turn_plane(plane_view(bits, format, order, plane), plane_view(result, result_format, order, plane), format.width_bytes,
               turn);
}

}  // namespace vorel::geometry
