#include "common/exif.h"

#include <sstream>
#include <string>
#include <utility>

#include "common/jpeg_segments.h"
#include "common/operations.h"
#include "common/tiff_directory.h"
#include "core/resolution.h"

namespace vorel::programs {
namespace {

enum Tag : uint32_t { kOrientation = 0x112, kXResolution = 0x11A, kYResolution = 0x11B, kResolutionUnit = 0x128 };

// The contents of the first record behind its signature; empty without one.
std::string exif_record(std::istream& stream) {
  std::string record;
  for_each_jpeg_segment(stream, [&](int marker, std::string_view bytes) {
    if (record.empty() && is_exif(marker, bytes)) record = bytes.substr(kExifSignature.size());
  });
  return record;
}

}  // namespace

ExifFacts read_exif(std::istream& stream) {
  std::istringstream record(exif_record(stream));
  const auto directory = TiffDirectory::of_page(record, 1);
  if (!directory) return {};
  const double orientation = directory->number(kOrientation).value_or(1),
               unit = directory->number(kResolutionUnit).value_or(0);
  constexpr double kPerCentimetre = 3;
  const double per_inch = unit == kPerCentimetre ? 2.54 : 1;
  const auto resolution = [&](Tag tag) { return per_metre(directory->number(tag).value_or(0) * per_inch); };
  return {orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1, resolution(kXResolution),
          resolution(kYResolution)};
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
