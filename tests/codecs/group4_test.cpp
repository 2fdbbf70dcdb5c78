// Group 4 data beside libtiff's of the same pages.
#include "tiff/group4.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <tiffio.h>

#include "support/dib.h"

namespace {

using Row = std::vector<uint8_t>;

std::vector<uint8_t> data_by_libtiff(const std::vector<Row>& rows, int width) {
  const test::TempFolder folder;
  const std::string path = folder.path("page.tif");
  TIFF* tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<int>(rows.size()));
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<int>(rows.size()));
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  for (uint32_t y = 0; Row row : rows) TIFFWriteScanline(tiff, row.data(), y++, 0);
  TIFFClose(tiff);
  tiff = TIFFOpen(path.c_str(), "r");
  std::vector<uint8_t> data(static_cast<size_t>(TIFFRawStripSize64(tiff, 0)));
  TIFFReadRawStrip(tiff, 0, data.data(), static_cast<tmsize_t>(data.size()));
  TIFFClose(tiff);
  return data;
}

// Runs of up to `longest` pixels in some rows; the others repeat the row above with a few changes of colour moved by up to 4 pixels.
// Bits behind the width are noise.
std::vector<Row> page(int width, int height, int longest, std::mt19937& random) {
  const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  std::vector<Row> rows;
  std::vector<int> changes;
  for (int y = 0; y < height; ++y) {
    if (y % 4 == 0) {
      changes.clear();
      for (int x = below(2) * below(longest + 1); x < width; x += 1 + below(longest)) changes.push_back(x);
    }
    for (int& change : changes)
      if (below(3) == 0) change = std::max(0, change + below(9) - 4);
    std::ranges::sort(changes);
    Row row(static_cast<size_t>(width + 7) / 8);
    for (uint8_t& byte : row) byte = static_cast<uint8_t>(random());
    for (int x = 0; x < width; ++x) {
      const bool is_black = (std::ranges::upper_bound(changes, x) - changes.begin()) % 2 != 0;
      const auto bit = static_cast<uint8_t>(0x80 >> x % 8);
      uint8_t& byte = row[static_cast<size_t>(x) / 8];
      byte = static_cast<uint8_t>(is_black ? byte | bit : byte & ~bit);
    }
    rows.push_back(row);
  }
  return rows;
}

TEST(Group4Test, DataIsThatOfLibtiff) {
  std::mt19937 random(4);
  for (const int width : {1, 2, 7, 8, 31, 33, 63, 64, 65, 127, 600, 2'559, 2'560, 2'623, 2'624, 5'201, 30'000})
    for (const int longest : {1, 2, 5, 90, 3'000, 50'000})
      for (const bool white : {false, true}) {
        const std::vector<Row> rows = page(width, 29, longest, random);
        codec::Group4Encoder encoder(width, white);
        for (Row row : rows) {
          if (white)
            for (uint8_t& byte : row) byte = static_cast<uint8_t>(~byte);
          encoder.add_row(row);
        }
        ASSERT_EQ(encoder.finish(), data_by_libtiff(rows, width)) << width << " pixels, runs of up to " << longest;
      }
}

}  // namespace
