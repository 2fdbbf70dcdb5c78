// One picture painted onto another. The library does so through a display's bitmaps; here it is the same on every machine.
#include <algorithm>
#include <fmt/format.h>

#include "common/forms.h"
#include "common/operations.h"
#include "common/problem.h"
#include "core/pixel.h"

namespace vorel::programs {
namespace {

bool same_color(Rgb a, Rgb b) { return a.blue == b.blue && a.green == b.green && a.red == b.red; }

// Whether pixels can be combined as numbers: the same depth and colours, and where numbers are mixed a colour for each that may
// come out.
bool can_stay_indexed(const Picture& a, const Picture& b, Mixing mixing) {
  if (a.depth() != b.depth()) return false;
  if (a.depth() == 24) return true;
  if (!std::ranges::equal(a.colors(), b.colors(), same_color)) return false;
  return mixing == Mixing::kReplace || a.colors().size() >= size_t{1} << a.depth();
}

uint32_t mixed(Mixing mixing, uint32_t below, uint32_t above) {
  switch (mixing) {
    case Mixing::kOr: return below | above;
    case Mixing::kXor: return below ^ above;
    default: return above;
  }
}

// The columns, or rows, of an overlay of `count` that lie inside `room` when its first is at `offset`.
struct Overlap {
  int begin, end;
  Overlap(int offset, int count, int room)
      : begin(static_cast<int>(std::clamp<int64_t>(-int64_t{offset}, 0, count))),
        end(static_cast<int>(std::clamp<int64_t>(int64_t{room} - offset, 0, count))) {}
};

bool keeps_base(const Picture& mask, int x, int y) {
  return color_of(mask, Pixel<1>::load(mask.pixels().row_from_top(y).data(), x)) == 0;
}

void paint(const Picture& base, const Picture& overlay, const std::optional<Picture>& mask, Corner at, Mixing mixing) {
  const DibView target = base.pixels(), source = overlay.pixels();
  const Overlap rows(at.y, source.height(), target.height()), columns(at.x, source.width(), target.width());
  with_depth(base.depth(), [&](auto depth) {
    for (int y = rows.begin; y < rows.end; ++y) {
      uint8_t* const to = target.row_from_top(at.y + y).data();
      const uint8_t* const from = source.row_from_top(y).data();
      for (int x = columns.begin; x < columns.end; ++x) {
        if (mask && keeps_base(*mask, x, y)) continue;
        const uint32_t below = Pixel<depth>::load(to, at.x + x), above = Pixel<depth>::load(from, x);
        Pixel<depth>::store(to, at.x + x, mixed(mixing, below, above));
      }
    }
  });
}

void check_mask(const Picture& mask, const Picture& overlay) {
  if (mask.depth() != 1) throw Problem(Fault::kFormat, "the mask must have 1 bit per pixel; save it in black and white");
  if (mask.width() == overlay.width() && mask.height() == overlay.height()) return;
  throw Problem(Fault::kFormat, fmt::format("the mask must be as large as the overlay, {} x {} pixels; scale or crop it",
                                            overlay.width(), overlay.height()));
}

}  // namespace

Picture combined(Picture base, Picture overlay, std::optional<Picture> mask, Corner at, Mixing mixing) {
  base = workable(std::move(base));
  overlay = workable(std::move(overlay));
  if (mask) {
    mask = workable(std::move(*mask));
    check_mask(*mask, overlay);
  }
  if (!can_stay_indexed(base, overlay, mixing)) {
    base = in_true_color(std::move(base));
    overlay = in_true_color(std::move(overlay));
  }
  base = made_own(std::move(base));
  paint(base, overlay, mask, at, mixing);
  return base;
}

}  // namespace vorel::programs
