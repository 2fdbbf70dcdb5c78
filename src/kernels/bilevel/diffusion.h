// Error diffusion: what a pixel is too light or too dark goes to the pixels to come.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/row_writer.h"

namespace vorel::kernels::VOREL_LEVEL {

inline constexpr int kThreshold = 128;  // what is lighter becomes white
inline constexpr int kWhite = 255;

// A row of numbers with room on both sides for what is spread past its ends.
template <class Number>
class ErrorRow {
 public:
  explicit ErrorRow(size_t length) : numbers_(length + 2 * kRoom), length_(length) {}

  Number* data() { return numbers_.data() + kRoom; }

  // Takes over the row itself, not the room beside it.
  void copy(ErrorRow& other) { std::copy_n(other.data(), length_, data()); }
  // Sums wrap at the width of the numbers.
  void add(std::span<const uint8_t> values) {
    Number* to = data();
    for (const uint8_t value : values) {
      *to = static_cast<Number>(*to + value);
      ++to;
    }
  }

 private:
  static constexpr size_t kRoom = 20;

  std::vector<Number> numbers_;
  size_t length_;
};

// The row being worked on and those below it.
template <class Number>
struct ErrorRows {
  Number *current, *below, *further;
};

// A share of an error, cut towards zero.
template <int kPart, int kWhole>
constexpr int share_of(int error) {
  return error * kPart / kWhole;
}

template <class Number>
void add(Number& to, int share) {
  to = static_cast<Number>(to + share);
}
template <class Number>
void assign(Number& to, int share) {
  to = static_cast<Number>(share);
}

// Four neighbours (Floyd and Steinberg, 1976). Shares for the row below are assigned, not added: of several that reach a pixel the
// last one stands. Callers count on it. kShift moves them left.
template <int kShift>
struct FloydSteinberg {
  template <class Number>
  static void spread(const ErrorRows<Number>& rows, int x, int error) {
    add(rows.current[x + 1], share_of<7, 16>(error));
    Number* const below = rows.below + x - kShift;
    assign(below[-1], share_of<3, 16>(error));
    assign(below[0], share_of<5, 16>(error));
    assign(below[1], share_of<1, 16>(error));
  }
};

// Twelve neighbours (Jarvis, Judice and Ninke, 1976). Shares for the second row below are assigned, not added. The weights of its
// last two are parameters: one of the library's callers has them the wrong way round, and its callers count on it.
template <int kNext, int kLast>
struct JarvisJudiceNinke {
  template <class Number>
  static void spread(const ErrorRows<Number>& rows, int x, int error) {
    const int one = share_of<1, 48>(error), three = share_of<3, 48>(error), five = share_of<5, 48>(error),
              seven = share_of<7, 48>(error);
    Number* const current = rows.current + x;
    add(current[1], seven);
    add(current[2], five);
    Number* const below = rows.below + x;
    add(below[-2], three);
    add(below[-1], five);
    add(below[0], seven);
    add(below[1], five);
    add(below[2], three);
    Number* const further = rows.further + x;
    assign(further[-2], one);
    assign(further[-1], three);
    assign(further[0], five);
    assign(further[1], share_of<kNext, 48>(error));
    assign(further[2], share_of<kLast, 48>(error));
  }
};

// Makes each number of the current row black or white, and spreads what is left over.
template <class Method, class Number>
void threshold_row(const ErrorRows<Number>& rows, int width, uint8_t* bits) {
  RowWriter<1> writer(bits, 0);
  for (int x = 0; x < width; ++x) {
    const int value = rows.current[x];
    const bool is_white = value > kThreshold;
    writer.put(is_white ? 1 : 0);
    const int error = static_cast<Number>(is_white ? value - kWhite : value);
    if (error != 0) Method::spread(rows, x, error);
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
