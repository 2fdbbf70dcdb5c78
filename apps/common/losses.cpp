#include "common/losses.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <unordered_set>

#include "common/formats.h"
#include "core/pixel.h"
#include "core/resolution.h"

namespace vorel::programs {
namespace {

bool keeps_resolution(const FileFormat& format) {
  return format.code != FormatCode::kGif && format.code != FormatCode::kTga && !is_pnm(format);
}

std::string shown_dpi(const DibHeader& header) {
  return fmt::format("{} x {} dpi", nearest_dpi(header.x_per_metre), nearest_dpi(header.y_per_metre));
}

bool has_more_colors_than(const Picture& picture, size_t most) {
  if (picture.depth() != 24) return false;
  std::unordered_set<uint32_t> seen;
  const DibView pixels = picture.pixels();
  uint32_t last = ~0u;
  for (int y = 0; y < pixels.height(); ++y)
    for (int x = 0; x < pixels.width(); ++x) {
      const uint32_t color = Pixel<24>::load(pixels.row(y).data(), x);
      if (color == std::exchange(last, color)) continue;
      if (seen.insert(color).second && seen.size() > most) return true;
    }
  return false;
}

// Fourth bytes that are not all the same may be opacity.
bool has_opacity(const Picture& picture) {
  if (picture.depth() != 32) return false;
  const DibView pixels = picture.pixels();
  const uint8_t first = pixels.row(0)[3];
  for (int y = 0; y < pixels.height(); ++y)
    for (int x = 0; x < pixels.width(); ++x)
      if (pixels.row(y)[static_cast<size_t>(x) * 4 + 3] != first) return true;
  return false;
}

}  // namespace

std::vector<std::string> losses_when_saved(const Picture& picture, const Saving& saving) {
  const FileFormat& format = *saving.format;
  const DibHeader& header = picture.header();
  if (format.code == FormatCode::kBitmap) return {};
  std::vector<std::string> losses;
  if (has_opacity(picture))
    losses.push_back(
        fmt::format("{} gets no opacity; save a Windows bitmap to keep the fourth byte of pixels", format.name));
  if (format.code == FormatCode::kGif && has_more_colors_than(picture, 256))
    losses.emplace_back("GIF keeps 256 of the picture's colours; choose another format to keep all");
  const bool is_stated = header.x_per_metre > 0 && header.y_per_metre > 0;
  if (is_stated && !keeps_resolution(format))
    losses.push_back(fmt::format("{} states no resolution, and {} is lost; choose another format to keep it", format.name,
                                 shown_dpi(header)));
  else if (is_stated && format.code == FormatCode::kCals &&
           nearest_dpi(header.x_per_metre) != nearest_dpi(header.y_per_metre))
    losses.push_back(fmt::format("CALS raster states one resolution, and {} becomes the first; choose another format",
                                 shown_dpi(header)));
  return losses;
}

}  // namespace vorel::programs
