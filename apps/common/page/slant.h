// How far the lines of a page are from level.
#pragma once

#include "common/picture.h"

namespace vorel::programs {

// In degrees. Slants up to the first are found; less than the second counts as straight.
inline constexpr double kMostSlant = 15, kLeastSlant = 0.05;

struct Slant {
  // A page with less is better left alone: a photo, a map, an empty page.
  static constexpr double kLeastConfidence = 0.5;

  double degrees = 0;      // clockwise on paper; turning by as much the other way makes the page straight
  double uncertainty = 0;  // how far parts of the page disagree, in degrees
  double confidence = 0;   // from 0 to 1
  bool goes_down = false;  // the lines are nearer to upright than to level

  bool is_sure() const { return confidence >= kLeastConfidence; }
  // Whether turning makes the page straighter, if the slant is right: callers ask for the confidence they need.
  bool is_worth_turning() const;
};

// The method is the differential projection profile of W. Postl ("Detection of linear oblique structures and skew scan in
// digitized documents", International Conference on Pattern Recognition, 1986): ink is summed along parallel lines of a reduced
// page, and at the angle at which neighbouring sums differ most, the lines run along those of the text. Here the sums end at the
// edges of vertical bands: columns of text whose lines are at different heights would otherwise lead to angles at which lines of
// one column meet those of the next. Lines right across the page give the last hundredths of a degree if they agree.
// Takes workable pictures of any depth.
Slant find_slant(const Picture& page);

}  // namespace vorel::programs
