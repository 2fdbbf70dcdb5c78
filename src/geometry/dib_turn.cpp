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

void move_pixels(ConstDibView source, DibView result, DibTurn turn) {
  const int width = source.width();
  const int height = source.height();
  switch (turn) {
    case DibTurn::kClockwise:
      return kernels::turn().quarter_turn(source, result,
                                          {.first_column = 0, .column_step = 1, .first_row = width - 1, .row_step = -1});
    case DibTurn::kCounterClockwise:
      // A quirk that is kept: every pixel lands one column too far right. Column 0 stays empty, and source row 0 goes to the
      // column past the last: the row's padding, the next row's first pixel, or the spare bytes.
      if (height == 0) return;
      kernels::turn().quarter_turn(source.without_first_row(), result,
                                   {.first_column = height - 1, .column_step = -1, .first_row = 0, .row_step = 1});
      return kernels::turn().row_to_column(source.first_rows(1), result.with_width(height + 1), height);
    case DibTurn::kHalf: return kernels::turn().half_turn(source, result);
    case DibTurn::kLeftRight: return kernels::turn().mirror_left_right(source, result);
    case DibTurn::kTopBottom: {
      const int whole_row = static_cast<int>(source.stride());
      return kernels::turn().mirror_top_bottom(source.byte_rows(whole_row), result.byte_rows(whole_row));
    }
  }
}

}  // namespace

Result<OwnedDib> turned(const LockedDib& source, DibTurn turn) {
  const DibHeader& header = source.header();
  if (header.size < kHeaderBytes || header.width < 0 || header.height < 0) return Error::kUnreported;

  const DibHeader result_header = is_quarter(turn) ? quarter_turned_header(header) : header;
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kRule).or_error(Error::kUnreported));
  const bool is_overwritten = turn == DibTurn::kTopBottom || is_pixel_depth(header.depth);
  NewDib::Allocate* const allocate = is_overwritten ? OwnedDib::allocate_unset : OwnedDib::allocate;
  NewDib result = VOREL_TRY(NewDib::like(opened, result_header, allocate, kSpareBytes).or_error(Error::kUnreported));
  result.clear_padding();
  move_pixels(opened.pixels(), result.pixels(), turn);
  return OwnedDib(std::move(result));
}

}  // namespace vorel::geometry
