#include "common/exif.h"

#include <array>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "common/operations.h"

namespace vorel::programs {
namespace {

constexpr int kEndOfHeaders = 0xDA, kApplication1 = 0xE1;
constexpr std::string_view kSignature{"Exif\0\0", 6};
enum Tag : uint32_t { kOrientation = 0x112, kXResolution = 0x11A, kYResolution = 0x11B, kResolutionUnit = 0x128 };

// A TIFF header and directory in memory. What lies outside reads as 0.
class Directory {
 public:
  explicit Directory(std::span<const uint8_t> bytes) : bytes_(bytes), is_big_endian_(!bytes.empty() && bytes[0] == 'M') {
    at_ = number(4, 4);
    entries_ = number(at_, 2);
  }

  // The first value of an entry; the place of the value where that does not fit into the entry.
  uint32_t value(Tag tag) const {
    constexpr uint32_t kShort = 3;
    for (uint32_t i = 0; i < entries_; ++i) {
      const uint64_t entry = uint64_t{at_} + 2 + 12 * i;
      if (number(entry, 2) == tag) return number(entry + 8, number(entry + 2, 2) == kShort ? 2 : 4);
    }
    return 0;
  }

  double ratio(Tag tag) const {
    const uint32_t at = value(tag);
    const uint32_t below = at == 0 ? 0 : number(uint64_t{at} + 4, 4);
    return below == 0 ? 0 : static_cast<double>(number(at, 4)) / below;
  }

 private:
  uint32_t number(uint64_t at, uint64_t size) const {
    uint32_t result = 0;
    for (uint64_t i = 0; i < size; ++i) {
      const uint64_t place = at + (is_big_endian_ ? i : size - 1 - i);
      result = result << 8 | (place < bytes_.size() ? bytes_[static_cast<size_t>(place)] : 0u);
    }
    return result;
  }

  std::span<const uint8_t> bytes_;
  bool is_big_endian_;
  uint32_t at_ = 0, entries_ = 0;
};

// The contents of the first segment with the signature; empty without one.
std::vector<uint8_t> exif_segment(std::istream& stream) {
  if (stream.get() != 0xFF || stream.get() != 0xD8) return {};
  for (;;) {
    int marker = stream.get();
    if (marker != 0xFF) return {};
    while (marker == 0xFF) marker = stream.get();
    const int high = stream.get(), low = stream.get();
    if (!stream || marker == kEndOfHeaders || high * 256 + low < 2) return {};
    std::vector<uint8_t> segment(static_cast<size_t>(high * 256 + low - 2));
    stream.read(reinterpret_cast<char*>(segment.data()), static_cast<std::streamsize>(segment.size()));
    const std::string_view text(reinterpret_cast<const char*>(segment.data()), segment.size());
    if (marker == kApplication1 && text.starts_with(kSignature)) return segment;
  }
}

int per_metre(double ratio, uint32_t unit) {
  constexpr uint32_t kPerCentimetre = 3;
  const double dots = ratio * (unit == kPerCentimetre ? 100 : 100 / 2.54);
  return dots >= 1 && dots < 2e9 ? static_cast<int>(std::lround(dots)) : 0;
}

}  // namespace

ExifFacts read_exif(std::istream& stream) {
  const std::vector<uint8_t> segment = exif_segment(stream);
  if (segment.empty()) return {};
  const std::span<const uint8_t> bytes(segment);
  const Directory directory(bytes.subspan(kSignature.size()));
  const uint32_t orientation = directory.value(kOrientation), unit = directory.value(kResolutionUnit);
  return {orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1,
          per_metre(directory.ratio(kXResolution), unit), per_metre(directory.ratio(kYResolution), unit)};
}

DibHeader turned_by_exif(DibHeader header, const ExifFacts& facts) {
  if (header.x_per_metre <= 0 && header.y_per_metre <= 0 && facts.x_per_metre > 0 && facts.y_per_metre > 0) {
    header.x_per_metre = facts.x_per_metre;
    header.y_per_metre = facts.y_per_metre;
  }
  if (facts.orientation >= 5) {
    std::swap(header.width, header.height);
    std::swap(header.x_per_metre, header.y_per_metre);
  }
  return header;
}

Picture turned_by_exif(Picture picture, const ExifFacts& facts) {
  const DibHeader header = turned_by_exif(picture.header(), facts);
  switch (facts.orientation) {
    case 2: picture = mirrored_left_right(std::move(picture)); break;
    case 3: picture = turned(std::move(picture), 180); break;
    case 4: picture = mirrored_top_bottom(std::move(picture)); break;
    case 5: picture = mirrored_left_right(turned(std::move(picture), 90)); break;
    case 6: picture = turned(std::move(picture), 90); break;
    case 7: picture = mirrored_top_bottom(turned(std::move(picture), 90)); break;
    case 8: picture = turned(std::move(picture), 270); break;
    default: break;
  }
  picture.set_resolution(header.x_per_metre, header.y_per_metre);
  return picture;
}

}  // namespace vorel::programs
