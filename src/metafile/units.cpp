#include "metafile/units.h"

#include "core/saturate.h"

namespace vorel::metafile {
namespace {

// The sizes of callers' pictures depend on these numbers: the twips of files are no twentieths of a point, and an inch on
// the clipboard has 24.5 millimetres.
constexpr double kInchesPerLowMetric = 0.003937007874015748;    // 1/254
constexpr double kInchesPerHighMetric = 0.0003937007874015748;  // 1/2540
constexpr double kInchesPerMillimetreOnClipboard = 0.04081632653061224;
constexpr double kInchesPerTwip = 1.0 / 1440;
constexpr int64_t kPixelsPerTwipInFile = 20;

Size in_inches(const PictureLengths& picture, Resolution screen, double inches_per_unit) {
  return {saturated(screen.x * inches_per_unit * picture.x), saturated(screen.y * inches_per_unit * picture.y)};
}

// The lengths may give only a proportion, as negative numbers, or nothing.
Size in_file(const PictureLengths& picture, Resolution screen) {
  switch (picture.mode) {
    case MappingMode::kText: return {picture.x, picture.y};
    case MappingMode::kLowMetric: return in_inches(picture, screen, kInchesPerLowMetric);
    case MappingMode::kHighMetric: return in_inches(picture, screen, kInchesPerHighMetric);
    case MappingMode::kLowEnglish: return in_inches(picture, screen, 0.01);
    case MappingMode::kHighEnglish: return in_inches(picture, screen, 0.001);
    case MappingMode::kTwips:
      return {saturated(picture.x * kPixelsPerTwipInFile), saturated(picture.y * kPixelsPerTwipInFile)};
    case MappingMode::kIsotropic:
      if (picture.x >= 1) return in_inches(picture, screen, kInchesPerHighMetric);
      return {saturated(-(int64_t{picture.x} * screen.x)), saturated(-(int64_t{picture.y} * screen.y))};
    case MappingMode::kAnisotropic:
      return picture.x >= 1 ? in_inches(picture, screen, kInchesPerHighMetric) : five_inches(screen);
  }
  return five_inches(screen);
}

// The order of the factors is kept: it decides the last pixel.
int on_clipboard(int32_t length, MappingMode mode, int dots_per_inch, int otherwise) {
  switch (mode) {
    case MappingMode::kText: return length;
    case MappingMode::kLowMetric: return saturated(length * 0.1 * kInchesPerMillimetreOnClipboard * dots_per_inch);
    case MappingMode::kHighMetric:
    case MappingMode::kIsotropic:
    case MappingMode::kAnisotropic: return saturated(length * 0.01 * kInchesPerMillimetreOnClipboard * dots_per_inch);
    case MappingMode::kLowEnglish: return saturated(length * 0.01 * dots_per_inch);
    case MappingMode::kHighEnglish: return saturated(length * 0.001 * dots_per_inch);
    case MappingMode::kTwips: return saturated(length * kInchesPerTwip * dots_per_inch);
  }
  return otherwise;
}

}  // namespace

Size pixels_in_file(const PictureLengths& picture, Resolution screen) {
  const Size pixels = in_file(picture, screen);
  return pixels.width > 0 && pixels.height > 0 ? pixels : five_inches(screen);
}

Size pixels_on_clipboard(const PictureLengths& picture, int dots_per_inch, Size otherwise) {
  const int width = on_clipboard(picture.x, picture.mode, dots_per_inch, otherwise.width);
  const int height = on_clipboard(picture.y, picture.mode, dots_per_inch, otherwise.height);
  return {width > 0 ? width : otherwise.width, height > 0 ? height : otherwise.height};
}

}  // namespace vorel::metafile
