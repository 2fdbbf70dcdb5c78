#include "geometry/dib_turn.h"

#include <utility>

#include "core/pixel.h"
#include "dib/open_dib.h"
#include "kernels/turn/turn.h"

namespace vorel::geometry {
namespace {

// Every result has room behind its rows for the pixel that the counter-clockwise turn writes past the last one.
constexpr uint32_t kSpareBytes = 4;

constexpr bool is_quarter(DibTurn turn) { return turn == DibTurn::kClockwise || turn == DibTurn::kCounterClockwise; }

// Rows are as long as all planes together.
constexpr LayoutRule kRule = {.joins_planes = true};

DibHeader quarter_turned_header(DibHeader header) {
  std::swap(header.width, header.height);
  std::swap(header.x_per_metre, header.y_per_metre);
  header.image_bytes = static_cast<uint32_t>(Layout::of(header, kRule).rows.value());
  return header;
}

DibView last_rows(DibView view, int count) {
  return {view.row(view.height() - count).data(), view.stride(), view.width(), count, view.depth()};
}

void turn_clockwise(const OpenDib& source, DibView result) {
  const ConstDibView held = source.held_pixels();
  const DibView written = last_rows(result, held.width()).with_width(held.height());
  kernels::turn().quarter_turn(held, written,
                               {.first_column = 0, .column_step = 1, .first_row = held.width() - 1, .row_step = -1});
}

// A quirk that is kept: every pixel lands one column too far right. Column 0 stays empty, and source row 0 goes to the column
// past the last: the row's padding, the next row's first pixel, or the spare bytes.
void turn_counter_clockwise(const OpenDib& source, DibView result) {
  const ConstDibView held = source.held_pixels();
  if (held.height() == 0) return;
  const int height = source.pixels().height();
  const DibView written = result.first_rows(held.width());
  kernels::turn().quarter_turn(held.without_first_row(), written,
                               {.first_column = height - 1, .column_step = -1, .first_row = 0, .row_step = 1});
  kernels::turn().row_to_column(held.first_rows(1), written.with_width(height + 1), height);
}

// Rows that the source does not hold are zero, and are zero in the result already.
void move_pixels(const OpenDib& source, DibView result, DibTurn turn) {
  const ConstDibView held = source.held_rows();
  // After a quarter turn the rows are columns.
  const DibView last = is_quarter(turn) ? result : last_rows(result, held.height());
  switch (turn) {
    case DibTurn::kClockwise: return turn_clockwise(source, result);
    case DibTurn::kCounterClockwise: return turn_counter_clockwise(source, result);
    case DibTurn::kHalf: return kernels::turn().half_turn(held, last);
    case DibTurn::kLeftRight: return kernels::turn().mirror_left_right(held, result.first_rows(held.height()));
    case DibTurn::kTopBottom: {
      const int whole_row = static_cast<int>(held.stride());
      return kernels::turn().mirror_top_bottom(held.byte_rows(whole_row), last.byte_rows(whole_row));
    }
  }
}

}  // namespace

Result<OwnedDib> turned(const LockedDib& source, DibTurn turn) {
  const DibHeader& header = source.header();
  if (header.size < kHeaderBytes || header.width < 0 || header.height < 0) return Error::kUnreported;

  const DibHeader result_header = is_quarter(turn) ? quarter_turned_header(header) : header;
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kRule).or_error(Error::kUnreported));
  const bool copies_rows = turn == DibTurn::kTopBottom;
  const bool is_overwritten = opened.is_complete() && (copies_rows || is_pixel_depth(header.depth));
  NewDib::Allocate* const allocate = is_overwritten ? OwnedDib::allocate_unset : OwnedDib::allocate;
  NewDib result = VOREL_TRY(NewDib::like(opened, result_header, allocate, kSpareBytes).or_error(Error::kUnreported));
  if (is_overwritten) copies_rows ? result.clear_behind_rows() : result.clear_padding();
  move_pixels(opened, result.pixels(), turn);
  return OwnedDib(std::move(result));
}

}  // namespace vorel::geometry
