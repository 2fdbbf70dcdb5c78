// What the programs do to pictures: the library's functions with what they leave to their callers. Each takes a picture in
// any form (forms.h) and makes a new one, so that several can follow each other in memory. All throw Problem.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/picture.h"

namespace vorel::programs {

// ---- Turning and mirroring ----

// What a result shows where the picture does not reach: the colour of its table that is nearest to this.
enum class Background { kBlack, kWhite };

// Clockwise, by any number of degrees. Quarter turns keep every pixel; others pick the nearest. Unequal resolutions follow
// the turn.
Picture turned(Picture picture, int degrees, Background background = Background::kBlack);

Picture mirrored_left_right(Picture picture);
Picture mirrored_top_bottom(Picture picture);  // keeps 16 and 32 bits

// ---- Shape and size ----

// Rows move right or columns up, the upper rows and the right columns most; negative: the others.
enum class Shear { kColumns, kRows };
Picture skewed(Picture picture, Shear shear, int pixels, Background background = Background::kBlack);

// kArea weighs every pixel by how much of it lies under the new one, in exact arithmetic. Black and white stays black and
// white: a new pixel gets the colour that covers most of it, and the darker one if both cover half.
enum class Resampling { kLinear, kCubic, kNearest, kArea };
// kLinear and kCubic take the nearest pixel in black and white. The resolution changes with the number of pixels, so that
// the size on paper stays.
Picture scaled(Picture picture, Size size, Resampling resampling);

// The most pixels that a side may have after scaling.
inline constexpr int kMostScaledPixels = 65'535;

struct Halves {
  Picture above, below;
};
// `line` is the number of rows above, from 1 to one less than there are.
Halves cut(Picture picture, int line);

Picture cropped(Picture picture, Rect piece);

// ---- Colours ----

Picture negative(Picture picture);  // keeps run-length codes of a picture with a table, and 16 and 32 bits

enum class GrayWeights { kEqual, kByColor };
// `smoothing` mixes 3 x 3 (1) or 5 x 5 (2) pixels of a black and white picture.
Picture gray(Picture picture, GrayWeights weights, int smoothing = 0);

// In percent, from -100 to 100.
Picture toned(Picture picture, int brightness, int contrast);

struct Corner {
  int x = 0, y = 0;
};
// By a lookup table: levels go through their mean, that of a square of 256 x 256 pixels or 128.
Picture looked_up(Picture picture, int brightness, int contrast, std::optional<Corner> square = {});

// Filters by their numbers in the library.
enum class Filter { kKernel = 1, kBox = 3, kBlur = 4, kSharpen = 5, kSharpenMore = 6 };
struct Filtering {
  Filter filter = Filter::kBox;
  int size = 3;                                 // 3, 5, or for box and kernel 7
  GrayWeights intensity = GrayWeights::kEqual;  // of colours
  std::vector<int> kernel = {};                 // size * size numbers and the divisor, 0 for their sum
};
// Greys of 8 bits stay such; anything else comes out with 24 bits.
Picture filtered(Picture picture, const Filtering& filtering);

enum class Cleaning { kAll, kGentle };
// Takes specks off black and white or grey pages. Gentle: leaves pixels that have four or more black neighbours.
//   level  20 to 100: the more black neighbours a pixel needs to be black
Picture cleaned(Picture picture, int level, Cleaning cleaning);

// ---- Few colours ----

struct DitherMethod {
  const char* word;
  HGLOBAL(VORELCALL* function)(HGLOBAL dib, int bits);
  int most_bits;
};
std::span<const DitherMethod> dither_methods();
Picture dithered(Picture picture, const DitherMethod& method, int bits);

enum class Halftone { kThreshold, kDiffusion, kOrdered };
// Colours go by their luminance. `brightness` is added to it, -255 to 255.
Picture halftoned(Picture picture, Halftone method, int brightness);

// ---- Two pictures ----

enum class Mixing { kReplace, kOr, kXor };
// Paints a picture onto another. Of a 1-bit mask of its size black keeps what is below.
Picture combined(Picture base, Picture overlay, std::optional<Picture> mask, Corner at, Mixing mixing);

// ---- Counting ----

// The greys of a workable picture's pixels, (blue + green + red + 1) / 3.
using LevelCounts = std::array<uint64_t, 256>;
LevelCounts count_levels(const Picture& picture);

// ---- Comparing ----

struct Comparison {
  Size size;               // the compared part: what both have at the upper left
  uint64_t different = 0;  // pixels with a component that differs by more than the threshold
  int largest = 0;         // difference of a component
};

// By the colours that are seen, in whatever form each picture has them. The fourth byte of 32 bits is no colour.
//   drawing  gets a picture of the differences: red on the first picture in pale greys
Comparison compared(const Picture& a, const Picture& b, int threshold = 0, Picture* drawing = nullptr);

}  // namespace vorel::programs
