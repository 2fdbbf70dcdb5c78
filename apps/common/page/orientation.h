// Which way up a page of text is.
#pragma once

#include "common/picture.h"

namespace vorel::programs {

struct Orientation {
  // A page with less is better left alone: too few lines, capitals alone, no Latin script, no text.
  static constexpr double kLeastConfidence = 0.5;

  int turn = 0;           // clockwise degrees that make the page upright: 0, 90, 180 or 270
  double confidence = 0;  // from 0 to 1
  int lines = 0;          // of text that were judged

  bool is_sure() const { return confidence >= kLeastConfidence; }
};

// In Latin script more letters rise above the small ones than reach below the line. Each line of text, found along the
// page's slant, is judged by the ink above and below its small letters. Lines may be level or go down the page. Takes
// workable pictures of any depth.
Orientation find_orientation(const Picture& page);

}  // namespace vorel::programs
