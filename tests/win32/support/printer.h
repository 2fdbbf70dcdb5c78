// The printers that the build makes for its tests (tools/make_printer.cpp), and pictures for them.
#pragma once

#include <filesystem>
#include <string>
#include <windows.h>

#include "support/dib.h"
#include "support/module.h"

namespace test {

// Where what they print comes to lie: DPI.ps is the last job of each.
inline std::filesystem::path printed_folder() { return program_folder().parent_path() / "printed"; }

inline constexpr int kPrinterResolutions[] = {150, 300, 600};

inline std::string printer_name(int dpi) { return "Vorel test " + std::to_string(dpi); }

inline HDC printer_dc(int dpi) { return CreateDCA("WINSPOOL", printer_name(dpi).c_str(), nullptr, nullptr); }

// An image at the top left, one printer dot a pixel, and no dialog.
inline ImgPrintOptions silent_options() {
  ImgPrintOptions options = {};
  options.copies = options.showPageProgress = options.silent = 1;
  return options;
}

inline std::string text_of_job(int dpi) {
  const Bytes bytes = read_file((printed_folder() / (std::to_string(dpi) + ".ps")).string());
  return {bytes.begin(), bytes.end()};
}

// A black picture of 1, 8 or 24 bits with a white field that tells which side is up: from 1/4 to 1/2 across, from 1/8 to 1/4 down.
inline Bytes signed_picture(int width, int height, int depth, int pixels_per_metre = 0) {
  BITMAPINFOHEADER header = header_for(width, height, depth);
  header.biXPelsPerMeter = header.biYPelsPerMeter = pixels_per_metre;
  const size_t table = depth == 24 ? 0 : size_t{4} << depth, stride = stride_of(width, depth);
  Bytes rest(table + stride * static_cast<size_t>(height));
  for (size_t i = 0; i < 3 && table != 0; ++i) rest[table - 4 + i] = 255;  // the last colour is white
  for (int y = height / 8; y < height / 4; ++y)
    for (int bit = width / 4 * depth; bit < width / 2 * depth; ++bit)
      rest[table + static_cast<size_t>(height - 1 - y) * stride + static_cast<size_t>(bit / 8)] |=
          static_cast<uint8_t>(0x80 >> bit % 8);
  return with_header(header, rest);
}

}  // namespace test
