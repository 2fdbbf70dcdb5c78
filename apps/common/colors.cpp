// Colours, greys, filters, and fewer of both.
#include <algorithm>
#include <fmt/format.h>

#include "common/forms.h"
#include "common/operations.h"
#include "common/problem.h"
#include "core/gray.h"
#include "core/pixel.h"

namespace vorel::programs {
namespace {

[[noreturn]] void fail(const std::string& text) { throw Problem(Fault::kFormat, text); }

// The bytes of one pixel that are colour. The last byte of 32 bits is reserved, as is the top bit of 16.
std::span<const uint8_t> color_mask(int depth) {
  static constexpr uint8_t k16[] = {0xFF, 0x7F};
  static constexpr uint8_t k24[] = {0xFF, 0xFF, 0xFF};
  static constexpr uint8_t k32[] = {0xFF, 0xFF, 0xFF, 0};
  switch (depth) {
    case 16: return k16;
    case 24: return k24;
    default: return k32;
  }
}

void complement_pixels(const Picture& picture) {
  const std::span<const uint8_t> mask = color_mask(picture.depth());
  const DibView pixels = picture.pixels();
  for (int y = 0; y < pixels.height(); ++y)
    for (size_t i = 0; uint8_t & byte : pixels.row(y)) byte ^= mask[i++ % mask.size()];
}

// A block of the library's own that is no picture.
struct FreeBlock {
  void operator()(void* block) const { GlobalFree(block); }
};
using Block = std::unique_ptr<void, FreeBlock>;

// None without a square.
Block histogram_of_square(const Picture& picture, const std::optional<Corner>& square) {
  if (!square) return {};
  int error = 0;
  Block histogram(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, &error));
  const int origin[] = {square->x, square->y};
  if (ComputeHistogram(picture.get(), IMG_COMPUTE, histogram.get(), origin, &error) == nullptr) throw std::bad_alloc();
  return histogram;
}

// Dark pixels are the set bits while it lives, which is what gentle cleaning looks at.
class DarkBitsSet {
 public:
  explicit DarkBitsSet(const Picture& picture, bool wanted)
      : is_inverted_(wanted && picture.depth() == 1 &&
                     vorel::luminance_of(picture.colors()[0]) < vorel::luminance_of(picture.colors()[1])) {}

  bool is_inverted() const { return is_inverted_; }

  void exchange(const Picture& picture) const {
    if (is_inverted_) InvertMonoDIB(picture.get());
  }

 private:
  bool is_inverted_;
};

// Colour tables are assumed to be whole, and the ways in for other pictures leave locks behind.
Picture prepared_to_reduce(Picture picture, int bits) {
  picture = with_whole_table(workable(std::move(picture)));
  if (picture.depth() > bits) return picture;
  fail(fmt::format("pictures of more bits per pixel are reduced, this one has {}; make it grey or 24 bits first",
                   picture.depth()));
}

constexpr DitherMethod kDitherMethods[] = {
    {"fs", DitherFS4, 8}, {"jjn", DitherJJN, 8}, {"smooth", DitherSmooth, 4}, {"sharp", DitherSharp, 4}};

}  // namespace

Picture negative(Picture picture) {
  if (picture.depth() <= 8) {
    picture = made_own(std::move(picture));
    InvertDIBPalette(picture.get());
    return picture;
  }
  picture = made_own(expanded(std::move(picture)));
  complement_pixels(picture);
  return picture;
}

// What the library makes of black and white by ConvColorDIBtoGrayscale goes by the bits. People go by the colours.
Picture gray(Picture picture, GrayWeights weights, int smoothing) {
  picture = workable(std::move(picture));
  const HGLOBAL dib = picture.get();
  return Picture(picture.depth() == 1 ? ConvMonoDIBtoGrayscale(dib, smoothing)
                                      : ConvColorDIBtoGrayscale(dib, 0, weights == GrayWeights::kByColor ? 1 : 0));
}

Picture toned(Picture picture, int brightness, int contrast) {
  picture = workable(std::move(picture));
  if (picture.depth() == 1) fail("black and white pixels have no brightness to change; make the picture grey first");
  return Picture(ColorBrightnessContrast(picture.get(), static_cast<short>(brightness), static_cast<short>(contrast)));
}

Picture looked_up(Picture picture, int brightness, int contrast, std::optional<Corner> square) {
  picture = workable(std::move(picture));
  if (picture.depth() != 8)
    fail(fmt::format("a lookup table is for 8 bits per pixel, the picture has {}; make it grey first", picture.depth()));
  int error = 0;
  const Block histogram = histogram_of_square(picture, square);
  const Block table(ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, &error));
  ComputeLUT(histogram.get(), IMG_COMPUTE, table.get(), contrast, brightness, &error);
  return Picture(ApplyLUT(picture.get(), table.get(), 1, &error));
}

Picture filtered(Picture picture, const Filtering& filtering) {
  picture = workable(std::move(picture));
  if (picture.depth() < 8) {
    fail(fmt::format("filters are for 8 and 24 bits per pixel, the picture has {}; make it grey or 24 bits first",
                     picture.depth()));
  }
  constexpr int kNewPicture = 1;
  const int type = static_cast<int>(filtering.filter);
  const std::vector<short> short_kernel(filtering.kernel.begin(), filtering.kernel.end());
  int error = 0;
  HGLOBAL result = nullptr;
  if (has_gray_ramp(picture)) {
    result = Convolve(picture.get(), kNewPicture, type, filtering.size, nullptr, filtering.kernel.data(), &error);
  } else {
    picture = in_true_color(std::move(picture));
    result = ColorConvolution(picture.get(), kNewPicture, filtering.intensity == GrayWeights::kByColor ? 1 : 0,
                              static_cast<short>(type), filtering.size, nullptr, short_kernel.data(), &error);
  }
  if (error == IMG_E_PARAMETER) {
    throw Problem(
        Fault::kWrongUse,
        "the kernel is out of bounds; size 7 is for box and kernel alone, and the positive and the negative numbers "
        "of a kernel may sum to 127 each");
  }
  return Picture(result);
}

Picture cleaned(Picture picture, int level, Cleaning cleaning) {
  picture = with_whole_table(workable(std::move(picture)));
  const bool is_gentle = cleaning == Cleaning::kGentle;
  const bool can_be_cleaned = (picture.depth() == 1 || picture.depth() == 8) && is_gray(picture.colors());
  if (!can_be_cleaned)
    fail("only pictures of 1 and 8 bits per pixel whose colours are all greys can be cleaned; make the picture grey first");
  const DarkBitsSet polarity(picture, is_gentle);
  if (polarity.is_inverted()) picture = made_own(std::move(picture));
  polarity.exchange(picture);
  Picture result(CleanImage(picture.get(), level, is_gentle ? 0 : 1));
  polarity.exchange(result);
  return result;
}

std::span<const DitherMethod> dither_methods() { return kDitherMethods; }

Picture dithered(Picture picture, const DitherMethod& method, int bits) {
  if (bits > method.most_bits)
    throw Problem(Fault::kWrongUse, "smooth and sharp make 1 or 4 bits per pixel; choose fs or jjn for 8");
  picture = prepared_to_reduce(std::move(picture), bits);
  return Picture(method.function(picture.get(), bits));
}

// Of 24-bit pictures the library puts rows together wrongly, which is kept. Greys come out right.
Picture halftoned(Picture picture, Halftone method, int brightness) {
  picture = prepared_to_reduce(std::move(picture), 1);
  if (picture.depth() == 24) picture = luminance_of(picture);
  WORD error = 0;
  return Picture(::Halftone(picture.get(), static_cast<WORD>(method), brightness, &error));
}

LevelCounts count_levels(const Picture& picture) {
  LevelCounts counts{};
  const DibView pixels = picture.pixels();
  with_depth(picture.depth(), [&](auto depth) {
    for (int y = 0; y < pixels.height(); ++y)
      for (int x = 0; x < pixels.width(); ++x) {
        const uint32_t color = color_of(picture, Pixel<depth>::load(pixels.row(y).data(), x));
        ++counts[level_of(rgb_of(color))];
      }
  });
  return counts;
}

}  // namespace vorel::programs
