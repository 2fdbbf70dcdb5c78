#include "display/scrolling.h"

#include <algorithm>

namespace vorel::display {
namespace {

// A thumb at an end of the range asks for one unit more, so that snapping to units cannot stop short of the end.
int64_t thumb_position(const ScrollAxis& axis, uint16_t word) {
  const int with_sign = static_cast<int16_t>(word);
  const int position = with_sign >= axis.least && with_sign <= axis.most ? with_sign : word;
  return int64_t{position} + (position == axis.most ? axis.unit : 0) - (position == axis.least ? axis.unit : 0);
}

int64_t wanted_position(const ScrollAxis& axis, ScrollCode code, uint16_t word) {
  const int64_t line = std::max(axis.unit, axis.shortest_line);
  const int64_t page = axis.client / 2;
  switch (code) {
    case ScrollCode::kLineBack: return axis.position - line;
    case ScrollCode::kLineOn: return axis.position + line;
    case ScrollCode::kPageBack: return axis.position - page;
    case ScrollCode::kPageOn: return axis.position + page;
    case ScrollCode::kThumbPosition:
    case ScrollCode::kThumbTrack: return thumb_position(axis, word);
    case ScrollCode::kStart: return axis.least;
    case ScrollCode::kEnd: return axis.most;
  }
  return axis.position;
}

}  // namespace

int scroll_unit(int viewport_extent) { return std::max(viewport_extent % 16, 1); }

int snapped(const ScrollAxis& axis, int64_t wanted) {
  if (wanted == 0 && axis.position == 0 && axis.least > 0) return 0;
  const int64_t least = axis.least, most = axis.most, unit = axis.unit;
  const int64_t way_back = axis.position - std::min(most + unit, std::max(least - unit, wanted));
  const int64_t position = axis.position - way_back / unit * unit;
  return static_cast<int>(std::max(std::min(position, most), least));
}

int scrolled(const ScrollAxis& axis, ScrollCode code, uint16_t word) {
  return snapped(axis, wanted_position(axis, code, word));
}

}  // namespace vorel::display
