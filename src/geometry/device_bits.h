// The bits of a device bitmap as GetBitmapBits returns them, rows from the top in one or more planes, and turning them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "core/view.h"
#include "platform/memory.h"

namespace vorel::geometry {

struct DeviceBitsFormat {
  int width, height;  // pixels
  int width_bytes;    // bytes in one row of one plane
  int planes;
  int depth;  // bits per pixel in one plane

  friend bool operator==(const DeviceBitsFormat&, const DeviceBitsFormat&) = default;
};

ByteCount device_bits_size(const DeviceBitsFormat& format);

// Where planes lie in memory. Small bitmaps keep the planes of a row together; from 64 KB on each plane is a block.
enum class PlaneOrder { kInterleavedRows, kBlocks };
PlaneOrder plane_order(const DeviceBitsFormat& format);

// The turns of device bitmaps, named by their visible effect; rows are stored top-down.
enum class DeviceTurn { kCounterClockwise, kHalf, kClockwise, kTopBottom, kLeftRight };

constexpr bool is_quarter(DeviceTurn turn) {
  return turn == DeviceTurn::kCounterClockwise || turn == DeviceTurn::kClockwise;
}

// The format after a turn: quarter turns swap the sides and pad rows to 16 bits.
DeviceBitsFormat turned_format(const DeviceBitsFormat& format, DeviceTurn turn);

// Bytes for the result's bits: quarter turns have 4 spare ones.
ByteCount turned_bits_size(const DeviceBitsFormat& format, DeviceTurn turn);

// `bits` holds at least device_bits_size bytes, `result` turned_bits_size bytes, all zero. The result has the plane order of
// the source, whatever its own size.
void turn_device_bits(const DeviceBitsFormat& format, DeviceTurn turn, std::span<const uint8_t> bits,
                      std::span<uint8_t> result);

}  // namespace vorel::geometry
