#include <algorithm>
#include <array>
#include <cstring>

#include "kernels/bilevel/diffusion.h"
#include "kernels/bilevel/functions.h"
#include "kernels/bilevel/plane_width.h"
#include "kernels/bilevel/redistribution.h"
#include "kernels/bilevel/samples.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// The bits of a byte as eight nibbles in memory order, each bit the highest of its nibble.
constexpr auto kSpread = [] {
  std::array<uint32_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte)
    for (unsigned bit = 0; bit < 8; ++bit)
      if ((byte & 0x80 >> bit) != 0) table[byte] |= (bit % 2 == 0 ? 0x80u : 0x08u) << bit / 2 * 8;
  return table;
}();

// Merges rows of bits for red, green and blue into a row of 4 bits per pixel: bits 3, 2 and 1.
void merge_bits(const std::array<std::span<uint8_t>, 3>& bits, std::span<uint8_t> row) {
  for (size_t i = 0; i < row.size(); i += 4) {
    const uint32_t pixels = kSpread[bits[0][i / 4]] | kSpread[bits[1][i / 4]] >> 1 | kSpread[bits[2][i / 4]] >> 2;
    std::memcpy(row.data() + i, &pixels, std::min<size_t>(4, row.size() - i));
  }
}

// Puts the bits of a wavefront's lanes into rows of 1 or, for three channels, 4 bits.
template <class Front>
class BitRows {
 public:
  BitRows(DibView result, Arena& arena) : result_(result) {
    for (auto& row : rows_) row = arena.take<uint8_t>(row_bytes(1, result.width()));
  }

  void write(const Front& front, int lane, int y) const {
    if constexpr (Front::kChannels == 1) {
      front.write_bits(0, lane, result_.row(y));
    } else {
      for (size_t channel = 0; channel < 3; ++channel) front.write_bits(channel, lane, rows_[channel]);
      merge_bits(rows_, result_.row(y));
    }
  }

 private:
  DibView result_;
  std::array<std::span<uint8_t>, 3> rows_;
};

template <class Method>
void diffuse(const Samples& samples, DibView result, Arena arena) {
  Wavefront<Method> front(result.width(), result.width(), arena);
  const BitRows<Wavefront<Method>> bits(result, arena);
  for (int first = 0; first < result.height(); first += kLanes) {
    const int rows = std::min(kLanes, result.height() - first);
    front.run(
        Method(), rows, [&](auto& to, int lane, int x, int count) { samples.read(first + lane, x, count, to); },
        [&](int lane, int x, std::span<const uint8_t> indices) {
          std::memcpy(result.row(first + lane).data() + x, indices.data(), indices.size());
        });
    if constexpr (!Method::kMakesIndices)
      for (int lane = 0; lane < rows; ++lane) bits.write(front, lane, first + lane);
  }
}

// Lane 0 of the first sixteen pairs the first row with itself; its bits are dropped.
template <int kPlanes, bool kHalves>
void redistribute(const Samples& samples, int plane_width, DibView result, Arena arena) {
  using Method = Redistribution<kPlanes, kHalves>;
  const int width = result.width(), height = result.height(), end = width + 1;
  Wavefront<Method> front(width, end, arena);
  const BitRows<Wavefront<Method>> bits(result, arena);
  uint8_t* planes[kPlanes];
  for (auto& plane : planes) plane = arena.take<uint8_t>(static_cast<size_t>(end)).data();
  samples.read(0, 0, std::min(end, plane_width), planes);
  for (size_t channel = 0; channel < kPlanes; ++channel)
    std::copy_n(planes[channel], std::min(end, plane_width), front.stream(2 * channel).data());

  for (int first = 0; first <= height; first += kLanes) {
    const int rows = std::min(kLanes, height + 1 - first);
    front.run(
        Method(height - first, plane_width == width), rows,
        [&](auto& to, int lane, int x, int count) {
          if (first + lane < height) samples.read(first + lane, x, std::min(count, plane_width - x), to);
        },
        [](int, int, std::span<const uint8_t>) {});
    for (int lane = first == 0 ? 1 : 0; lane < rows; ++lane) bits.write(front, lane, first + lane - 1);
  }
}

template <int kPlanes>
void dither_to_bits(const Samples& samples, int plane_width, DibView result, Dithering method, Arena arena) {
  switch (method) {
    case Dithering::kFloydSteinberg: return diffuse<FloydSteinberg<ToBits, kPlanes>>(samples, result, arena);
    case Dithering::kJarvisJudiceNinke: return diffuse<JarvisJudiceNinke<ToBits, kPlanes, 1, 3>>(samples, result, arena);
    case Dithering::kSmooth: return redistribute<kPlanes, false>(samples, plane_width, result, arena);
    case Dithering::kSharp: return redistribute<kPlanes, true>(samples, plane_width, result, arena);
  }
}

}  // namespace

void dither(ConstDibView source, std::span<const Rgb> colors, DibView result, Dithering method, std::span<uint8_t> scratch) {
  const Samples samples(source, colors);
  const int plane = static_cast<int>(plane_width(source.depth(), source.width()));
  const Arena arena(scratch);
  if (result.depth() == 1) return dither_to_bits<1>(samples, plane, result, method, arena);
  if (result.depth() == 4) return dither_to_bits<3>(samples, plane, result, method, arena);
  if (method == Dithering::kFloydSteinberg) return diffuse<FloydSteinberg<ToIndices<3>, 3>>(samples, result, arena);
  // One blue level more than there is: it counts as the lowest green. A quirk that is kept.
  return diffuse<JarvisJudiceNinke<ToIndices<4>, 3, 1, 3>>(samples, result, arena);
}

}  // namespace vorel::kernels::VOREL_LEVEL
