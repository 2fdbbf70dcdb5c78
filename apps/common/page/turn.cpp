#include "common/page/turn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>
#include <vector>

#include "common/forms.h"
#include "common/page/units.h"
#include "common/problem.h"
#include "common/row_bits.h"
#include "core/gray.h"
#include "core/nearest_color.h"
#include "core/pixel.h"

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

// For each pair of fractions, of four bits each, a bit for each pattern of four pixels: whether more of the weight is set. The
// weights are taken in the middle of the steps, so that there are no ties.
constexpr auto kMajorities = [] {
  constexpr int kSteps = 16, kWhole = 2 * kSteps;
  std::array<uint16_t, kSteps * kSteps> table{};
  for (int y = 0; y < kSteps; ++y)
    for (int x = 0; x < kSteps; ++x)
      for (int pattern = 0; pattern < 16; ++pattern) {
        const int right = 2 * x + 1, left = kWhole - right, low = 2 * y + 1, high = kWhole - low;
        const int weight = (pattern & 8 ? left * high : 0) + (pattern & 4 ? right * high : 0) +
                           (pattern & 2 ? left * low : 0) + (pattern & 1 ? right * low : 0);
        if (2 * weight > kWhole * kWhole) table[static_cast<size_t>(y * kSteps + x)] |= static_cast<uint16_t>(1 << pattern);
      }
  return table;
}();

struct Bits {
  static constexpr int kDepth = 1, kSpare = 16;  // pixels that a load may go past its own

  static uint32_t load(const uint8_t* row, int x) { return Pixel<1>::load(row, x); }

  static uint32_t mix(const Four<uint32_t>& four, uint32_t x, uint32_t y) {
    return mix_pattern(four.above << 3 | four.above_right << 2 | four.below << 1 | four.below_right, x, y);
  }

  // Of two rows' pixels as words, the leftmost in the highest bit: the four that begin at `at`.
  static uint32_t inside(uint64_t above, uint64_t below, int at, uint32_t x, uint32_t y) {
    const int shift = 62 - at;
    return mix_pattern(static_cast<uint32_t>((above >> shift & 3) << 2 | (below >> shift & 3)), x, y);
  }

 private:
  static uint32_t mix_pattern(uint32_t pattern, uint32_t x, uint32_t y) {
    return kMajorities[(y >> 12) << 4 | x >> 12] >> pattern & 1;
  }
};

template <class Kind>
uint32_t mix_inside(const uint8_t* above, const uint8_t* below, int at, uint32_t x, uint32_t y) {
  return Kind::mix({Kind::load(above, at), Kind::load(above, at + 1), Kind::load(below, at), Kind::load(below, at + 1)}, x,
                   y);
}

struct Grays {
  static constexpr int kDepth = 8, kSpare = 1;

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
  static constexpr int kDepth = 24, kSpare = 1;

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
  static constexpr int kDepth = depth, kSpare = 1;

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
      : columns_((picture.width() + kSide - 1) / kSide), rows_((picture.height() + kSide - 1) / kSide) {
    inked_.resize(static_cast<size_t>(columns_) * static_cast<size_t>(rows_));
    const auto quiet = static_cast<uint8_t>(background != 0 ? 0xFF : 0);
    for (int y = 0; y < picture.height(); ++y) {
      const std::span<const uint8_t> row = picture.row_from_top(y);
      uint8_t* const cells = inked_.data() + static_cast<size_t>(y / kSide) * static_cast<size_t>(columns_);
      for (size_t i = 0; i < row.size(); ++i) cells[i / (kSide / 8)] |= static_cast<uint8_t>(row[i] ^ quiet);
    }
  }

  // Of the pixels between two, in any order, and their neighbours to the right and below.
  bool all_blank(Fixed a, Fixed b) const {
    const auto [left, right] = cells(a.x, b.x, columns_);
    const auto [top, bottom] = cells(a.y, b.y, rows_);
    for (int y = top; y <= bottom; ++y)
      for (int x = left; x <= right; ++x)
        if (inked_[static_cast<size_t>(y) * static_cast<size_t>(columns_) + static_cast<size_t>(x)] != 0) return false;
    return true;
  }

 private:
  static constexpr int kSide = 16;

  static std::pair<int, int> cells(int64_t a, int64_t b, int count) {
    const int low = whole(std::min(a, b)), high = whole(std::max(a, b));
    return {std::max(low, 0) / kSide, std::min((high + 1) / kSide, count - 1)};
  }

  int columns_, rows_;
  std::vector<uint8_t> inked_;
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
      for (int x = 0; x < to.width(); x += kRun) {
        const int count = std::min(kRun, to.width() - x);
        const Fixed start = row_start + mapping.per_column * x, end = start + mapping.per_column * (count - 1);
        if (is_outside(start, end) || (blanks != nullptr && blanks->all_blank(start, end)))
          put_background(row, x, count);
        else if (is_inside(start) && is_inside(end))
          put_inside(row, x, count, start, mapping.per_column);
        else
          put_any(row, x, count, start, mapping.per_column);
      }
    }
  }

 private:
  // With a pixel to spare above and to the left: the steps of a run are rounded down.
  bool is_inside(Fixed at) const {
    return whole(at.x) >= 1 && whole(at.y) >= 1 && whole(at.x) < from_.width() - Kind::kSpare &&
           whole(at.y) < from_.height() - 1;
  }

  bool is_outside(Fixed a, Fixed b) const {
    const auto misses = [](int64_t one, int64_t other, int size) {
      return std::max(whole(one), whole(other)) < -1 || std::min(whole(one), whole(other)) >= size;
    };
    return misses(a.x, b.x, from_.width()) || misses(a.y, b.y, from_.height());
  }

  // Positions in a run have 16 bits of fraction.
  static int32_t sixteen(int64_t fixed) { return static_cast<int32_t>(fixed >> 16); }

  // Steps until the row changes.
  static int steps_in_row(int32_t y, int32_t y_step) {
    const int32_t part = y & 0xFFFF;
    return y_step == 0 ? kRun : y_step > 0 ? (0xFFFF - part) / y_step + 1 : part / -y_step + 1;
  }

  // Steps that go one column on each. Others, by less than a column, stay in it now and then.
  static int steps_by_column(int32_t x, int32_t x_step) {
    const int32_t lag = (1 << 16) - x_step;
    return lag == 0 ? kRun : (x & 0xFFFF) / lag + 1;
  }

  // The first pixel in the highest bit. Most have four equal neighbours, which words of two rows tell at once; the others are mixed.
  uint32_t mix_inside_bits(Fixed at, Fixed step, int count) const {
    const int left = whole(at.x), top = whole(at.y);
    int32_t x = sixteen(at.x & 0xFFFFFFFF), y = sixteen(at.y & 0xFFFFFFFF);
    const int32_t x_step = sixteen(step.x), y_step = sixteen(step.y);
    uint32_t word = 0;
    for (int i = 0, steps = 0; i < count; i += steps, x += steps * x_step, y += steps * y_step) {
      steps = std::min({count - i, steps_in_row(y, y_step), steps_by_column(x, x_step)});
      const auto pixels_of = [&](int row) {
        return pixels_at(from_.row_from_top(row), static_cast<size_t>(left >> 3)) << (left & 7) << (x >> 16);
      };
      const uint64_t above = pixels_of(top + (y >> 16)), below = pixels_of(top + (y >> 16) + 1);
      const uint64_t all = above & above << 1 & below & below << 1, any = above | above << 1 | below | below << 1;
      word |= static_cast<uint32_t>(first_of(all, steps) >> 32) >> i;
      for (uint64_t mixed = first_of(any & ~all, steps); mixed != 0;) {
        const int k = std::countl_zero(mixed);
        mixed ^= uint64_t{1} << 63 >> k;
        const int32_t x_there = x + k * x_step, y_there = y + k * y_step;
        word |=
            Kind::inside(above, below, k, static_cast<uint32_t>(x_there & 0xFFFF), static_cast<uint32_t>(y_there & 0xFFFF))
            << (kRun - 1 - i - k);
      }
    }
    return word;
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

  void put_background(uint8_t* row, int x, int count) const {
    if constexpr (Kind::kDepth == 1)
      store_bits(row, x, background_ == 0 ? 0 : ~uint32_t{0} << (kRun - count));
    else
      for (int i = 0; i < count; ++i) Pixel<Kind::kDepth>::store(row, x + i, background_);
  }

  uint32_t pixel(int x, int y) const {
    const bool exists = x >= 0 && y >= 0 && x < from_.width() && y < from_.height();
    return exists ? Kind::load(from_.row_from_top(y).data(), x) : background_;
  }

  static void store_bits(uint8_t* row, int x, uint32_t word) {
    for (int i = 0; i < 4; ++i) row[x / 8 + i] = static_cast<uint8_t>(word >> (24 - 8 * i));  // rows are whole words
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
