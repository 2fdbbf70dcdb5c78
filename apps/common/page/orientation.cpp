#include "common/page/orientation.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "common/page/profile.h"
#include "common/page/slant.h"
#include "common/page/units.h"

namespace vorel::programs {
namespace {

// Rows of a profile that small letters take.
struct Core {
  int first, last;
  int height() const { return last - first + 1; }
};

std::vector<Core> cores_of(std::span<const uint16_t> sums) {
  // Of the rows with ink the densest tenth sets what a row of small letters has at least half of.
  std::vector<uint16_t> inked;
  std::ranges::copy_if(sums, std::back_inserter(inked), [](uint16_t sum) { return sum != 0; });
  if (inked.empty()) return {};
  const auto dense = inked.begin() + static_cast<ptrdiff_t>(inked.size() * 9 / 10);
  std::ranges::nth_element(inked, dense);
  const int least = std::max(1, *dense / 2);
  std::vector<Core> cores;
  for (int y = 0, first = -1; y < static_cast<int>(sums.size()); ++y) {
    const bool is_dense = sums[static_cast<size_t>(y)] >= least;
    if (is_dense && first < 0) first = y;
    if (!is_dense && first >= 0) cores.push_back({std::exchange(first, -1), y - 1});
  }
  return cores;
}

double mean_of(std::span<const uint16_t> sums, double first, double last) {
  double sum = 0;
  int count = 0;
  for (int y = static_cast<int>(std::lround(first)); y <= static_cast<int>(std::lround(last)); ++y, ++count)
    if (y >= 0 && y < static_cast<int>(sums.size())) sum += sums[static_cast<size_t>(y)];
  return count == 0 ? 0 : sum / count;
}

// What rows between lines of text have: the sum that a tenth of the rows does not exceed.
double quiet_sum(std::span<const uint16_t> sums) {
  std::vector<uint16_t> sorted(sums.begin(), sums.end());
  const auto tenth = sorted.begin() + static_cast<ptrdiff_t>(sorted.size() / 10);
  std::ranges::nth_element(sorted, tenth);
  return *tenth;
}

// Of lines between others of the same size: how much more ink is above the small letters than below, from -1 to 1. Lines without
// ascenders and descenders worth the name, as of capitals or numbers, have no vote.
void judge(std::span<const uint16_t> sums, std::vector<double>& votes) {
  constexpr int kLeastHeight = 3, kMostHeight = 60;  // in rows of the map
  constexpr double kNear = 0.2, kFar = 0.6;          // of the height of small letters, from their edge
  constexpr double kLeastShare = 0.12;
  const std::vector<Core> cores = cores_of(sums);
  const double noise = quiet_sum(sums);
  for (size_t i = 0; i < cores.size(); ++i) {
    const Core& core = cores[i];
    const int height = core.height();
    if (height < kLeastHeight || height > kMostHeight) continue;
    const bool is_free_above = i == 0 || core.first - cores[i - 1].last > height;
    const bool is_free_below = i + 1 == cores.size() || cores[i + 1].first - core.last > height;
    if (!is_free_above || !is_free_below) continue;
    const double above = std::max(0.0, mean_of(sums, core.first - kFar * height, core.first - kNear * height) - noise);
    const double below = std::max(0.0, mean_of(sums, core.last + kNear * height, core.last + kFar * height) - noise);
    const double strength = mean_of(sums, core.first, core.last) - noise;
    if (strength <= 0 || std::max(above, below) < kLeastShare * strength) continue;
    votes.push_back((above - below) / (above + below));
  }
}

}  // namespace

Orientation find_orientation(const Picture& page) {
  constexpr int kBands = 4, kLeastLines = 10;
  const Slant slant = find_slant(page);
  if (!slant.is_sure()) return {};
  const int side = cell_side(page), part = std::max(1, side / 4);
  const double aspect = down_per_across(page.header());
  const InkMap map = ink_map(page, slant.goes_down ? CellSize{part, side} : CellSize{side, part});
  const Columns columns = slant.goes_down ? rows_of(map, aspect) : columns_of(map, aspect);
  Profile profile(columns);
  std::vector<double> votes;
  for (int band = 0; band < kBands; ++band)
    judge(profile.sums(slant.goes_down ? -slant.degrees : slant.degrees, columns.width * band / kBands,
                       columns.width * (band + 1) / kBands),
          votes);

  Orientation result{.lines = static_cast<int>(votes.size())};
  if (result.lines < kLeastLines) return result;
  double sum = 0, squares = 0;
  for (const double vote : votes) sum += vote, squares += vote * vote;
  const double count = result.lines, mean = sum / count;
  if (!std::isfinite(mean)) return result;
  const double error = std::sqrt(std::max(squares / count - mean * mean, 0.01) / count);
  // The mean must be beyond chance, and as large as letters make it.
  constexpr double kSureErrors = 8, kSureMean = 0.4;
  result.confidence = std::min({1.0, std::abs(mean) / error / kSureErrors, std::abs(mean) / kSureMean});
  // Where rows have become columns, what is above is to the left: a page turned a quarter counter-clockwise.
  result.turn = slant.goes_down ? (mean > 0 ? 90 : 270) : (mean > 0 ? 0 : 180);
  return result;
}

}  // namespace vorel::programs
