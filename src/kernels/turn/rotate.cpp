#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

#include "core/pixel.h"
#include "core/word.h"
#include "kernels/cache.h"
#include "kernels/lanes.h"
#include "kernels/turn/functions.h"

// The result is written tile by tile, so that the source pixels of a tile stay in cache. Pixels of less than a byte are unpacked
// around a tile and packed again.
namespace vorel::kernels::VOREL_LEVEL {
namespace {

constexpr int kTileColumns = 64;
constexpr int kRowsAhead = 4;  // rows of the result, read into the caches before they are written

// Columns of a tile, from `begin` to before `end`, whose pixels lie in the source. The source is convex, so they are
// consecutive.
struct Range {
  int begin, end;

  bool is_empty() const { return begin >= end; }
};

// The part of the source that a tile needs.
struct Box {
  int left, top, right, bottom;  // right and bottom inclusive

  static Box none() { return {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN}; }
  bool is_empty() const { return left > right; }
  void include(int x, int y) {
    left = std::min(left, x);
    right = std::max(right, x);
    top = std::min(top, y);
    bottom = std::max(bottom, y);
  }
};

// Prefetches the source of the next tile, a part with each row of this one.
class TileAhead {
 public:
  // `step` leads from a tile's pixels to those of the next one.
  TileAhead(ConstDibView source, Box box, Point step)
      : source_(source),
        left_(moved(box.left, step.x, source.width())),
        right_(moved(box.right, step.x, source.width())),
        row_(moved(box.top, step.y, source.height())),
        end_(moved(box.bottom, step.y, source.height()) + 1) {}

  template <int kDepth>
  [[gnu::always_inline]] void read(int rows_left) {
    const size_t begin = row_bytes(kDepth, left_), end = row_bytes(kDepth, right_ + 1);
    for (const int until = row_ + (end_ - row_ + rows_left - 1) / rows_left; row_ < until; ++row_)
      read_ahead(source_.row(row_).data() + begin, end - begin);
  }

 private:
  static int moved(int at, double step, int size) { return static_cast<int>(std::clamp(at + step, 0.0, size - 1.0)); }

  ConstDibView source_;
  int left_, right_, row_, end_;
};

// Offsets of pixels in memory, in bytes from its start. Sums wrap: only offsets of pixels of the source are valid.
template <size_t kPixelBytes>
struct Grid {
  size_t stride, origin = 0;

  size_t offset(int x, int y) const {
    return static_cast<size_t>(std::ptrdiff_t{y}) * stride + static_cast<size_t>(std::ptrdiff_t{x}) * kPixelBytes;
  }
  size_t at(int x, int y) const { return origin + offset(x, y); }
};

// One coordinate along a row of the result, stepped by integers as in Bresenham's line algorithm. The path from the row's start is
// the same in every row.
class Axis {
 public:
  Axis(double across, double step, int64_t columns, int size)
      : share_(2 * rounded<int>(std::abs(across))),
        step_(step >= 0 ? 1 : -1),
        columns_(static_cast<int>(columns)),
        size_(size) {}

  void restart() { error_ = moved_ = 0; }
  void advance() {
    error_ += share_;
    if (error_ <= columns_) return;
    error_ -= 2 * columns_;
    moved_ += step_;
  }
  int moved() const { return moved_; }

  // The first column of a row at which the coordinate is no longer in front of the source, or is behind it.
  int64_t entry(int start) const { return column_of(step_ > 0 ? -int64_t{start} : int64_t{start} - size_ + 1); }
  int64_t exit(int start) const { return column_of(step_ > 0 ? int64_t{size_} - start : int64_t{start} + 1); }

 private:
  // The column at which this many steps are made.
  int64_t column_of(int64_t steps) const {
    if (steps <= 0) return 0;
    if (share_ == 0) return INT64_MAX;
    return (2 * columns_ * steps - columns_ + share_) / share_;
  }

  int share_, step_;
  int64_t columns_;
  int size_, moved_ = 0;
  int64_t error_ = 0;
};

// The pixels of a band of tiles, stepped by integers.
class CountedPixels {
 public:
  static constexpr int kRows = 64;

  CountedPixels(Size source, const Rotation& rotation)
      : row_step_(rotation.row_step),
        width_(rotation.width),
        x_axis_(rotation.across.x, rotation.column_step.x, rotation.width - 1, source.width),
        y_axis_(rotation.across.y, rotation.column_step.y, rotation.width - 1, source.height) {}

  // Starts the rows at a position and returns the position of the row behind them.
  Point start_band(Point position, int rows) {
    for (int i = 0; i < rows; ++i, position = position + row_step_) {
      const int x = rounded<int>(position.x), y = rounded<int>(position.y);
      const int64_t entry = std::max(x_axis_.entry(x), y_axis_.entry(y));
      const int64_t exit = std::min({x_axis_.exit(x), y_axis_.exit(y), width_});
      rows_[i] = {x, y, entry, exit};
    }
    x_axis_.restart();
    y_axis_.restart();
    return position;
  }

  // Skipping tiles outside the source would save next to nothing.
  bool passes_by(int) { return false; }

  // Starts the next columns.
  void start_tile(int column, int count) {
    column_ = column;
    count_ = count;
    for (int i = 0; i < count; ++i) {
      x_moved_[i] = x_axis_.moved();
      y_moved_[i] = y_axis_.moved();
      x_axis_.advance();
      y_axis_.advance();
    }
  }

  Range range(int row) const {
    const auto in_tile = [&](int64_t column) { return static_cast<int>(std::clamp<int64_t>(column - column_, 0, count_)); };
    return {in_tile(rows_[row].entry), in_tile(rows_[row].exit)};
  }
  int x(int row, int column) const { return rows_[row].x + x_moved_[column]; }
  int y(int row, int column) const { return rows_[row].y + y_moved_[column]; }

  // Computes the offsets of the columns in a grid.
  template <size_t kPixelBytes>
  void compute_offsets(const Grid<kPixelBytes>& grid) {
    for (int i = 0; i < count_; ++i) offsets_[i] = grid.offset(x_moved_[i], y_moved_[i]);
  }
  template <size_t kPixelBytes>
  auto offsets(int row, const Grid<kPixelBytes>& grid) const {
    return [first = grid.at(rows_[row].x, rows_[row].y), offsets = offsets_](int column) { return first + offsets[column]; };
  }

 private:
  struct Row {
    int x, y;             // where it starts in the source
    int64_t entry, exit;  // its columns with pixels
  };

  Point row_step_;
  int64_t width_;
  Axis x_axis_, y_axis_;
  Row rows_[kRows];
  int column_ = 0, count_ = 0;
  int x_moved_[kTileColumns], y_moved_[kTileColumns];
  size_t offsets_[kTileColumns];
};

// As many doubles as the level has in a vector.
class Doubles {
 public:
#ifdef __AVX2__
  static constexpr int kCount = 4;

  static Doubles all(double value) { return {_mm256_set1_pd(value)}; }
  static Doubles load(const double* values) { return {_mm256_loadu_pd(values)}; }
  void store(double* values) const { _mm256_storeu_pd(values, all_); }
  void store_rounded(int32_t* values) const {
    const __m256d half = _mm256_or_pd(_mm256_and_pd(all_, _mm256_set1_pd(-0.0)), _mm256_set1_pd(0.5));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(values), _mm256_cvttpd_epi32(_mm256_add_pd(all_, half)));
  }
  friend Doubles operator+(Doubles a, Doubles b) { return {_mm256_add_pd(a.all_, b.all_)}; }

 private:
  Doubles(__m256d all) : all_(all) {}

  __m256d all_;
#else
  static constexpr int kCount = 2;

  static Doubles all(double value) { return {_mm_set1_pd(value)}; }
  static Doubles load(const double* values) { return {_mm_loadu_pd(values)}; }
  void store(double* values) const { _mm_storeu_pd(values, all_); }
  void store_rounded(int32_t* values) const {
    const __m128d half = _mm_or_pd(_mm_and_pd(all_, _mm_set1_pd(-0.0)), _mm_set1_pd(0.5));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(values), _mm_cvttpd_epi32(_mm_add_pd(all_, half)));
  }
  friend Doubles operator+(Doubles a, Doubles b) { return {_mm_add_pd(a.all_, b.all_)}; }

 private:
  Doubles(__m128d all) : all_(all) {}

  __m128d all_;
#endif
};

// The same, by exact positions: several rows at a time, because each position waits for the one before it.
class ExactPixels {
 public:
  static constexpr int kRows = 16;

  ExactPixels(Size source, const Rotation& rotation)
      : source_(source), step_(rotation.column_step), row_step_(rotation.row_step) {}

  Point start_band(Point position, int rows) {
    last_row_ = rows - 1;
    for (int i = 0; i < kRows; ++i) {
      x_at_[i] = position.x;
      y_at_[i] = position.y;
      if (i < rows) position = position + row_step_;
    }
    return position;
  }

  // Skips the next columns if none of their pixels can lie in the source.
  bool passes_by(int count) {
    const auto is_outside = [&](const double* starts, double step, int size) {
      const double distance = step * count, a = starts[0], b = starts[last_row_];
      const double least = std::min(a, b) + std::min(distance, 0.0), most = std::max(a, b) + std::max(distance, 0.0);
      return most < -kMargin || least > size + kMargin;
    };
    if (!is_outside(x_at_, step_.x, source_.width) && !is_outside(y_at_, step_.y, source_.height)) return false;
    step_columns(count, [](int, int, const Doubles&, const Doubles&) {});
    return true;
  }

  void start_tile(int, int count) {
    count_ = count;
    step_columns(count, [this](int row, int column, const Doubles& x, const Doubles& y) {
      x.store_rounded(&x_[column][row]);
      y.store_rounded(&y_[column][row]);
    });
  }

  Range range(int row) const {
    const auto is_inside = [&](int column) {
      return static_cast<unsigned>(x(row, column)) < static_cast<unsigned>(source_.width) &&
             static_cast<unsigned>(y(row, column)) < static_cast<unsigned>(source_.height);
    };
    Range range{0, count_};
    if (is_inside(0) && is_inside(count_ - 1)) return range;
    while (range.begin < count_ && !is_inside(range.begin)) ++range.begin;
    while (range.end > range.begin && !is_inside(range.end - 1)) --range.end;
    return range;
  }
  int x(int row, int column) const { return x_[column][row]; }
  int y(int row, int column) const { return y_[column][row]; }

  template <size_t kPixelBytes>
  void compute_offsets(const Grid<kPixelBytes>&) {}
  template <size_t kPixelBytes>
  auto offsets(int row, const Grid<kPixelBytes>& grid) const {
    return [grid, x = &x_[0][row], y = &y_[0][row]](int column) { return grid.at(x[column * kRows], y[column * kRows]); };
  }

 private:
  static constexpr double kMargin = 2;  // pixels; rounding moves positions by far less

  // Steps through every column, unused ones included: every addition is rounded, and the rounding errors add up. Calls
  // take(row, column, x, y) for groups of rows.
  template <class Take>
  [[gnu::always_inline]] void step_columns(int count, Take take) {
    const Doubles x_step = Doubles::all(step_.x), y_step = Doubles::all(step_.y);
    for (int row = 0; row < kRows; row += Doubles::kCount) {
      Doubles x = Doubles::load(x_at_ + row), y = Doubles::load(y_at_ + row);
      for (int column = 0; column < count; ++column, x = x + x_step, y = y + y_step) take(row, column, x, y);
      x.store(x_at_ + row);
      y.store(y_at_ + row);
    }
  }

  Size source_;
  Point step_, row_step_;
  int count_ = 0, last_row_ = 0;
  double x_at_[kRows], y_at_[kRows];
  int32_t x_[kTileColumns][kRows], y_[kTileColumns][kRows];
};

// Copies the pixels of a row of a tile, a byte or three bytes each.
template <class Offsets>
void copy_bytes(const uint8_t* source, uint8_t* target, Range range, const Offsets& offset) {
  for (int i = range.begin; i < range.end; ++i) target[i] = source[offset(i)];
}

template <class Offsets>
void copy_colors(const uint8_t* source, uint8_t* target, Range range, const Offsets& offset) {
  int i = range.begin;
  target += static_cast<size_t>(i) * 3;
  // Stores four bytes; the last one belongs to the next pixel, which comes after.
  for (; i + 1 < range.end; ++i, target += 3) {
    const uint8_t* const from = source + offset(i);
    uint16_t blue_green;
    std::memcpy(&blue_green, from, sizeof blue_green);
    const uint32_t pixel = blue_green | uint32_t{from[2]} << 16;
    std::memcpy(target, &pixel, sizeof pixel);
  }
  if (i < range.end) std::memcpy(target, source + offset(i), 3);
}

// The bits of each byte, a byte each, the highest one first.
struct BitTable {
  uint64_t words[256] = {};

  constexpr BitTable() {
    for (unsigned byte = 0; byte < 256; ++byte)
      for (unsigned bit = 0; bit < 8; ++bit) words[byte] |= uint64_t{byte >> (7 - bit) & 1} << 8 * bit;
  }
};
constexpr BitTable kBits;

// Pixels of less than a byte, unpacked to a byte each.
class Patch {
 public:
  // Unpacks the box, widened on the left to a whole byte.
  template <int kDepth>
  void unpack(ConstDibView source, const Box& box) {
    constexpr int kPixels = 8 / kDepth;
    left_ = box.left / kPixels * kPixels;
    top_ = box.top;
    const int bytes = box.right / kPixels - box.left / kPixels + 1;
    for (int y = box.top; y <= box.bottom; ++y) {
      const uint8_t* const from = source.row(y).data() + left_ / kPixels;
      uint8_t* const to = pixels_[y - box.top];
      for (int i = 0; i < bytes; ++i) {
        if constexpr (kDepth == 1) {
          store_word(to + i * 8, kBits.words[from[i]]);
        } else {
          to[2 * i] = static_cast<uint8_t>(from[i] >> 4);
          to[2 * i + 1] = from[i] & 0x0F;
        }
      }
    }
  }

  const uint8_t* pixels() const { return pixels_[0]; }
  // Indexed by the source's coordinates.
  Grid<1> grid() const {
    Grid<1> grid{kStride};
    grid.origin = 0 - grid.offset(left_, top_);
    return grid;
  }

 private:
  // Fits a tile turned by any angle, with part of a byte on either side.
  static constexpr size_t kStride = 128;
  static constexpr int kRows = 112;

  int left_ = 0, top_ = 0;
  uint8_t pixels_[kRows][kStride];
};

// A row of a tile before it is written, a byte or three bytes a pixel: single stores would wait for each cache line of the
// result.
template <int kDepth>
struct Line {
  uint8_t pixels[kTileColumns * (kDepth == 24 ? 3 : 1)];

  // By vectors: compilers clear arrays of this size by an instruction with a slow start.
  void clear() {
    for (size_t i = 0; i < sizeof pixels; i += kVectorBytes) store(pixels + i, Bytes{});
  }

  void write(uint8_t* target, int count) const {
    if constexpr (kDepth >= 8) {
      copy(pixels, target, count);
    } else {
      uint8_t packed[kTileColumns * kDepth / 8];
      if constexpr (kDepth == 1) {
        // Bit 8 * i moves to bit 7 - i of the highest byte.
        for (int i = 0; i < 8; ++i) packed[i] = static_cast<uint8_t>(load_word(pixels + i * 8) * 0x8040201008040201 >> 56);
      } else {
        for (int i = 0; i < kTileColumns / 2; ++i) packed[i] = static_cast<uint8_t>(pixels[2 * i] << 4 | pixels[2 * i + 1]);
      }
      copy(packed, target, count);
    }
  }

 private:
  static void copy(const uint8_t* bytes, uint8_t* target, int count) {
    constexpr size_t kWhole = row_bytes(kDepth, kTileColumns);
    if (count == kTileColumns)
      std::memcpy(target, bytes, kWhole);
    else
      std::memcpy(target, bytes, row_bytes(kDepth, count));
  }
};

template <int kDepth>
void clear_tile(DibView result, int column, int count, int first_row, int rows) {
  for (int i = 0; i < rows; ++i)
    std::memset(result.row(first_row + i).data() + row_bytes(kDepth, column), 0, row_bytes(kDepth, count));
}

template <int kDepth, class Pixels>
void write_tile(ConstDibView source, DibView result, Pixels& pixels, Point tile_step, int column, int count, int first_row,
                int rows) {
  Range ranges[Pixels::kRows];
  Box box = Box::none();
  for (int i = 0; i < rows; ++i) {
    const Range range = ranges[i] = pixels.range(i);
    if (range.is_empty()) continue;
    box.include(pixels.x(i, range.begin), pixels.y(i, range.begin));
    box.include(pixels.x(i, range.end - 1), pixels.y(i, range.end - 1));
  }
  const size_t byte = row_bytes(kDepth, column);
  if (box.is_empty()) return clear_tile<kDepth>(result, column, count, first_row, rows);
  const auto write = [&](const uint8_t* memory, const auto& grid) {
    pixels.compute_offsets(grid);
    TileAhead ahead(source, box, tile_step);
    for (int i = 0; i < rows; ++i) {
      if constexpr (kDepth >= 8) ahead.read<kDepth>(rows - i);
      if (i + kRowsAhead < rows) write_ahead(result.row(first_row + i + kRowsAhead).data() + byte, row_bytes(kDepth, count));
      Line<kDepth> line;
      if (ranges[i].begin > 0 || ranges[i].end < kTileColumns) line.clear();
      if constexpr (kDepth == 24)
        copy_colors(memory, line.pixels, ranges[i], pixels.offsets(i, grid));
      else
        copy_bytes(memory, line.pixels, ranges[i], pixels.offsets(i, grid));
      line.write(result.row(first_row + i).data() + byte, count);
    }
  };
  if constexpr (kDepth < 8) {
    Patch patch;
    patch.unpack<kDepth>(source, box);
    write(patch.pixels(), patch.grid());
  } else {
    write(source.row(0).data(), Grid<kDepth / 8>{static_cast<size_t>(source.stride())});
  }
}

template <int kDepth, class Pixels>
void write_tiles(ConstDibView source, DibView result, const Rotation& rotation) {
  Pixels pixels(source.size(), rotation);
  Point position = rotation.first;
  const Point tile_step = {rotation.column_step.x * kTileColumns, rotation.column_step.y * kTileColumns};
  for (int y = 0; y < result.height(); y += Pixels::kRows) {
    const int rows = std::min(Pixels::kRows, result.height() - y);
    position = pixels.start_band(position, rows);
    for (int x = 0; x < result.width(); x += kTileColumns) {
      const int count = std::min(kTileColumns, result.width() - x);
      if (pixels.passes_by(count)) {
        clear_tile<kDepth>(result, x, count, y, rows);
        continue;
      }
      pixels.start_tile(x, count);
      write_tile<kDepth>(source, result, pixels, tile_step, x, count, y, rows);
    }
  }
}

}  // namespace

void rotate(ConstDibView source, DibView result, const Rotation& rotation, Stepping stepping) {
  if (source.width() <= 0 || source.height() <= 0) return;
  with_depth(source.depth(), [&](auto depth) {
    if (stepping == Stepping::kInteger)
      write_tiles<depth(), CountedPixels>(source, result, rotation);
    else
      write_tiles<depth(), ExactPixels>(source, result, rotation);
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
