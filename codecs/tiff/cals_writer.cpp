#include <cstdio>
#include <string>

#include "tiff/cals.h"
#include "tiff/writer.h"

namespace codec {
namespace {

constexpr int kMostPixels = 999'999;  // per side: the header has six digits

bool white_bit(const SourceDib& dib) { return brightness_of(dib.colors()[1]) > brightness_of(dib.colors()[0]); }

// The format requires a density: an unknown resolution becomes the usual one of scanners.
int density_of(Resolution resolution) {
  constexpr int kUsual = 300, kMost = 9'999;
  const int dots_per_inch = nearest_dpi(resolution.x);
  return dots_per_inch >= 1 && dots_per_inch <= kMost ? dots_per_inch : kUsual;
}

std::string formatted(const char* format, int first, int second = 0) {
  char text[kCalsRecordBytes];
  std::snprintf(text, sizeof text, format, first, second);
  return text;
}

std::string header_of(const SourceDib& dib) {
  std::string header;
  const auto add = [&](std::string record) {
    record.resize(kCalsRecordBytes, ' ');
    header += record;
  };
  for (const char* name : {"srcdocid: ", "dstdocid: ", "txtfilid: ", "figid: ", "srcgph: ", "doccls: "})
    add(name + std::string("NONE"));
  add("rtype: 1");
  add("rorient: 000,270");
  add(formatted("rpelcnt: %06d,%06d", dib.width(), dib.height()));
  add(formatted("rdensty: %04d", density_of(dib.resolution())));
  add("notes: NONE");
  header.resize(kCalsHeaderBytes, ' ');
  return header;
}

}  // namespace

std::vector<uint8_t> cals_file(const SourceDib& dib) {
  if (dib.depth() != 1) fail(IMG_E_PIXEL_BITS);
  if (dib.width() > kMostPixels || dib.height() > kMostPixels) fail(IMG_E_DIB_SIZE);
  const std::string header = header_of(dib);
  std::vector<uint8_t> file(header.begin(), header.end());
  const std::vector<uint8_t> data = group4_data(dib, white_bit(dib));
  file.insert(file.end(), data.begin(), data.end());
  return file;
}

}  // namespace codec
