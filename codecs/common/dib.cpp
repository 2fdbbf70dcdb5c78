#include "common/dib.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "common/describe.h"
#include "common/entry.h"

namespace codec {
namespace {

constexpr int64_t kMostPixels = std::numeric_limits<int32_t>::max();  // per side

// Turns a failure of the library's into the module's exception.
template <class Value>
Value value_of(vorel::Result<Value> result) {
  if (!result) fail(static_cast<ImgErrorCode>(result.error()));
  return std::move(*result);
}
template <class Value>
Value value_of(std::optional<Value> value, ImgErrorCode otherwise) {
  if (!value) fail(otherwise);
  return std::move(*value);
}

bool is_dib_depth(int depth) { return depth == 1 || depth == 4 || depth == 8 || depth == 24; }

vorel::DibHeader header_of(const Description& description) {
  if (description.width <= 0 || description.height <= 0) fail(IMG_E_FORMAT);
  if (description.width > kMostPixels || description.height > kMostPixels) fail(IMG_E_MEMORY);
  const auto depth = static_cast<uint16_t>(description.depth);
  vorel::DibHeader header{.width = static_cast<int32_t>(description.width),
                          .height = static_cast<int32_t>(description.height),
                          .depth = depth,
                          .x_per_metre = description.resolution.x,
                          .y_per_metre = description.resolution.y,
                          .colors_used = vorel::implied_colors(depth)};
  const vorel::ByteCount rows = vorel::rows_bytes(header);
  if (!rows.fits_block()) fail(IMG_E_MEMORY);
  header.size = vorel::kHeaderBytes;
  header.planes = 1;
  header.image_bytes = static_cast<uint32_t>(rows.value());
  return header;
}

// A row with its padding.
template <class Byte>
std::span<Byte> whole_row(vorel::BasicView<Byte> pixels, int y) {
  return pixels.byte_rows(static_cast<int>(pixels.stride())).row(y);
}

vorel::LockedDib locked(HGLOBAL dib) {
  if (dib == nullptr) fail(IMG_E_PARAMETER);
  return value_of(vorel::LockedDib::lock(dib), IMG_E_LOCK);
}

void check_source(const vorel::DibHeader& header) {
  if (header.size != vorel::kHeaderBytes) fail(IMG_E_PARAMETER);
  if (header.compression != vorel::Compression::kNone) fail(IMG_E_COMPRESSED);
  if (!is_dib_depth(header.depth)) fail(IMG_E_HEADER_BITS);
  // The lowest number has no positive counterpart.
  if (header.width <= 0 || header.height == 0 || header.height == std::numeric_limits<int32_t>::min()) fail(IMG_E_DIB_SIZE);
}

vorel::DibHeader upright(vorel::DibHeader header) {
  check_source(header);
  header.height = std::abs(header.height);
  return header;
}

}  // namespace

Colors gray_ramp(int depth) {
  Colors ramp(size_t{1} << depth);
  vorel::write_even_grays(ramp);
  return ramp;
}

bool same_colors(const Colors& a, const Colors& b) {
  return std::ranges::equal(a, b, [](Rgb p, Rgb q) { return p.red == q.red && p.green == q.green && p.blue == q.blue; });
}

bool is_gray_ramp(const SourceDib& dib) { return same_colors(dib.colors(), gray_ramp(dib.depth())); }

void check_claim(int64_t width, int64_t height, int bits_per_pixel, uint64_t file_bytes) {
  constexpr uint64_t kAlwaysFine = uint64_t{256} << 20, kMostFileBytes = std::numeric_limits<int32_t>::max();
  // No supported compression expands its bytes further, except for blank pages, which fit kAlwaysFine.
  constexpr uint64_t kMostExpansion = 1'100;
  if (width <= 0 || height <= 0) fail(IMG_E_FORMAT);
  if (width > kMostPixels || height > kMostPixels) fail(IMG_E_MEMORY);
  const auto stride = vorel::row_stride(static_cast<uint32_t>(bits_per_pixel), static_cast<int32_t>(width));
  const uint64_t most = std::max(kAlwaysFine, std::min(file_bytes, kMostFileBytes) * kMostExpansion);
  if (stride * static_cast<uint64_t>(height) > vorel::ByteCount(most)) fail(IMG_E_MEMORY);
}

void offer(const Description& description) {
  ImgDescription* const wanted = wanted_description();
  if (wanted == nullptr) return;
  const vorel::DibHeader header = header_of(description);
  std::memcpy(&wanted->header, &header, sizeof header);
  wanted->sampleBits = description.sample_bits;
  wanted->hasOpacity = description.has_opacity ? TRUE : FALSE;
  throw Described{};
}

LoadedDib::LoadedDib(const Description& description)
    : dib_([&] {
        offer(description);
        const vorel::DibHeader header = header_of(description);
        return value_of(vorel::NewDib::make(header, header.image_bytes));
      }()) {
  set_colors(description.colors);
}

LoadedDib::LoadedDib(LoadedDib&& other) noexcept = default;
LoadedDib::~LoadedDib() = default;

std::span<uint8_t> LoadedDib::row_from_top(int y) const { return whole_row(pixels(), height() - 1 - y); }

void LoadedDib::set_colors(const Colors& colors) {
  const std::span<Rgb> table = dib_.colors();
  std::copy_n(colors.begin(), std::min(colors.size(), table.size()), table.begin());
}

SourceDib::SourceDib(HGLOBAL dib)
    : lock_(locked(dib)),
      header_(upright(lock_.header())),
      layout_(vorel::Layout::of(header_)),
      bytes_(value_of(lock_.complete(layout_.needed), IMG_E_MEMORY)),
      colors_(vorel::implied_colors(header_.depth)) {
  const size_t stated = vorel::DIBNumColors(header_);
  std::ranges::copy(vorel::colors_in(bytes_.bytes(), std::min(stated, colors_.size())), colors_.begin());
}

std::span<const uint8_t> SourceDib::row_from_top(int y) const {
  const bool is_top_down = lock_.header().height < 0;
  return whole_row(vorel::pixels_in(bytes_.bytes(), header_, layout_), is_top_down ? y : height() - 1 - y);
}

}  // namespace codec
