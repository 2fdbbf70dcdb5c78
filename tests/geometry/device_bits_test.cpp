// Turning the bits of device bitmaps: both arrangements of planes, on a plain buffer.
#include "geometry/device_bits.h"

#include <gtest/gtest.h>

#include "support/dib.h"

using namespace vorel::geometry;
using test::Bytes;

namespace {

DeviceBitsFormat format_of(int width, int height, int planes, int depth) {
  return {width, height, (width * depth + 15) / 16 * 2, planes, depth};
}

// A device bitmap's bytes as far as it has any: those of a picture of bytes.
Bytes noise(const DeviceBitsFormat& format) {
  Bytes bits = test::noise(static_cast<int>(device_bits_size(format).value()), 1, 24);
  bits.erase(bits.begin(), bits.begin() + sizeof(BITMAPINFOHEADER));
  bits.resize(static_cast<size_t>(device_bits_size(format).value()));
  return bits;
}

Bytes turned(const DeviceBitsFormat& format, DeviceTurn turn, const Bytes& bits) {
  Bytes result(static_cast<size_t>(turned_bits_size(format, turn).value()));
  turn_device_bits(format, turn, bits, result);
  return result;
}

// Pixel (x, y) of a plane, y from the top; `blocks` tells how the planes lie.
uint32_t pixel(const Bytes& bits, const DeviceBitsFormat& format, bool blocks, int plane, int x, int y) {
  const int row = blocks ? plane * format.height + y : y * format.planes + plane;
  uint32_t value = 0;
  for (int bit = x * format.depth; bit < (x + 1) * format.depth; ++bit)
    value = value << 1 | (bits[static_cast<size_t>(row * format.width_bytes + bit / 8)] >> (7 - bit % 8) & 1u);
  return value;
}

std::pair<int, int> target(DeviceTurn turn, int x, int y, const DeviceBitsFormat& source) {
  const int from_right = source.width - 1 - x, from_bottom = source.height - 1 - y;
  switch (turn) {
    case DeviceTurn::kCounterClockwise: return {y, from_right};
    case DeviceTurn::kClockwise: return {from_bottom, x};
    case DeviceTurn::kHalf: return {from_right, from_bottom};
    case DeviceTurn::kTopBottom: return {x, from_bottom};
    case DeviceTurn::kLeftRight: return {from_right, y};
  }
  return {0, 0};
}

constexpr DeviceTurn kTurns[] = {DeviceTurn::kCounterClockwise, DeviceTurn::kClockwise, DeviceTurn::kHalf,
                                 DeviceTurn::kTopBottom, DeviceTurn::kLeftRight};

void expect_turned(const DeviceBitsFormat& format, bool blocks) {
  const Bytes bits = noise(format);
  for (DeviceTurn turn : kTurns) {
    const Bytes result = turned(format, turn, bits);
    const DeviceBitsFormat after = turned_format(format, turn);
    int wrong = 0;
    for (int plane = 0; plane < format.planes; ++plane)
      for (int y = 0; y < format.height; ++y)
        for (int x = 0; x < format.width; ++x) {
          const auto [to_x, to_y] = target(turn, x, y, format);
          const bool dropped = turn == DeviceTurn::kClockwise && format.depth == 1 && y == format.height - 1;
          const uint32_t expected = dropped ? 0 : pixel(bits, format, blocks, plane, x, y);
          wrong += pixel(result, after, blocks, plane, to_x, to_y) != expected;
        }
    EXPECT_EQ(wrong, 0) << "turn " << static_cast<int>(turn) << ", " << format.width << " x " << format.height << ", "
                        << format.planes << " planes of " << format.depth;
  }
}

TEST(DeviceBits, PlanesOfARowLieTogetherBelow64KB) {
  for (int depth : {1, 4, 8, 24}) {
    for (int planes : {1, 3, 4}) expect_turned(format_of(21, 13, planes, depth), false);
  }
  expect_turned(format_of(32'766, 1, 2, 8), false);  // 65,532 bytes
  expect_turned(format_of(20, 1, 1, 1), false);      // its one row is dropped when it turns clockwise
}

TEST(DeviceBits, EachPlaneIsABlockFrom64KBOn) {
  expect_turned(format_of(128, 256, 2, 8), true);  // 65,536 bytes
  expect_turned(format_of(1030, 400, 4, 1), true);
}

TEST(DeviceBits, TheSourceDecidesForTheResult) {
  // 65,532 bytes before the turn, 65,536 and more after it: rows of the result are padded to 16 bits.
  const DeviceBitsFormat format = format_of(32'766, 1, 2, 8);
  EXPECT_EQ(plane_order(format), PlaneOrder::kInterleavedRows);
  EXPECT_EQ(plane_order(turned_format(format, DeviceTurn::kClockwise)), PlaneOrder::kBlocks);
}

TEST(DeviceBits, DeeperPixelsAreNotCopiedButRowsAre) {
  const DeviceBitsFormat format = format_of(3, 2, 1, 32);
  const Bytes bits = noise(format);
  EXPECT_EQ(turned(format, DeviceTurn::kHalf, bits), Bytes(24));
  const Bytes mirrored = turned(format, DeviceTurn::kTopBottom, bits);
  EXPECT_EQ(Bytes(mirrored.begin(), mirrored.begin() + 12), Bytes(bits.begin() + 12, bits.end()));
}

TEST(DeviceBits, ThisPictureTurnsCounterClockwise) {
  // AB / CD / EF from the top becomes BDF / ACE.
  const DeviceBitsFormat format = format_of(2, 3, 1, 8);
  const Bytes result = turned(format, DeviceTurn::kCounterClockwise, {'A', 'B', 'C', 'D', 'E', 'F'});
  EXPECT_EQ(result, (Bytes{'B', 'D', 'F', 0, 'A', 'C', 'E', 0, 0, 0, 0, 0}));
}

}  // namespace
