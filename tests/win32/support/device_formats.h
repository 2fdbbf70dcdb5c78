// Pictures that any display shows as they are, metafiles, and what tests of formats that are drawn have in common.
#pragma once

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <windows.h>

#include "support/dib.h"
#include "support/heap.h"
#include "win32/support/gdi.h"

namespace test {

// Four quarters, from the top: black, white; red, blue. With 1 bit per pixel the lower ones are white and black.
inline constexpr RGBQUAD kQuarterColors[] = {{0, 0, 0, 0}, {255, 255, 255, 0}, {0, 0, 255, 0}, {255, 0, 0, 0}};

inline Bytes quarters(int width, int height, int depth) {
  BITMAPINFOHEADER header = header_for(width, height, depth);
  const size_t colors = depth <= 8 ? size_t{1} << depth : 0;
  Bytes rest(colors * 4 + stride_of(width, depth) * static_cast<size_t>(height));
  std::memcpy(rest.data(), kQuarterColors, std::min<size_t>(colors, 4) * 4);
  uint8_t* rows = rest.data() + colors * 4;
  for (int y = 0; y < height; ++y) {
    uint8_t* row = rows + stride_of(width, depth) * static_cast<size_t>(y);  // from the bottom
    for (int x = 0; x < width; ++x) {
      int which = (y < height / 2 ? 2 : 0) + (x < width / 2 ? 0 : 1);
      if (depth == 1 && which > 1) which = 3 - which;
      if (depth == 24)
        std::memcpy(row + 3 * x, &kQuarterColors[which], 3);
      else
        row[x * depth / 8] |= static_cast<uint8_t>(which << (8 - depth - x * depth % 8));
    }
  }
  return with_header(header, rest);
}

// The colour of a picture at a point counted from the top, each in hundredths of its size: "FF0000".
inline std::string color_at_part(const Bytes& dib, int x, int y) {
  const BITMAPINFOHEADER header = header_of(dib);
  const RGBQUAD color = color_at(dib, header.biWidth * x / 100, header.biHeight - 1 - header.biHeight * y / 100);
  char text[8];
  std::snprintf(text, sizeof text, "%02X%02X%02X", color.rgbRed, color.rgbGreen, color.rgbBlue);
  return text;
}

// The middles of the four quarters.
inline std::string quarters_of(const Bytes& dib) {
  return color_at_part(dib, 25, 25) + ' ' + color_at_part(dib, 75, 25) + ' ' + color_at_part(dib, 25, 75) + ' ' +
         color_at_part(dib, 75, 75);
}

inline Bytes dib_bytes(HBITMAP bitmap) { return bytes_of(Block(ConvertBitmapToDIB(bitmap, nullptr)).get()); }

inline std::pair<int, int> size_of(HBITMAP bitmap) {
  const BITMAP facts = facts_of(bitmap);
  return {facts.bmWidth, facts.bmHeight};
}

// What a process holds on to.
class Holdings {
 public:
  void expect_no_more() const {
    EXPECT_EQ(gdi_objects(), objects_);
    EXPECT_LT(heap_blocks(), blocks_ + 10);
    EXPECT_EQ(handles(), handles_);
  }

 private:
  static size_t handles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
  }

  size_t objects_ = gdi_objects(), blocks_ = heap_blocks(), handles_ = handles();
};

// An active window for all tests of a suite, and a folder and a code to begin with for each.
class DeviceFormat : public testing::Test {
 protected:
  static constexpr int kUntouched = 30;

  static void SetUpTestSuite() { window_ = std::make_unique<ActiveWindow>(); }
  static void TearDownTestSuite() { window_.reset(); }
  DeviceFormat() { SetImgError(kUntouched); }

  static HWND window() { return window_->get(); }
  std::string at(const std::string& name) const { return folder_.path(name); }
  std::string put(const Bytes& bytes) const {
    write_file(at("file"), bytes);
    return at("file");
  }

 private:
  inline static std::unique_ptr<ActiveWindow> window_;
  const TempFolder folder_;
};

// A Windows metafile in memory: its left half is red, in coordinates of 100 by 100 if it sets them.
enum class Coordinates { kOwn, kOfWhoPlays };
inline HMETAFILE red_and_white(Coordinates coordinates, int width = 100, int height = 100) {
  HDC dc = CreateMetaFileA(nullptr);
  if (coordinates == Coordinates::kOwn) SetWindowExtEx(dc, width, height, nullptr);
  HBRUSH red = CreateSolidBrush(RGB(255, 0, 0));
  SelectObject(dc, red);
  PatBlt(dc, 0, 0, width / 2, height, PATCOPY);
  HMETAFILE metafile = CloseMetaFile(dc);
  DeleteObject(red);
  return metafile;
}

inline Bytes bits_of(HMETAFILE metafile) {
  Bytes bits(GetMetaFileBitsEx(metafile, 0, nullptr));
  GetMetaFileBitsEx(metafile, static_cast<UINT>(bits.size()), bits.data());
  return bits;
}

inline Bytes red_and_white_bits(Coordinates coordinates) {
  HMETAFILE metafile = red_and_white(coordinates);
  const Bytes bits = bits_of(metafile);
  DeleteMetaFile(metafile);
  return bits;
}

// Stands in for CreateBitmap: gives nothing above a number of rows and ten times as many columns.
inline int most_rows = 0, refused_bitmaps = 0;
inline HBITMAP WINAPI low_bitmap(int width, int height, UINT planes, UINT bits, const void* data) {
  if (height <= most_rows && width <= 10 * most_rows) return CreateBitmap(width, height, planes, bits, data);
  ++refused_bitmaps;
  return nullptr;
}

}  // namespace test
