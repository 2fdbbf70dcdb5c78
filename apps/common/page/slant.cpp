#include "common/page/slant.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "common/page/profile.h"
#include "common/page/units.h"

namespace vorel::programs {
namespace {

constexpr int kBands = Profile::kMostBands;
constexpr double kCoarseStep = 0.5;

struct CoarsePeak {
  double degrees = 0;
  double prominence = 0;  // the score in terms of a usual one
};

// Angles that are half a degree apart find any text: bands a third of a page wide blur its lines no faster.
CoarsePeak coarse_peak(const Columns& page) {
  constexpr int kSteps = static_cast<int>((kMostSlant + 1) / kCoarseStep);
  Profile profile(page);
  std::vector<double> scores;
  for (int i = -kSteps; i <= kSteps; ++i) scores.push_back(profile.score(i * kCoarseStep, kBands));
  const auto best = std::ranges::max_element(scores);
  CoarsePeak peak{.degrees = (static_cast<double>(best - scores.begin()) - kSteps) * kCoarseStep};
  const double score = *best;
  std::ranges::nth_element(scores, scores.begin() + kSteps);
  if (scores[kSteps] > 0) peak.prominence = score / scores[kSteps];
  return peak;
}

// The highest of the places some steps either way, from which it goes down for several steps.
template <class Score>
double climbed(double start, double step, int most_steps, Score score) {
  constexpr int kMostMisses = 3;
  double top = start, best = score(start);
  for (const double direction : {step, -step})
    for (int i = 1, misses = 0; i <= most_steps && misses < kMostMisses; ++i) {
      const double value = score(start + i * direction);
      ++misses;
      if (value > best) best = value, top = start + i * direction, misses = 0;
    }
  return top;
}

constexpr int kPoints = 5;

// Where a parabola through points around a peak, by least squares, has its top, in steps from the middle one.
double top_of(const std::array<double, kPoints>& s) {
  const double slope = (-2 * s[0] - s[1] + s[3] + 2 * s[4]) / 10;
  const double bend = (2 * s[0] - s[1] - 2 * s[2] - s[3] + 2 * s[4]) / 14;
  return bend < 0 ? std::clamp(-slope / (2 * bend), -2.0, 2.0) : 0;
}

template <class Score>
double top_near(double middle, double step, Score score) {
  std::array<double, kPoints> points;
  for (int i = 0; i < kPoints; ++i) points[static_cast<size_t>(i)] = score(middle + (i - kPoints / 2) * step);
  return middle + top_of(points) * step;
}

// How far the tops of bands with a fair share of the lines are apart.
double disagreement(Profile& profile, double middle) {
  constexpr double kStep = 0.15, kFairShare = 0.15;
  std::array<std::array<double, kPoints>, kBands> points;
  for (size_t i = 0; i < kPoints; ++i) {
    const Profile::Scores scores = profile.scores(middle + (static_cast<double>(i) - kPoints / 2) * kStep, kBands);
    for (size_t band = 0; band < kBands; ++band) points[band][i] = scores[band];
  }
  double whole = 0, low = kPoints, high = -kPoints;
  for (const auto& band : points) whole += band[kPoints / 2];
  for (const auto& band : points)
    if (band[kPoints / 2] >= whole * kFairShare) low = std::min(low, top_of(band)), high = std::max(high, top_of(band));
  return std::max(0.0, high - low) * kStep;
}

// Text scores five times the usual, maps and drawings hardly more than that. The dots of printed photos can score as much as
// text, with less than a hundredth of its contrast.
double confidence_of(double prominence, double contrast) {
  constexpr double kSureProminence = 3, kSureContrast = 0.012;
  return std::clamp(std::min((prominence - 1) / (kSureProminence - 1), contrast / kSureContrast), 0.0, 1.0);
}

struct FinePeak {
  double degrees, disagreement;
};

FinePeak fine_peak(const Columns& page, double coarse) {
  constexpr double kClimb = 0.15, kStep = 0.15, kExactClimb = 0.04, kExactStep = 0.03, kAgreement = 0.05;
  Profile profile(page);
  const auto in_bands = [&](double degrees) { return profile.score(degrees, kBands - 1) + profile.score(degrees, kBands); };
  const auto across = [&](double degrees) { return profile.score(degrees, 1); };
  const double by_bands = top_near(climbed(coarse, kClimb, 8, in_bands), kStep, in_bands);
  const double exact = top_near(climbed(by_bands, kExactClimb, 2, across), kExactStep, across);
  return {std::abs(exact - by_bands) < kAgreement ? exact : by_bands, disagreement(profile, by_bands)};
}

}  // namespace

bool Slant::is_worth_turning() const { return std::abs(degrees) >= std::max(kLeastSlant, uncertainty); }

Slant find_slant(const Picture& page) {
  const int side = cell_side(page), part = std::max(1, side / 4);
  const double aspect = down_per_across(page.header());
  InkMap fine = ink_map(page, {side, part});
  InkMap map = coarser(fine, {side, side});
  const std::vector<uint8_t> borders = dark_borders(map);
  remove_cells(fine, map, borders);
  remove_cells(map, map, borders);

  const Columns upright = columns_of(map, aspect), sideways = rows_of(map, aspect);
  const CoarsePeak level = coarse_peak(upright), down = coarse_peak(sideways);
  Slant slant{.goes_down = down.prominence > level.prominence};
  const CoarsePeak& peak = slant.goes_down ? down : level;
  if (peak.prominence == 0) return slant;
  if (slant.goes_down) {
    fine = ink_map(page, {part, side});
    remove_cells(fine, map, borders);
  }
  const FinePeak found = fine_peak(slant.goes_down ? rows_of(fine, aspect) : columns_of(fine, aspect), peak.degrees);
  slant.degrees = slant.goes_down ? -found.degrees : found.degrees;
  slant.uncertainty = found.disagreement;
  slant.confidence = confidence_of(peak.prominence, Profile(slant.goes_down ? sideways : upright).contrast(found.degrees));
  if (std::abs(slant.degrees) > kMostSlant + kCoarseStep) slant.confidence = 0;  // the peak may be further out
  return slant;
}

}  // namespace vorel::programs
