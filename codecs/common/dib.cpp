#include "common/dib.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "common/entry.h"

namespace codec {
namespace {

constexpr double kMetresPerInch = 0.0254;
constexpr uint64_t kMostBlockBytes = std::numeric_limits<int32_t>::max();

constexpr size_t implied_colors(int depth) { return depth <= 8 ? size_t{1} << depth : 0; }

// Bytes of a row with its padding. Fits 64 bits for every width of 32 bits.
constexpr uint64_t row_stride(int64_t width, int depth) {
  return (static_cast<uint64_t>(width) * static_cast<uint64_t>(depth) + 31) / 32 * 4;
}

bool is_dib_depth(int depth) { return depth == 1 || depth == 4 || depth == 8 || depth == 24; }

std::span<const uint8_t> color_bytes(const Colors& colors) {
  return {reinterpret_cast<const uint8_t*>(colors.data()), colors.size() * sizeof(RGBQUAD)};
}
std::span<uint8_t> color_bytes(Colors& colors) {
  return {reinterpret_cast<uint8_t*>(colors.data()), colors.size() * sizeof(RGBQUAD)};
}

template <unsigned kDepth>
uint8_t packed_byte(std::span<const uint8_t> indices) {
  constexpr unsigned kPerByte = 8 / kDepth, kMask = (1u << kDepth) - 1;
  unsigned byte = 0;
  for (unsigned i = 0; i < kPerByte; ++i) byte = byte << kDepth | (i < indices.size() ? indices[i] & kMask : 0);
  return static_cast<uint8_t>(byte);
}

// Whole bytes first, whose loops have no ends to look for.
template <unsigned kDepth>
void pack(std::span<const uint8_t> indices, std::span<uint8_t> row) {
  constexpr size_t kPerByte = 8 / kDepth;
  const size_t whole = indices.size() / kPerByte;
  for (size_t i = 0; i < whole; ++i) row[i] = packed_byte<kDepth>(indices.subspan(i * kPerByte).template first<kPerByte>());
  if (indices.size() % kPerByte != 0) row[whole] = packed_byte<kDepth>(indices.subspan(whole * kPerByte));
}

}  // namespace

Colors gray_ramp(int depth) {
  const int last = (1 << depth) - 1;
  Colors ramp;
  for (int i = 0; i <= last; ++i) ramp.push_back(color(i * 255 / last, i * 255 / last, i * 255 / last));
  return ramp;
}

bool same_colors(const Colors& a, const Colors& b) {
  return std::ranges::equal(
      a, b, [](RGBQUAD p, RGBQUAD q) { return p.rgbRed == q.rgbRed && p.rgbGreen == q.rgbGreen && p.rgbBlue == q.rgbBlue; });
}

bool is_gray_ramp(const SourceDib& dib) { return same_colors(dib.colors(), gray_ramp(dib.depth())); }

Resolution from_dpi(double x, double y) {
  const auto per_metre = [](double dpi) {
    const double value = std::round(dpi / kMetresPerInch);
    return value >= 1 && value <= std::numeric_limits<int>::max() ? static_cast<int>(value) : 0;
  };
  return {per_metre(x), per_metre(y)};
}

int nearest_dpi(int per_metre) { return per_metre <= 0 ? 0 : static_cast<int>(std::round(per_metre * kMetresPerInch)); }

int whole_dpi(int per_metre) {
  const int dpi = nearest_dpi(per_metre);
  return from_dpi(dpi, dpi).x == per_metre ? dpi : 0;
}

void check_claim(int64_t width, int64_t height, int bits_per_pixel, uint64_t file_bytes) {
  constexpr uint64_t kAlwaysFine = uint64_t{256} << 20;
  // No compression that is read here makes more of its bytes, but for blank pages, which kAlwaysFine has room for.
  constexpr uint64_t kMostExpansion = 1'100;
  if (width <= 0 || height <= 0) fail(IMG_E_FORMAT);
  if (width > std::numeric_limits<int32_t>::max() || height > std::numeric_limits<int32_t>::max()) fail(IMG_E_MEMORY);
  const uint64_t stride = row_stride(width, bits_per_pixel);
  const uint64_t most = std::max(kAlwaysFine, std::min(file_bytes, kMostBlockBytes) * kMostExpansion);
  if (stride > most / static_cast<uint64_t>(height)) fail(IMG_E_MEMORY);
}

NewDib::NewDib(const Layout& layout) {
  if (layout.width <= 0 || layout.height <= 0) fail(IMG_E_FORMAT);
  const size_t colors = implied_colors(layout.depth);
  const uint64_t stride = row_stride(layout.width, layout.depth);
  const uint64_t table = colors * sizeof(RGBQUAD);
  if (layout.width > std::numeric_limits<int32_t>::max() ||
      stride > kMostBlockBytes / static_cast<uint64_t>(layout.height)) {
    fail(IMG_E_MEMORY);
  }
  const uint64_t bytes = sizeof(BITMAPINFOHEADER) + table + stride * static_cast<uint64_t>(layout.height);
  if (bytes > kMostBlockBytes) fail(IMG_E_MEMORY);

  width_ = static_cast<int>(layout.width);
  height_ = static_cast<int>(layout.height);
  stride_ = static_cast<size_t>(stride);
  block_ = GlobalAlloc(GHND, static_cast<size_t>(bytes));
  auto* data = block_ == nullptr ? nullptr : static_cast<uint8_t*>(GlobalLock(block_));
  if (data == nullptr) {
    GlobalFree(block_);
    fail(IMG_E_MEMORY);
  }
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width_;
  header.biHeight = height_;
  header.biPlanes = 1;
  header.biBitCount = static_cast<uint16_t>(layout.depth);
  header.biSizeImage = static_cast<uint32_t>(stride * static_cast<uint64_t>(layout.height));
  header.biXPelsPerMeter = layout.resolution.x;
  header.biYPelsPerMeter = layout.resolution.y;
  header.biClrUsed = static_cast<uint32_t>(colors);
  std::memcpy(data, &header, sizeof header);
  table_ = {data + sizeof header, static_cast<size_t>(table)};
  set_colors(layout.colors);
  rows_ = table_.data() + table_.size();
}

NewDib::~NewDib() {
  if (block_ == nullptr) return;
  GlobalUnlock(block_);
  GlobalFree(block_);
}

void NewDib::set_colors(const Colors& colors) {
  const std::span<const uint8_t> bytes = color_bytes(colors);
  std::ranges::copy(bytes.first(std::min(bytes.size(), table_.size())), table_.begin());
}

HGLOBAL NewDib::release() {
  GlobalUnlock(block_);
  return std::exchange(block_, nullptr);
}

SourceDib::SourceDib(HGLOBAL dib) : block_(dib) {
  if (dib == nullptr) fail(IMG_E_PARAMETER);
  const auto* data = static_cast<const uint8_t*>(GlobalLock(dib));
  if (data == nullptr) fail(IMG_E_LOCK);
  try {
    read({data, GlobalSize(dib)});
  } catch (...) {
    GlobalUnlock(dib);
    throw;
  }
}

SourceDib::~SourceDib() { GlobalUnlock(block_); }

void SourceDib::read(std::span<const uint8_t> block) {
  if (block.size() < sizeof header_) fail(IMG_E_PARAMETER);
  std::memcpy(&header_, block.data(), sizeof header_);
  if (header_.biSize != sizeof header_) fail(IMG_E_PARAMETER);
  if (header_.biCompression != BI_RGB) fail(IMG_E_COMPRESSED);
  if (!is_dib_depth(depth())) fail(IMG_E_HEADER_BITS);
  // The lowest number has no positive counterpart.
  if (header_.biWidth <= 0 || header_.biHeight == 0 || header_.biHeight == std::numeric_limits<int32_t>::min())
    fail(IMG_E_DIB_SIZE);
  height_ = std::abs(header_.biHeight);

  const size_t implied = implied_colors(depth());
  const uint64_t table = header_.biClrUsed != 0 ? header_.biClrUsed : implied;
  const uint64_t rows_begin = sizeof header_ + table * sizeof(RGBQUAD);
  const uint64_t stride = row_stride(width(), depth());
  if (rows_begin > kMostBlockBytes || stride > (kMostBlockBytes - rows_begin) / static_cast<uint64_t>(height_))
    fail(IMG_E_MEMORY);
  stride_ = static_cast<size_t>(stride);
  const auto bytes = static_cast<size_t>(rows_begin) + stride_ * static_cast<size_t>(height_);
  if (bytes > block.size()) {
    completed_.assign(block.begin(), block.end());
    completed_.resize(bytes);
    block = completed_;
  }
  rows_ = block.data() + rows_begin;
  colors_.resize(implied);
  const std::span<const uint8_t> found = block.subspan(sizeof header_, static_cast<size_t>(table) * sizeof(RGBQUAD));
  const std::span<uint8_t> wanted = color_bytes(colors_);
  std::ranges::copy(found.first(std::min(found.size(), wanted.size())), wanted.begin());
}

std::span<const uint8_t> SourceDib::row_from_top(int y) const {
  const bool is_top_down = header_.biHeight < 0;
  return {rows_ + static_cast<size_t>(is_top_down ? y : height_ - 1 - y) * stride_, stride_};
}

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

}  // namespace codec
