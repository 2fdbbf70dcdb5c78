// TIFF files made by hand.
#pragma once

#include <map>
#include <vector>

#include "support/dib.h"

namespace test {

inline constexpr uint16_t kWidth = 256, kHeight = 257, kBits = 258, kCompression = 259, kPhotometric = 262, kFillOrder = 266,
                          kOffset = 273, kOrientation = 274, kSamples = 277, kRowsPerStrip = 278, kByteCount = 279,
                          kUnit = 296, kColorMap = 320, kTileWidth = 322, kTileLength = 323, kTileOffset = 324,
                          kTileByteCount = 325, kExtraSamples = 338, kSubsampling = 530, kSampleFormat = 339,
                          kSmallest = 340, kLargest = 341;

using Tags = std::map<uint16_t, std::vector<uint32_t>>;

inline void put(Bytes& bytes, uint32_t value, int width) {
  for (int i = 0; i < width; ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
}

// A file of one page: pixels from offset 8 on, then the directory, then lists of values. Single values have 32 bits, values of
// lists 16.
inline Bytes tiff_file(const Tags& tags, Bytes pixels) {
  pixels.resize((pixels.size() + 1) / 2 * 2);
  Bytes file = {'I', 'I', 42, 0};
  const auto directory = static_cast<uint32_t>(8 + pixels.size());
  put(file, directory, 4);
  file.insert(file.end(), pixels.begin(), pixels.end());
  put(file, static_cast<uint32_t>(tags.size()), 2);
  Bytes lists;
  for (const auto& [tag, values] : tags) {
    const bool is_list = values.size() > 2;
    put(file, tag, 2);
    put(file, values.size() > 1 ? 3 : 4, 2);
    put(file, static_cast<uint32_t>(values.size()), 4);
    if (is_list) {
      put(file, directory + static_cast<uint32_t>(6 + tags.size() * 12 + lists.size()), 4);
      for (const uint32_t value : values) put(lists, value, 2);
    } else {
      put(file, values[0], values.size() == 1 ? 4 : 2);
      if (values.size() == 2) put(file, values[1], 2);
    }
  }
  put(file, 0, 4);
  file.insert(file.end(), lists.begin(), lists.end());
  return file;
}

inline Tags page_tags(uint32_t width, uint32_t height, uint32_t bits, uint32_t photometric, const Tags& more = {}) {
  Tags tags = more;
  tags.merge(Tags{{kWidth, {width}}, {kHeight, {height}}, {kBits, {bits}}, {kPhotometric, {photometric}}, {kOffset, {8}}});
  tags.merge(Tags{{kSamples, {1}}, {kCompression, {1}}, {kRowsPerStrip, {height}}, {kByteCount, {1000}}});
  return tags;
}

}  // namespace test
