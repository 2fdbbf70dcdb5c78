// Pictures that claim more than their block holds: all pixels behind the block's end are zero. Where a pixel of the result
// depends only on nearby pixels, all zero pixels give the same result. It is computed once and copied, so that a block of a few
// bytes does not take the time of the picture that it claims.
#pragma once

#include <algorithm>
#include <cstring>
#include <span>

#include "dib/open_dib.h"

namespace vorel {

// Continues the first `done` bytes with copies of the last `period` of them.
inline void repeat_bytes(std::span<uint8_t> bytes, size_t done, size_t period) {
  const uint8_t* const first = bytes.data() + done - period;
  while (done < bytes.size()) {
    const auto filled = static_cast<size_t>(bytes.data() + done - first);
    const size_t count = std::min(filled, bytes.size() - done);
    std::memcpy(bytes.data() + done, first, count);
    done += count;
  }
}

// Rows from `done` on become copies of the `period` rows in front of them. Padding is copied too.
inline void repeat_rows(DibView view, int done, int period) {
  const auto stride = static_cast<size_t>(view.stride());
  repeat_bytes({view.row(0).data(), stride * static_cast<size_t>(view.height())}, stride * static_cast<size_t>(done),
               stride * static_cast<size_t>(period));
}

// The first rows and columns of a picture: all that its block holds, `reach` more, and at least one more row and column, which
// depend only on zeros. The whole picture if the block is complete.
class HeldPart {
 public:
  HeldPart(const OpenDib& source, int reach) {
    const ConstDibView all = source.pixels(), held = source.held_pixels();
    // Whole bytes at every depth, and more than kernels treat as an edge.
    constexpr int64_t kColumns = 64;
    const int64_t held_columns = held.height() == 0 ? 0 : held.width();
    rows_ = static_cast<int>(std::min<int64_t>(all.height(), int64_t{held.height()} + reach + 1));
    columns_ = static_cast<int>(std::min<int64_t>(all.width(), (held_columns + reach) / kColumns * kColumns + kColumns));
  }

  int rows() const { return rows_; }

  template <class Byte>
  BasicView<Byte> of(BasicView<Byte> view) const {
    return view.first_rows(rows_).with_width(columns_);
  }

  // Copies the results of zero pixels to the rest of a picture of 8 or 24 bits.
  void repeat_in(DibView result) const {
    const auto pixel = static_cast<size_t>(result.depth() / 8);
    for (int y = 0; y < rows_; ++y) repeat_bytes(result.row(y), static_cast<size_t>(columns_) * pixel, pixel);
    if (rows_ < result.height()) repeat_rows(result, rows_, 1);
  }

 private:
  int rows_, columns_;
};

// Fills a picture of 8 or 24 bits, which may be the source itself, with a kernel that reads pixels at most `reach` away and
// repeats the edges.
template <class Kernel>
void fill_from_held(const OpenDib& source, DibView result, int reach, Kernel kernel) {
  const HeldPart part(source, reach);
  kernel(part.of(ConstDibView(source.pixels())), part.of(result));
  // In place, pixels behind the block's end are dropped.
  const bool is_in_place = result.row(0).data() == source.pixels().row(0).data();
  if (!is_in_place) part.repeat_in(result);
}

// Fills a picture with a kernel, fill(rows). A row may depend on the same and later rows of the source, and on its number modulo
// `period`.
template <class Fill>
void fill_rows_from_held(const OpenDib& source, DibView result, int period, Fill fill) {
  const auto rows = static_cast<int>(std::min<int64_t>(result.height(), int64_t{source.held_rows().height()} + period));
  fill(result.first_rows(rows));
  if (rows < result.height()) repeat_rows(result, rows, period);
}

}  // namespace vorel
