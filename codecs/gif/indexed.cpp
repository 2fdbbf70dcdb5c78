#include "gif/indexed.h"

#include <array>
#include <gif_lib.h>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "common/entry.h"

namespace codec::gif {
namespace {

constexpr size_t kMostColors = 256;

size_t pixels_of(const SourceDib& dib) { return static_cast<size_t>(dib.width()) * static_cast<size_t>(dib.height()); }

// Calls visit(blue, green, red) for each pixel from the top, until it returns false.
template <class Visit>
bool for_each_pixel(const SourceDib& dib, Visit visit) {
  for (int y = 0; y < dib.height(); ++y) {
    const uint8_t* pixel = dib.row_from_top(y).data();
    for (int x = 0; x < dib.width(); ++x, pixel += 3)
      if (!visit(pixel[0], pixel[1], pixel[2])) return false;
  }
  return true;
}

// None if there are too many colours.
std::optional<Indexed> with_all_colors(const SourceDib& dib) {
  Indexed picture;
  std::unordered_map<int, uint8_t> index_of;
  const bool fits = for_each_pixel(dib, [&](uint8_t blue, uint8_t green, uint8_t red) {
    const auto [entry, is_new] =
        index_of.try_emplace(blue | green << 8 | red << 16, static_cast<uint8_t>(picture.colors.size()));
    if (is_new && picture.colors.size() == kMostColors) return false;
    if (is_new) picture.colors.push_back(color(red, green, blue));
    picture.indices.push_back(entry->second);
    return true;
  });
  if (!fits) return std::nullopt;
  return picture;
}

Indexed with_picked_colors(const SourceDib& dib) {
  static std::mutex quantizer;  // giflib's sort key is a static variable
  const size_t pixels = pixels_of(dib);
  std::vector<uint8_t> red, green, blue;
  for (auto* plane : {&red, &green, &blue}) plane->reserve(pixels);
  for_each_pixel(dib, [&](uint8_t b, uint8_t g, uint8_t r) {
    red.push_back(r), green.push_back(g), blue.push_back(b);
    return true;
  });
  Indexed picture{{}, std::vector<uint8_t>(pixels)};
  std::array<GifColorType, kMostColors> picked{};
  int count = kMostColors;
  const std::scoped_lock lock(quantizer);
  if (GifQuantizeBuffer(static_cast<unsigned>(dib.width()), static_cast<unsigned>(dib.height()), &count, red.data(),
                        green.data(), blue.data(), picture.indices.data(), picked.data()) == GIF_ERROR)
    fail(IMG_E_MEMORY);
  for (int i = 0; i < count; ++i) picture.colors.push_back(color(picked[i].Red, picked[i].Green, picked[i].Blue));
  return picture;
}

}  // namespace

Indexed indexed(const SourceDib& dib) {
  auto picture = with_all_colors(dib);
  return picture ? std::move(*picture) : with_picked_colors(dib);
}

}  // namespace codec::gif
