#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
#include <string>
#include <tiff.h>

#include "tiff/cals.h"
#include "tiff/reader.h"
#include "tiff/scanner.h"

namespace codec {
namespace {

struct CalsHeader {
  int64_t width = 0, height = 0;
  int orientation = 1;  // by TIFF number
  int dots_per_inch = 0;
};

// Up to two numbers of a record; missing ones are 0.
struct Record {
  int found = 0;
  std::array<int, 2> numbers{};
};

// Records are found by name: writers differ in their choice and order.
Record record(const std::string& text, const std::string& name) {
  Record record;
  const size_t begin = text.find(name);
  if (begin == std::string::npos) return record;
  const std::string value = text.substr(begin + name.size(), kCalsRecordBytes - name.size());
  Scanner scanner(value);
  for (int& number : record.numbers) {
    constexpr size_t kMostCharacters = 9;
    scanner.skip_spaces();
    const auto found = scanner.number(kMostCharacters);
    if (!found) break;
    number = static_cast<int>(*found);
    ++record.found;
    scanner.skip_spaces();
    if (!scanner.skip(",")) break;
  }
  return record;
}

// Both angles are counter-clockwise: the direction of pixels counts from the right, the direction of lines from the direction of
// pixels. Some writers count both from the right, which shows if the other reading is impossible.
int orientation_of(int pixels, int lines) {
  constexpr std::array<std::array<int, 2>, 4> kOrientations = {{{4, 1}, {7, 8}, {2, 3}, {5, 6}}};  // by lines: 90, 270
  const auto is_quarter = [](int angle) { return angle >= 0 && angle < 360 && angle % 90 == 0; };
  if (!is_quarter(pixels) || !is_quarter(lines)) fail(IMG_E_FORMAT);
  if (lines % 180 == 0) lines = (lines - pixels + 360) % 360;
  if (lines % 180 == 0) fail(IMG_E_FORMAT);
  return kOrientations[static_cast<size_t>(pixels / 90)][lines == 270];
}

CalsHeader read_header(const std::vector<uint8_t>& file) {
  constexpr int kUntiled = 1;
  if (file.size() <= kCalsHeaderBytes) fail(IMG_E_FORMAT);
  std::string text(file.begin(), file.begin() + kCalsHeaderBytes);
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const Record type = record(text, "rtype:"), size = record(text, "rpelcnt:"), orientation = record(text, "rorient:");
  if (size.found != 2 || (type.found > 0 && type.numbers[0] != kUntiled)) fail(IMG_E_FORMAT);
  CalsHeader header{.width = size.numbers[0], .height = size.numbers[1]};
  if (orientation.found == 2) header.orientation = orientation_of(orientation.numbers[0], orientation.numbers[1]);
  header.dots_per_inch = std::max(0, record(text, "rdensty:").numbers[0]);
  return header;
}

// A TIFF directory under construction, in Intel byte order.
class Directory {
 public:
  explicit Directory(std::vector<uint8_t>& file) : file_(file) {}

  void add_short(uint16_t tag, uint32_t value) { add(tag, 3, value); }
  void add_long(uint16_t tag, uint32_t value) { add(tag, 4, value); }
  void add_rational(uint16_t tag, uint32_t value) {
    put(value, 4, kRationals + 8 * rationals_);
    put(1, 4, kRationals + 8 * rationals_ + 4);
    add(tag, 5, static_cast<uint32_t>(kRationals + 8 * rationals_++));
  }

  void finish() {
    constexpr uint32_t kIntelMagic = 0x002A4949;
    put(kIntelMagic, 4, 0);
    put(kBegin, 4, 4);
    put(entries_, 2, kBegin);
    put(0, 4, kBegin + 2 + 12 * entries_);
  }

 private:
  static constexpr uint32_t kBegin = 8, kRationals = 1024;

  void add(uint16_t tag, uint32_t type, uint32_t value) {
    const size_t entry = kBegin + 2 + size_t{12} * entries_++;
    put(tag | type << 16, 4, entry);
    put(1, 4, entry + 4);
    put(value, 4, entry + 8);
  }

  void put(uint32_t value, size_t width, size_t offset) {
    for (size_t i = 0; i < width; ++i) file_[offset + i] = static_cast<uint8_t>(value >> 8 * i);
  }

  std::vector<uint8_t>& file_;
  uint32_t entries_ = 0, rationals_ = 0;
};

// Overwrites the text with a directory, which makes the file a TIFF file of one strip.
void make_tiff(std::vector<uint8_t>& file, const CalsHeader& header) {
  const auto height = static_cast<uint32_t>(header.height), density = static_cast<uint32_t>(header.dots_per_inch);
  Directory directory(file);
  directory.add_long(TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(header.width));
  directory.add_long(TIFFTAG_IMAGELENGTH, height);
  directory.add_short(TIFFTAG_BITSPERSAMPLE, 1);
  directory.add_short(TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
  directory.add_short(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  directory.add_long(TIFFTAG_STRIPOFFSETS, kCalsHeaderBytes);
  directory.add_short(TIFFTAG_ORIENTATION, static_cast<uint32_t>(header.orientation));
  directory.add_short(TIFFTAG_SAMPLESPERPIXEL, 1);
  directory.add_long(TIFFTAG_ROWSPERSTRIP, height);
  directory.add_long(TIFFTAG_STRIPBYTECOUNTS, static_cast<uint32_t>(file.size() - kCalsHeaderBytes));
  directory.add_rational(TIFFTAG_XRESOLUTION, density);
  directory.add_rational(TIFFTAG_YRESOLUTION, density);
  directory.finish();
}

}  // namespace

HGLOBAL read_cals(std::vector<uint8_t> file) {
  if (file.size() > std::numeric_limits<uint32_t>::max()) fail(IMG_E_MEMORY);
  const CalsHeader header = read_header(file);
  check_claim(header.width, header.height, 1, file.size());
  make_tiff(file, header);
  MemoryBytes bytes(std::move(file));
  return read_tiff(bytes, 1);
}

}  // namespace codec
