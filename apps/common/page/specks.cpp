#include "common/page/specks.h"

#include <algorithm>
#include <bit>
#include <deque>
#include <vector>

#include "common/forms.h"
#include "common/page/ink_map.h"
#include "common/problem.h"
#include "core/row_bits.h"

namespace vorel::programs {
namespace {

// Neighbouring pixels of one colour in a row. Runs that are connected form a tree; its root knows the box around all.
struct Run {
  int first, last;  // columns
  uint32_t parent;
  int left, top, right, bottom;  // of the root
};

// Keeps the runs of as many rows as a speck may be high. What reaches further is no speck, so rows above are settled and dropped.
// Parents are never above their children: no run that is kept refers to a dropped one.
class Runs {
 public:
  Runs(ConstDibView page, uint32_t color) : page_(page), inverted_(color == 0 ? ~uint64_t{0} : 0) {}

  // Calls erase(row, first, last) for each run of the components of at most this size. Returns the number of components.
  template <class Erase>
  uint64_t erase_small(Size most, Erase erase) {
    if (most.width < 1 || most.height < 1) return 0;
    const int kept = std::min(most.height, page_.height());
    uint64_t count = 0;
    for (int y = 0; y < page_.height() + kept; ++y) {
      if (y < page_.height()) take(y);
      if (y >= kept) count += settle(y - kept, most, erase);
    }
    return count;
  }

 private:
  void take(int y) {
    const size_t above = rows_.empty() ? runs_.size() : rows_.back();
    rows_.push_back(runs_.size());
    find_runs(y);
    connect(above, rows_.back());
  }

  // The topmost row that is kept. Returns how many components end in it.
  template <class Erase>
  uint64_t settle(int y, Size most, Erase erase) {
    const size_t end = rows_.size() > 1 ? rows_[1] : runs_.size();
    uint64_t count = 0;
    for (size_t i = rows_.front(); i < end; ++i) {
      const uint32_t at = root(i);
      const Run& whole = runs_[at];
      if (whole.right - whole.left >= most.width || whole.bottom - whole.top >= most.height) continue;
      count += at == i ? 1 : 0;
      erase(y, runs_[i].first, runs_[i].last);
    }
    rows_.pop_front();
    if (end > runs_.size() / 2) drop(end);
    return count;
  }

  void drop(size_t count) {
    runs_.erase(runs_.begin(), runs_.begin() + static_cast<ptrdiff_t>(count));
    for (Run& run : runs_) run.parent -= static_cast<uint32_t>(count);
    for (size_t& row : rows_) row -= count;
  }

  // 64 pixels from the left as the bits of a word from the highest; set ones have the colour.
  uint64_t word(std::span<const uint8_t> row, int x) const {
    return first_of(pixels_at(row, static_cast<size_t>(x / 8)) ^ inverted_, page_.width() - x);
  }

  void find_runs(int y) {
    const std::span<const uint8_t> row = page_.row_from_top(y);
    int start = -1;
    for (int x = 0; x < page_.width(); x += 64) {
      uint64_t bits = word(row, x);
      if (start >= 0) bits = ~bits;
      int at = 0;
      for (;;) {
        const int skip = bits == 0 ? 64 : std::countl_zero(bits);
        at += skip;
        if (at >= 64) break;
        bits = ~(bits << skip);  // whatever comes in from behind is beyond the word
        if (start < 0) {
          start = x + at;
        } else {
          add(y, start, x + at - 1);
          start = -1;
        }
      }
    }
    if (start >= 0) add(y, start, page_.width() - 1);
  }

  void add(int y, int first, int last) {
    runs_.push_back({first, last, static_cast<uint32_t>(runs_.size()), first, y, last, y});
  }

  uint32_t root(size_t i) {
    auto at = static_cast<uint32_t>(i);
    while (runs_[at].parent != at) at = runs_[at].parent = runs_[runs_[at].parent].parent;
    return at;
  }

  void unite(size_t a, size_t b) {
    uint32_t low = root(a), high = root(b);
    if (low == high) return;
    if (low > high) std::swap(low, high);
    Run& whole = runs_[high];
    Run& part = runs_[low];
    whole.left = std::min(whole.left, part.left);
    whole.right = std::max(whole.right, part.right);
    whole.top = std::min(whole.top, part.top);
    whole.bottom = std::max(whole.bottom, part.bottom);
    part.parent = high;
  }

  // Runs of one row with those of the row above, corners included.
  void connect(size_t above, size_t below) {
    const size_t end_above = below, end_below = runs_.size();
    while (above < end_above && below < end_below) {
      if (runs_[above].last + 1 < runs_[below].first) {
        ++above;
      } else if (runs_[below].last + 1 < runs_[above].first) {
        ++below;
      } else {
        unite(above, below);
        runs_[above].last < runs_[below].last ? ++above : ++below;
      }
    }
  }

  ConstDibView page_;
  uint64_t inverted_;
  std::vector<Run> runs_;
  std::deque<size_t> rows_;  // where each row's runs begin
};

void flip(std::span<uint8_t> row, int first, int last) {
  for (int x = first; x <= last; ++x) row[static_cast<size_t>(x / 8)] ^= static_cast<uint8_t>(0x80 >> x % 8);
}

void remove(Despeckled& page, uint32_t color, Size most) {
  const DibView pixels = page.picture.pixels();
  page.specks += Runs(pixels, color).erase_small(most, [&](int y, int first, int last) {
    flip(pixels.row_from_top(y), first, last);
    page.pixels += static_cast<uint64_t>(last - first + 1);
  });
}

}  // namespace

Despeckled despeckled(Picture picture, Size most, SpeckColors colors) {
  if (picture.depth() != 1)
    throw Problem(Fault::kFormat, "only black and white pictures have specks of this kind; use threshold first, or clean");
  Despeckled page{made_own(upright(std::move(picture)))};
  const uint32_t ink = darker_color(page.picture);
  if (colors != SpeckColors::kPaper) remove(page, ink, most);
  if (colors != SpeckColors::kInk) remove(page, ink ^ 1, most);
  return page;
}

}  // namespace vorel::programs
