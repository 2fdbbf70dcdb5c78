#include "common/page/profile.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace vorel::programs {
namespace {

template <class Sum>
void add(const uint8_t* from, Sum* sums, int count) {
  for (int i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + from[i]);
}

}  // namespace

Columns columns_of(const InkMap& map, double aspect) {
  Columns columns(map.width(), map.height(), aspect * map.cell().width / map.cell().height);
  constexpr int kRows = 16;  // at a time, so that they stay in the cache
  for (int top = 0; top < map.height(); top += kRows)
    for (int x = 0; x < map.width(); ++x) {
      uint8_t* const column = columns.column(x);
      for (int y = top; y < std::min(top + kRows, map.height()); ++y) column[y] = map.row(y)[static_cast<size_t>(x)];
    }
  return columns;
}

Columns rows_of(const InkMap& map, double aspect) {
  Columns columns(map.height(), map.width(), map.cell().height / (aspect * map.cell().width));
  for (int y = 0; y < map.height(); ++y) std::ranges::copy(map.row(y), columns.column(y));
  return columns;
}

Profile::Profile(const Columns& columns) : columns_(columns) {
  // Columns move by whole cells. If all were rounded alike, angles at which many parts of cells are small would blur less, and be
  // preferred: no slant at all most of all. Two even distributions together blur all angles alike.
  constexpr double kFirstStep = 0.7548776662466927, kSecondStep = 0.5698402909980532;
  for (int x = 1; x <= columns.width; ++x)
    rounding_.push_back(std::fmod(x * kFirstStep, 1) + std::fmod(x * kSecondStep, 1) - 0.5);
}

void Profile::take_few() {
  add(few_.data(), sums_.data(), static_cast<int>(few_.size()));
  std::ranges::fill(few_, uint8_t{0});
}

std::span<const uint16_t> Profile::sums(double degrees, int first, int last) {
  const double slope = std::tan(degrees * std::numbers::pi / 180) * columns_.slope_unit, middle = (first + last) / 2.0;
  const int reach = static_cast<int>(std::ceil(std::abs(slope) * (last - middle))) + 2;
  sums_.assign(static_cast<size_t>(columns_.height + 2 * reach), 0);
  few_.assign(sums_.size(), 0);
  for (int x = first; x < last; ++x) {
    const double offset = std::floor((x + 0.5 - middle) * slope + rounding_[static_cast<size_t>(x)]);
    add(columns_.column(x), few_.data() + (reach - static_cast<int>(offset)), columns_.height);
    if ((x - first) % kFewColumns == kFewColumns - 1 || x == last - 1) take_few();
  }
  return sums_;
}

Profile::Scores Profile::scores(double degrees, int bands) {
  Scores scores{};
  for (int band = 0; band < bands; ++band) {
    const auto rows = sums(degrees, columns_.width * band / bands, columns_.width * (band + 1) / bands);
    for (size_t i = 1; i < rows.size(); ++i) {
      const int difference = rows[i] - rows[i - 1];
      scores[static_cast<size_t>(band)] += static_cast<double>(difference) * difference;
    }
  }
  return scores;
}

double Profile::score(double degrees, int bands) {
  const Scores all = scores(degrees, bands);
  return std::accumulate(all.begin(), all.end(), 0.0);
}

double Profile::contrast(double degrees) {
  const double score_across = score(degrees, 1);
  const double power = std::inner_product(sums_.begin(), sums_.end(), sums_.begin(), 0.0);
  return power > 0 ? score_across / power : 0;
}

}  // namespace vorel::programs
