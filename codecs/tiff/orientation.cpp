#include "tiff/orientation.h"

#include <utility>

#include "kernels/turn/turn.h"

namespace codec {
namespace {

using vorel::kernels::QuarterTurn;

// For orientations 5 to 8. Rows and columns of a DIB count from its bottom left corner.
QuarterTurn quarter_turn_of(int orientation, vorel::Size stored) {
  const bool from_right = orientation == 6 || orientation == 7, from_bottom = orientation == 7 || orientation == 8;
  return {from_right ? 0 : stored.height - 1, from_right ? 1 : -1, from_bottom ? 0 : stored.width - 1, from_bottom ? 1 : -1};
}

}  // namespace

Description upright(Description stored, int orientation) {
  const bool rows_are_columns = orientation >= 5 && orientation <= 8;
  if (rows_are_columns) {
    std::swap(stored.width, stored.height);
    std::swap(stored.resolution.x, stored.resolution.y);
  }
  return stored;
}

HGLOBAL upright(LoadedDib stored, const Description& description, int orientation) {
  if (orientation < 2 || orientation > 8) return stored.release();
  LoadedDib page(description);
  const vorel::DibView source = stored.pixels(), result = page.pixels();
  const vorel::kernels::TurnTable& kernels = vorel::kernels::turn();
  switch (orientation) {
    case 2: kernels.mirror_left_right(source, result); break;
    case 3: kernels.half_turn(source, result); break;
    case 4: kernels.mirror_top_bottom(source, result); break;
    default: kernels.quarter_turn(source, result, quarter_turn_of(orientation, source.size()));
  }
  return page.release();
}

}  // namespace codec
