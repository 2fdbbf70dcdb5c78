#include "tiff/page.h"

#include <algorithm>
#include <array>

namespace codec {
namespace {

constexpr double kCentimetresPerInch = 2.54;

Resolution resolution_of(const TiffHandle& tiff) {
  const auto unit = tiff.tag<uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) return {};
  const double per_inch = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
  return from_dpi(tiff.tag<float>(TIFFTAG_XRESOLUTION, 0) * per_inch, tiff.tag<float>(TIFFTAG_YRESOLUTION, 0) * per_inch);
}

// Some scanners omit the tag.
uint16_t photometric_of(const TiffHandle& tiff, unsigned samples) {
  const auto compression = tiff.tag<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  const bool is_fax = compression >= COMPRESSION_CCITTRLE && compression <= COMPRESSION_CCITTFAX4;
  return tiff.tag<uint16_t>(TIFFTAG_PHOTOMETRIC, samples >= 3 ? PHOTOMETRIC_RGB
                                                 : is_fax     ? PHOTOMETRIC_MINISWHITE
                                                              : PHOTOMETRIC_MINISBLACK);
}

// Colours have 16 bits per component, but some writers store 8.
Colors colors_of(const TiffHandle& tiff, unsigned bits) {
  std::array<uint16_t*, 3> maps{};
  tiff.check(TIFFGetField(tiff.get(), TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]) != 0);
  if (std::ranges::count(maps, nullptr) != 0) fail(IMG_E_MEMORY);  // memory was short
  const size_t count = size_t{1} << bits;
  const bool has_bytes = std::ranges::all_of(
      maps, [&](const uint16_t* map) { return std::all_of(map, map + count, [](int v) { return v < 256; }); });
  const int shift = has_bytes ? 0 : 8;
  Colors colors;
  for (size_t i = 0; i < count; ++i) colors.push_back(color(maps[0][i] >> shift, maps[1][i] >> shift, maps[2][i] >> shift));
  return colors;
}

bool is_color(Rgb color, int level) { return color.red == level && color.green == level && color.blue == level; }

// The values of a component of this depth, scaled to 0 to `last`, or reversed.
std::array<uint8_t, 256> stretched(unsigned bits, int last, bool is_reversed = false) {
  std::array<uint8_t, 256> values{};
  const int count = 1 << std::min(bits, 8u);
  for (int i = 0; i < count; ++i) {
    const int value = (i * last + (count - 1) / 2) / (count - 1);
    values[static_cast<size_t>(i)] = static_cast<uint8_t>(is_reversed ? last - value : value);
  }
  return values;
}

// Adds the first alpha sample, if there is one.
void add_coverage(const TiffHandle& tiff, TiffPage& page) {
  uint16_t count = 0;
  const uint16_t* kinds = nullptr;
  if (TIFFGetField(tiff.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0 || count >= page.samples) return;
  const uint16_t* found = std::find_if(
      kinds, kinds + count, [](int kind) { return kind == EXTRASAMPLE_ASSOCALPHA || kind == EXTRASAMPLE_UNASSALPHA; });
  if (found == kinds + count) return;
  page.components.push_back({.sample = page.samples - count + static_cast<unsigned>(found - kinds),
                             .action = *found == EXTRASAMPLE_ASSOCALPHA ? Action::kPremultipliedCoverage : Action::kCoverage,
                             .values = stretched(page.bits, 255)});
}

bool has_coverage(const TiffPage& page) { return page.components.size() > 1; }

void plan_gray(const TiffHandle& tiff, TiffPage& page, bool is_reversed) {
  page.components.push_back({});
  add_coverage(tiff, page);
  const bool is_blended = has_coverage(page);
  const int depth = page.bits == 1 && !is_blended ? 1 : (page.bits == 2 || page.bits == 4) && !is_blended ? 4 : 8;
  page.picture.depth = depth;
  page.picture.colors = gray_ramp(depth);
  page.components[0].values = stretched(page.bits, (1 << depth) - 1, is_reversed);
}

void plan_palette(const TiffHandle& tiff, TiffPage& page) {
  if (page.bits > 8) fail(IMG_E_FORMAT);
  page.colors = colors_of(tiff, page.bits);
  page.components.push_back({});
  add_coverage(tiff, page);
  if (has_coverage(page)) page.components[0].action = Action::kLookUp;
  page.picture.depth = has_coverage(page) ? 24 : depth_for_colors(page.colors.size());
  // Black comes first.
  const bool is_reversed = page.bits == 1 && is_color(page.colors[0], 255) && is_color(page.colors[1], 0);
  if (is_reversed) std::swap(page.colors[0], page.colors[1]);
  page.picture.colors = page.colors;
  page.components[0].values = stretched(page.bits, static_cast<int>(page.colors.size()) - 1, is_reversed);
}

void plan_channels(TiffPage& page, bool are_inks) {
  page.picture.depth = 24;
  for (unsigned sample = 0; sample < 3; ++sample)
    page.components.push_back({.sample = sample,
                               .action = Action::kChannel,
                               .channel = 2 - sample,
                               .values = stretched(page.bits, 255, are_inks)});
}

void plan_rgb(const TiffHandle& tiff, TiffPage& page) {
  if (page.samples < 3) fail(IMG_E_FORMAT);
  plan_channels(page, false);
  add_coverage(tiff, page);
}

void plan_inks(const TiffHandle& tiff, TiffPage& page) {
  const auto inks = tiff.tag<uint16_t>(TIFFTAG_INKSET, INKSET_CMYK);
  if (page.samples < 4 || inks != INKSET_CMYK) fail(IMG_E_FORMAT);
  plan_channels(page, true);
  page.components.push_back({.sample = 3, .action = Action::kDarken, .values = stretched(page.bits, 255, true)});
  add_coverage(tiff, page);
}

// The a* and b* are signed numbers, or count from -128 as in ICC profiles.
void plan_lab(TiffPage& page, bool counts_from_lowest) {
  if (page.samples < 3 || (page.bits != 8 && page.bits != 16)) fail(IMG_E_FORMAT);
  page.is_lab = true;
  plan_channels(page, false);
  if (counts_from_lowest) return;
  for (const size_t sample : {1, 2})
    for (uint8_t& value : page.components[sample].values) value ^= 0x80;
}

// The JPEG codec converts its own colours to RGB; others are left to the library's conversion.
void plan_luminance(const TiffHandle& tiff, TiffPage& page) {
  const auto compression = tiff.tag<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  page.picture.depth = 24;
  if (compression != COMPRESSION_JPEG || page.has_planes || page.samples != 3 || page.bits != 8) return;
  tiff.check(TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB) != 0);
  plan_channels(page, false);
}

void plan(const TiffHandle& tiff, TiffPage& page) {
  switch (photometric_of(tiff, page.samples)) {
    case PHOTOMETRIC_MINISWHITE: return plan_gray(tiff, page, true);
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MASK: return plan_gray(tiff, page, false);
    case PHOTOMETRIC_PALETTE: return plan_palette(tiff, page);
    case PHOTOMETRIC_RGB: return plan_rgb(tiff, page);
    case PHOTOMETRIC_SEPARATED: return plan_inks(tiff, page);
    case PHOTOMETRIC_CIELAB: return plan_lab(page, false);
    case PHOTOMETRIC_ICCLAB: return plan_lab(page, true);
    case PHOTOMETRIC_YCBCR: return plan_luminance(tiff, page);
    default: page.picture.depth = 24;
  }
}

SampleKind kind_of(const TiffHandle& tiff) {
  switch (tiff.tag<uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)) {
    case SAMPLEFORMAT_UINT:
    case SAMPLEFORMAT_VOID: return SampleKind::kCount;
    case SAMPLEFORMAT_INT: return SampleKind::kSigned;
    case SAMPLEFORMAT_IEEEFP: return SampleKind::kFloat;
    default: fail(IMG_E_FORMAT);
  }
}

std::optional<Range> stated_range(const TiffHandle& tiff) {
  Range range;
  if (TIFFGetField(tiff.get(), TIFFTAG_SMINSAMPLEVALUE, &range.low) == 0 ||
      TIFFGetField(tiff.get(), TIFFTAG_SMAXSAMPLEVALUE, &range.high) == 0 || !(range.low < range.high))
    return std::nullopt;
  return range;
}

void plan_samples(const TiffHandle& tiff, TiffPage& page) {
  if (page.components.empty()) return;
  page.kind = kind_of(tiff);
  if (page.kind == SampleKind::kCount) {
    if (page.bits > 16 && (page.bits > 64 || page.bits % 8 != 0)) fail(IMG_E_FORMAT);
    return;
  }
  if (page.is_lab || !page.colors.empty() || !is_known_number(page.kind, page.bits)) fail(IMG_E_FORMAT);
  page.range = stated_range(tiff);
}

// Tiles decode in full, even if little of them is in the picture.
void check_size(const TiffPage& page, uint64_t file_bytes) {
  constexpr unsigned kMostBits = 1 << 24;
  const unsigned converted_bits = page.components.empty() ? 32 : static_cast<unsigned>(page.picture.depth);
  const unsigned bits = std::clamp(page.bits * page.samples, converted_bits, kMostBits);
  const auto claim = [&](int64_t width, int64_t height) { check_claim(width, height, static_cast<int>(bits), file_bytes); };
  const auto whole_tiles = [](int64_t length, int64_t tile) { return (length + tile - 1) / tile * tile; };
  claim(page.picture.width, page.picture.height);
  if (!page.has_tiles) return;
  if (page.tile_width == 0 || page.tile_height == 0) fail(IMG_E_FORMAT);
  claim(whole_tiles(page.picture.width, page.tile_width), whole_tiles(page.picture.height, page.tile_height));
  // Each tile must begin at a byte of the DIB's row.
  if (page.tile_width < page.picture.width && page.tile_width % 8 != 0 && page.picture.depth < 8) fail(IMG_E_FORMAT);
}

// Strips and tiles may share bytes, but a small file with very many references to one long strip would take hours.
void check_data(const TiffHandle& tiff, const TiffPage& page, uint64_t file_bytes) {
  constexpr uint64_t kAlwaysFine = uint64_t{16} << 20, kMostUses = 64, kMostFileBytes = uint64_t{1} << 56;
  uint64_t rest = kAlwaysFine + kMostUses * std::min(file_bytes, kMostFileBytes);
  const uint32_t count = page.has_tiles ? TIFFNumberOfTiles(tiff.get()) : TIFFNumberOfStrips(tiff.get());
  for (uint32_t i = 0; i < count; ++i) {
    const uint64_t bytes = std::min(TIFFGetStrileByteCount(tiff.get(), i), file_bytes);
    if (bytes > rest) fail(IMG_E_FORMAT);
    rest -= bytes;
  }
}

}  // namespace

TiffPage read_tags(const TiffHandle& tiff, uint64_t file_bytes) {
  TiffPage page;
  page.picture.width = tiff.tag<uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
  page.picture.height = tiff.tag<uint32_t>(TIFFTAG_IMAGELENGTH, 0);
  page.picture.resolution = resolution_of(tiff);
  page.orientation = tiff.tag<uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  page.bits = tiff.tag<uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
  page.samples = tiff.tag<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
  if (page.bits == 0 || page.samples == 0) fail(IMG_E_FORMAT);
  page.has_planes =
      page.samples > 1 && tiff.tag<uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  page.has_tiles = TIFFIsTiled(tiff.get()) != 0;
  page.tile_width = tiff.tag<uint32_t>(TIFFTAG_TILEWIDTH, 0);
  page.tile_height = tiff.tag<uint32_t>(TIFFTAG_TILELENGTH, 0);
  plan(tiff, page);
  plan_samples(tiff, page);
  page.picture.sample_bits = static_cast<int>(page.bits);
  page.picture.has_opacity = std::ranges::any_of(page.components, is_coverage);
  check_size(page, file_bytes);
  check_data(tiff, page, file_bytes);
  return page;
}

}  // namespace codec
