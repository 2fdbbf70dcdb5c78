#include "core/packing.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vorel {
namespace {

template <unsigned kDepth>
uint8_t packed_byte(std::span<const uint8_t> indices) {
  constexpr unsigned kPerByte = 8 / kDepth, kMask = (1u << kDepth) - 1;
  unsigned byte = 0;
  for (unsigned i = 0; i < kPerByte; ++i) byte = byte << kDepth | (i < indices.size() ? indices[i] & kMask : 0);
  return static_cast<uint8_t>(byte);
}

// Whole bytes first: their loop has a constant length.
template <unsigned kDepth>
void pack(std::span<const uint8_t> indices, std::span<uint8_t> row) {
  constexpr size_t kPerByte = 8 / kDepth;
  const size_t whole = indices.size() / kPerByte;
  for (size_t i = 0; i < whole; ++i) row[i] = packed_byte<kDepth>(indices.subspan(i * kPerByte).template first<kPerByte>());
  if (indices.size() % kPerByte != 0) row[whole] = packed_byte<kDepth>(indices.subspan(whole * kPerByte));
}

}  // namespace

void pack_indices(std::span<const uint8_t> indices, int depth, std::span<uint8_t> row) {
  switch (depth) {
    case 1: return pack<1>(indices, row);
    case 4: return pack<4>(indices, row);
    default: std::ranges::copy(indices, row.begin());
  }
}

void unpack_indices(std::span<const uint8_t> row, int depth, std::span<uint8_t> indices) {
  if (depth == 8) {
    std::ranges::copy(row.first(indices.size()), indices.begin());
    return;
  }
  const size_t per_byte = 8u / static_cast<unsigned>(depth);
  const unsigned mask = (1u << depth) - 1;
  for (size_t x = 0; x < indices.size(); ++x) {
    const auto shift = static_cast<unsigned>(depth) * (per_byte - 1 - x % per_byte);
    indices[x] = static_cast<uint8_t>(row[x / per_byte] >> shift & mask);
  }
}

void swap_red_and_blue(std::span<uint8_t> row, int width) {
  for (size_t i = 0; i < static_cast<size_t>(width) * 3; i += 3) std::swap(row[i], row[i + 2]);
}

}  // namespace vorel
