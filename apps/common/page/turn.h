// Turning a page by any angle, fractions of a degree included.
#pragma once

#include "common/operations.h"

namespace vorel::programs {

enum class Canvas {
  kWhole,  // grows so that all of the picture stays
  kSame    // keeps the size of the picture, cutting off its corners
};

// Clockwise about the centre, in degrees on paper: where the stated resolutions differ, the turn allows for it. They stay as they
// are, except that quarter turns exchange them. Quarter turns move pixels unchanged. Other turns interpolate between four pixels:
// greys and true colours give their weighted mean, black and white the side of it that has more weight, which keeps lines of one
// pixel whole. Colours of a table, which cannot be mixed, are taken from the nearest pixel. The depth and the table stay.
// Throws Problem for an angle that is no number and for a result that is too large.
Picture turned_by(Picture picture, double degrees, Background background, Canvas canvas = Canvas::kWhole);

}  // namespace vorel::programs
