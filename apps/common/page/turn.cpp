#include "common/page/turn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <emmintrin.h>
#include <numbers>
#include <vector>

#include "common/forms.h"
#include "common/page/units.h"
#include "common/problem.h"
#include "core/gray.h"
#include "core/nearest_color.h"
#include "core/pixel.h"
#include "core/row_bits.h"

namespace vorel::programs {
namespace {

// Pixels of the result are made this many at a time, as many as a word has bits.
constexpr int kRun = 32;

// ---- Where the pixels of the result come from ----

// Positions are those of the upper left of four pixels, and how far the sample lies towards the other three.
struct Fixed {
  int64_t x = 0, y = 0;  // 32 bits of fraction

  friend Fixed operator+(Fixed a, Fixed b) { return {a.x + b.x, a.y + b.y}; }
  friend Fixed operator*(Fixed a, int64_t count) { return {a.x * count, a.y * count}; }
};

int whole(int64_t fixed) { return static_cast<int>(fixed >> 32); }

struct Mapping {
  Fixed first, per_column, per_row;
};

// Centre to centre. `aspect` is that of across_per_down().
Mapping mapping_of(Size from, Size to, double angle, double aspect) {
  const double sine = std::sin(angle), cosine = std::cos(angle);
  const auto fixed = [](double x, double y) {
    return Fixed{std::llround(std::ldexp(x, 32)), std::llround(std::ldexp(y, 32))};
  };
  const double x = 0.5 - to.width / 2.0, y = 0.5 - to.height / 2.0;
  return {.first = fixed(from.width / 2.0 - 0.5 + x * cosine + y * aspect * sine,
                         from.height / 2.0 - 0.5 - x * sine / aspect + y * cosine),
          .per_column = fixed(cosine, -sine / aspect),
          .per_row = fixed(aspect * sine, cosine)};
}

// ---- Kinds of pixels ----

// A kind of pixels loads four neighbours from two rows, or one that may be outside, and mixes four by fractions of 16 bits.
template <class Value>
struct Four {
  Value above, above_right, below, below_right;
};

// Black and white: the colour with more of the weight. Fractions have four bits and lie in the middle of their steps, so that there
// are no ties. The nearest pixel decides where it has more than half of the weight. Elsewhere it does so with any other one; against
// it all three must agree.
constexpr uint32_t is_far(uint32_t fraction) { return fraction >> 15; }
constexpr bool decides_alone(uint32_t x, uint32_t y) {
  constexpr uint32_t kSteps = 16, kWhole = 2 * kSteps;
  const auto weight = [](uint32_t part) { return kWhole - 1 - 2 * ((part >> 15 != 0 ? part ^ 0xFFFF : part) >> 12); };
  return 2 * weight(x) * weight(y) > kWhole * kWhole;
}

// Of many pixels at a time: bits of `right` and `low` where these are nearer, of `alone` where the nearest one decides.
template <class Word>
constexpr Word majority(const Four<Word>& four, Word right, Word low, Word alone) {
  const auto chosen = [](Word mask, Word a, Word b) { return (a & ~mask) | (b & mask); };
  const Word above_near = chosen(right, four.above, four.above_right),
             above_far = chosen(right, four.above_right, four.above);
  const Word below_near = chosen(right, four.below, four.below_right),
             below_far = chosen(right, four.below_right, four.below);
  const Word nearest = chosen(low, above_near, below_near), beside = chosen(low, below_near, above_near);
  const Word others_any = beside | above_far | below_far, others_all = beside & above_far & below_far;
  return chosen(alone, (nearest & others_any) | others_all, nearest);
}

struct Bits {
  static constexpr int kDepth = 1;

  static uint32_t load(const uint8_t* row, int x) { return Pixel<1>::load(row, x); }

  static uint32_t mix(const Four<uint32_t>& four, uint32_t x, uint32_t y) {
    return majority<uint32_t>(four, is_far(x), is_far(y), decides_alone(x, y) ? 1 : 0);
  }
};

template <class Kind>
uint32_t mix_inside(const uint8_t* above, const uint8_t* below, int at, uint32_t x, uint32_t y) {
  return Kind::mix({Kind::load(above, at), Kind::load(above, at + 1), Kind::load(below, at), Kind::load(below, at + 1)}, x,
                   y);
}

struct Grays {
  static constexpr int kDepth = 8;

  static uint32_t load(const uint8_t* row, int x) { return row[x]; }

  static uint32_t mix(const Four<uint32_t>& four, uint32_t x, uint32_t y) {
    const uint32_t right = x >> 8, low = y >> 8;
    const uint32_t above = four.above * (256 - right) + four.above_right * right;
    const uint32_t below = four.below * (256 - right) + four.below_right * right;
    return (above * (256 - low) + below * low + 0x8000) >> 16;
  }

  static uint32_t inside(const uint8_t* above, const uint8_t* below, int at, uint32_t x, uint32_t y) {
    return mix_inside<Grays>(above, below, at, x, y);
  }
};

struct Colors {
  static constexpr int kDepth = 24;

  static uint32_t load(const uint8_t* row, int x) { return Pixel<24>::load(row, x); }

  static uint32_t mix(const Four<uint32_t>& four, uint32_t x, uint32_t y) {
    const uint32_t right = x >> 8, low = y >> 8;
    return between(between(four.above, four.above_right, right), between(four.below, four.below_right, right), low);
  }

  static uint32_t inside(const uint8_t* above, const uint8_t* below, int at, uint32_t x, uint32_t y) {
    return mix_inside<Colors>(above, below, at, x, y);
  }

 private:
  // All components at a time: blue and red in one word with room between them, green in another.
  static uint32_t between(uint32_t a, uint32_t b, uint32_t part) {
    constexpr uint32_t kOuter = 0xFF00FF, kInner = 0x00FF00, kHalves = 0x800080;
    const uint32_t outer = ((a & kOuter) * (256 - part) + (b & kOuter) * part + kHalves) >> 8 & kOuter;
    const uint32_t inner = ((a & kInner) >> 8) * (256 - part) + ((b & kInner) >> 8) * part + 128;
    return outer | (inner & kInner);
  }
};

template <int depth>
struct Indices {
  static constexpr int kDepth = depth;

  static uint32_t load(const uint8_t* row, int x) { return Pixel<depth>::load(row, x); }

  static uint32_t mix(const Four<uint32_t>& four, uint32_t x, uint32_t y) {
    const bool is_right = x >= 0x8000, is_low = y >= 0x8000;
    return is_low ? (is_right ? four.below_right : four.below) : (is_right ? four.above_right : four.above);
  }

  static uint32_t inside(const uint8_t* above, const uint8_t* below, int at, uint32_t x, uint32_t y) {
    return load(y >= 0x8000 ? below : above, at + (x >= 0x8000 ? 1 : 0));
  }
};

// ---- Blank parts ----

// Which parts of a black and white picture are nothing but background. Most of a page is, and needs no mixing.
class Blanks {
 public:
  Blanks(ConstDibView picture, uint32_t background)
      : columns_((picture.width() + kSide - 1) / kSide),
        rows_((picture.height() + kSide - 1) / kSide),
        bytes_(static_cast<size_t>(columns_) / 8 + kWordBytes),
        inked_(bytes_ * static_cast<size_t>(rows_)) {
    const auto quiet = static_cast<uint8_t>(background != 0 ? 0xFF : 0);
    std::vector<uint8_t> ink(static_cast<size_t>(columns_));
    for (int y = 0; y < rows_; ++y) {
      std::ranges::fill(ink, uint8_t{0});
      for (int line = y * kSide; line < std::min((y + 1) * kSide, picture.height()); ++line)
        add_ink(picture.row_from_top(line).data(), quiet, ink);
      uint8_t* const cells = inked_.data() + static_cast<size_t>(y) * bytes_;
      for (size_t x = 0; x < ink.size(); ++x) cells[x / 8] |= static_cast<uint8_t>((ink[x] != 0 ? 1 : 0) << x % 8);
    }
  }

  // Of the pixels between two, in any order and less than 400 columns apart, and their neighbours to the right and below.
  bool all_blank(Fixed a, Fixed b) const {
    const auto [left, right] = cells(a.x, b.x, columns_);
    const auto [top, bottom] = cells(a.y, b.y, rows_);
    uint64_t inked = 0;
    for (int y = top; y <= bottom; ++y)
      inked |= load_word(inked_.data() + static_cast<size_t>(y) * bytes_ + static_cast<size_t>(left / 8)) >> left % 8;
    return (inked & ((uint64_t{2} << (right - left)) - 1)) == 0;
  }

 private:
  static constexpr int kSide = 8;  // of a cell, in pixels

  static void add_ink(const uint8_t* row, uint8_t quiet, std::span<uint8_t> ink) {
    for (size_t x = 0; x < ink.size(); ++x) ink[x] |= static_cast<uint8_t>(row[x] ^ quiet);
  }

  static std::pair<int, int> cells(int64_t a, int64_t b, int count) {
    const int low = whole(std::min(a, b)), high = whole(std::max(a, b));
    return {std::max(low, 0) / kSide, std::min((high + 1) / kSide, count - 1)};
  }

  int columns_, rows_;
  size_t bytes_;                // of a row of cells
  std::vector<uint8_t> inked_;  // a bit for each cell, the first one in the lowest
};

// ---- Runs of black and white pixels ----

// The pixels of a run as bits, the first one in the highest: those for majority(), and those at which the row changes or the column
// stays. Columns go on by one pixel or a little less.
class RunMasks {
 public:
  RunMasks(int32_t x, int32_t y, int32_t x_step, int32_t y_step) {
    const Fractions across(x, x_step), down(y, y_step);
    Lanes are_alone, are_breaks;
    for (size_t i = 0; i < 4; ++i) {
      are_alone[i] = decide_alone(across.parts[i], down.parts[i]);
      are_breaks[i] =
          _mm_or_si128(across.fell((1 << 16) - x_step, i), _mm_or_si128(down.fell(-y_step, i), down.rose(y_step, i)));
    }
    right = signs_of(across.parts), low = signs_of(down.parts), alone = signs_of(are_alone);
    breaks_ = std::abs(y_step) >= 1 << 16 ? ~uint64_t{0} : signs_of(are_breaks);
  }

  // Steps from a pixel to the next break, or to the end.
  int steps_from(int i) const {
    const uint64_t next = breaks_ << i << 1;
    return std::min(kRun - i, next == 0 ? kRun : std::countl_zero(next) + 1);
  }

  uint64_t right, low, alone;

 private:
  using Lanes = __m128i[4];  // of 16 bits; the first is the run's last pixel, as the lowest bit is

  struct Fractions {
    Fractions(int32_t first, int32_t step) {
      const __m128i back = _mm_mullo_epi16(_mm_set_epi16(7, 6, 5, 4, 3, 2, 1, 0), all(step));
      for (int i = 0; i < 4; ++i) parts[i] = _mm_sub_epi16(all(first + (kRun - 1 - 8 * i) * step), back);
    }

    // Whether a fraction passed zero in the step to it, which is shorter than a pixel.
    __m128i rose(int32_t step, size_t i) const { return is_less(parts[i], all(std::max(step, 0))); }
    __m128i fell(int32_t step, size_t i) const { return is_less(all(~std::max(step, 0)), parts[i]); }

    Lanes parts;
  };

  static __m128i all(int32_t value) { return _mm_set1_epi16(static_cast<int16_t>(value)); }

  // Unsigned.
  static __m128i is_less(__m128i a, __m128i b) {
    const __m128i zero = _mm_setzero_si128();
    return _mm_andnot_si128(_mm_cmpeq_epi16(_mm_subs_epu16(b, a), zero), _mm_cmpeq_epi16(zero, zero));
  }

  // The same as decides_alone().
  static __m128i decide_alone(__m128i x, __m128i y) {
    const auto weights = [](__m128i part) {
      const __m128i to_nearest = _mm_xor_si128(part, _mm_srai_epi16(part, 15));
      return _mm_sub_epi16(all(31), _mm_slli_epi16(_mm_srli_epi16(to_nearest, 12), 1));
    };
    return _mm_cmpgt_epi16(_mm_mullo_epi16(weights(x), weights(y)), all(512));
  }

  static uint64_t signs_of(const Lanes& lanes) {
    const auto signs = [&](size_t i) {
      return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(lanes[i], lanes[i + 1])));
    };
    return uint64_t{signs(2) << 16 | signs(0)} << (64 - kRun);
  }

  uint64_t breaks_;
};

// ---- Filling the result ----

template <class Kind>
class Turning {
 public:
  Turning(ConstDibView from, uint32_t background) : from_(from), background_(background) {}

  void fill(DibView to, const Mapping& mapping, const Blanks* blanks) const {
    for (int y = 0; y < to.height(); ++y) {
      const Fixed row_start = mapping.first + mapping.per_row * y;
      uint8_t* const row = to.row_from_top(y).data();
      for (int stretch = 0; stretch < to.width(); stretch += kStretch) {
        const int end = std::min(stretch + kStretch, to.width());
        if (is_background(row_start, mapping.per_column, stretch, end, blanks))
          put_background(row, stretch, end);
        else
          for (int x = stretch; x < end; x += kRun)
            fill_run(row, row_start, mapping.per_column, x, std::min(x + kRun, end), blanks);
      }
    }
  }

 private:
  static constexpr int kStretch = 8 * kRun;  // as much background is found at once

  bool is_background(Fixed row_start, Fixed step, int x, int end, const Blanks* blanks) const {
    const Fixed first = row_start + step * x, last = row_start + step * (end - 1);
    return is_outside(first, last) || (blanks != nullptr && blanks->all_blank(first, last));
  }

  void fill_run(uint8_t* row, Fixed row_start, Fixed step, int x, int end, const Blanks* blanks) const {
    const Fixed first = row_start + step * x, last = row_start + step * (end - 1);
    if (is_background(row_start, step, x, end, blanks))
      put_background(row, x, end);
    else if (is_inside(first) && is_inside(last))
      put_inside(row, x, end - x, first, step);
    else
      put_any(row, x, end - x, first, step);
  }

  // With a pixel to spare above and to the left: the steps of a run are rounded down.
  bool is_inside(Fixed at) const {
    return whole(at.x) >= 1 && whole(at.y) >= 1 && whole(at.x) < from_.width() - 1 && whole(at.y) < from_.height() - 1;
  }

  bool is_outside(Fixed a, Fixed b) const {
    const auto misses = [](int64_t one, int64_t other, int size) {
      return std::max(whole(one), whole(other)) < -1 || std::min(whole(one), whole(other)) >= size;
    };
    return misses(a.x, b.x, from_.width()) || misses(a.y, b.y, from_.height());
  }

  // Positions in a run have 16 bits of fraction.
  static int32_t sixteen(int64_t fixed) { return static_cast<int32_t>(fixed >> 16); }

  // The first pixel in the highest bit. Words of two rows have the pixels until the row changes, or the column stays.
  uint32_t mix_inside_bits(Fixed at, Fixed step, int count) const {
    const int left = whole(at.x), top = whole(at.y);
    const int32_t x = sixteen(at.x & 0xFFFFFFFF), y = sixteen(at.y & 0xFFFFFFFF);
    const int32_t x_step = sixteen(step.x), y_step = sixteen(step.y);
    const RunMasks masks(x, y, x_step, y_step);
    uint64_t word = 0;
    for (int i = 0; i < count;) {
      const auto pixels_of = [&](int row) {
        return pixels_at(from_.row_from_top(row), static_cast<size_t>(left >> 3)) << (left & 7) << ((x + i * x_step) >> 16);
      };
      const int row = top + ((y + i * y_step) >> 16);
      const uint64_t above = pixels_of(row), below = pixels_of(row + 1);
      const uint64_t any = above | above << 1 | below | below << 1;
      const int steps = masks.steps_from(i);
      if (first_of(any, steps) != 0)
        word |= first_of(majority<uint64_t>({above, above << 1, below, below << 1}, masks.right << i, masks.low << i,
                                            masks.alone << i),
                         steps) >>
                i;
      i += steps;
    }
    return static_cast<uint32_t>(first_of(word, count) >> (64 - kRun));
  }

  void put_inside(uint8_t* row, int x, int count, Fixed at, Fixed step) const {
    if constexpr (Kind::kDepth == 1) {
      store_bits(row, x, mix_inside_bits(at, step, count));
    } else {
      const int left = whole(at.x);
      const uint8_t* const top = from_.row_from_top(whole(at.y)).data();
      const auto down = -from_.stride();
      int32_t across = sixteen(at.x & 0xFFFFFFFF), along = sixteen(at.y & 0xFFFFFFFF);
      const int32_t x_step = sixteen(step.x), y_step = sixteen(step.y);
      for (int i = 0; i < count; ++i, across += x_step, along += y_step) {
        const uint8_t* const above = top + (along >> 16) * down;
        Pixel<Kind::kDepth>::store(
            row, x + i,
            Kind::inside(above, above + down, left + (across >> 16), static_cast<uint32_t>(across & 0xFFFF),
                         static_cast<uint32_t>(along & 0xFFFF)));
      }
    }
  }

  void put_any(uint8_t* row, int x, int count, Fixed at, Fixed step) const {
    const auto part = [](int64_t fixed) { return static_cast<uint32_t>(fixed >> 16 & 0xFFFF); };
    for (int i = 0; i < count; ++i, at = at + step) {
      const int left = whole(at.x), top = whole(at.y);
      Pixel<Kind::kDepth>::store(
          row, x + i,
          Kind::mix({pixel(left, top), pixel(left + 1, top), pixel(left, top + 1), pixel(left + 1, top + 1)}, part(at.x),
                    part(at.y)));
    }
  }

  void put_background(uint8_t* row, int x, int end) const {
    if constexpr (Kind::kDepth == 1) {
      const auto byte = static_cast<uint8_t>(background_ != 0 ? 0xFF : 0);
      std::fill(row + x / 8, row + end / 8, byte);
      if (end % 8 != 0) row[end / 8] = static_cast<uint8_t>(byte & 0xFF00 >> end % 8);
    } else {
      for (; x < end; ++x) Pixel<Kind::kDepth>::store(row, x, background_);
    }
  }

  uint32_t pixel(int x, int y) const {
    const bool exists = x >= 0 && y >= 0 && x < from_.width() && y < from_.height();
    return exists ? Kind::load(from_.row_from_top(y).data(), x) : background_;
  }

  static void store_bits(uint8_t* row, int x, uint32_t word) {
    word = __builtin_bswap32(word);
    std::memcpy(row + x / 8, &word, sizeof word);  // rows are whole words
  }

  ConstDibView from_;
  uint32_t background_;
};

// ---- Sizes and tables ----

// On a side, so that positions have room for their fractions.
constexpr int kMostPixels = 1 << 28;

[[noreturn]] void fail_for_size() {
  throw Problem(Fault::kLimit, "the turned picture would be too large; crop the picture first, or turn it by quarters");
}

Size turned_size(Size size, double angle, double aspect) {
  constexpr double kRounding = 1e-6;
  const double sine = std::abs(std::sin(angle)), cosine = std::abs(std::cos(angle));
  const double width = std::ceil(size.width * cosine + size.height * aspect * sine - kRounding);
  const double height = std::ceil(size.width * sine / aspect + size.height * cosine - kRounding);
  if (std::max(width, height) > kMostPixels) fail_for_size();
  return {static_cast<int>(width), static_cast<int>(height)};
}

// The number of the colour nearest to a grey.
uint32_t index_of(const Picture& picture, uint8_t level) {
  return nearest_color(used_colors(picture), {level, level, level, 0});
}

void change_to_table(const Picture& levels, const Picture& result) {
  std::array<uint8_t, 256> index{};
  for (int level = 0; level < 256; ++level)
    index[static_cast<size_t>(level)] = static_cast<uint8_t>(index_of(result, static_cast<uint8_t>(level)));
  const DibView from = levels.pixels(), to = result.pixels();
  with_depth(result.depth(), [&](auto depth) {
    for (int y = 0; y < to.height(); ++y)
      for (int x = 0; x < to.width(); ++x)
        Pixel<depth>::store(to.row(y).data(), x, index[from.row(y)[static_cast<size_t>(x)]]);
  });
}

Picture turned_between(const Picture& picture, double angle, Background background, Canvas canvas) {
  const Size from = {picture.width(), picture.height()};
  if (std::max(from.width, from.height) > kMostPixels) fail_for_size();
  const double aspect = across_per_down(picture.header());
  const Size to = canvas == Canvas::kSame ? from : turned_size(from, angle, aspect);
  const Mapping mapping = mapping_of(from, to, angle, aspect);
  const uint8_t level = background == Background::kWhite ? 255 : 0;

  const bool is_mixed_by_level = (picture.depth() == 4 || picture.depth() == 8) && is_gray(used_colors(picture));
  if (is_mixed_by_level && !has_gray_ramp(picture)) {
    const Picture levels = turned_between(luminance_of(picture), angle, background, canvas);
    Picture result = blank_like(picture, to, picture.depth());
    change_to_table(levels, result);
    return result;
  }

  Picture result = blank_like(picture, to, picture.depth());
  const ConstDibView pixels = picture.pixels();
  const uint32_t paper = picture.depth() <= 8 ? index_of(picture, level) : level * 0x010101u;
  if (picture.depth() == 24) {
    Turning<Colors>(pixels, paper).fill(result.pixels(), mapping, nullptr);
  } else if (is_mixed_by_level) {
    Turning<Grays>(pixels, paper).fill(result.pixels(), mapping, nullptr);
  } else if (picture.depth() == 8) {
    Turning<Indices<8>>(pixels, paper).fill(result.pixels(), mapping, nullptr);
  } else if (picture.depth() == 4) {
    Turning<Indices<4>>(pixels, paper).fill(result.pixels(), mapping, nullptr);
  } else {
    const Blanks blanks(pixels, paper);
    Turning<Bits>(pixels, paper).fill(result.pixels(), mapping, &blanks);
  }
  return result;
}

}  // namespace

Picture turned_by(Picture picture, double degrees, Background background, Canvas canvas) {
  if (!std::isfinite(degrees)) throw Problem(Fault::kWrongUse, "the angle is no number; give degrees such as 1.25");
  picture = workable(std::move(picture));
  const double within_turn = std::remainder(degrees, 360);
  const int quarters = static_cast<int>(std::lround(within_turn / 90));
  if (quarters != 0) picture = turned(std::move(picture), quarters * 90, background);
  const double rest = within_turn - quarters * 90;
  if (rest == 0) return picture;
  return turned_between(picture, rest * std::numbers::pi / 180, background, canvas);
}

}  // namespace vorel::programs
