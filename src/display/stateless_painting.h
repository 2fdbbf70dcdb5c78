// Painting an image without a display state: its place in the window and its visible part. Pure arithmetic.
#pragma once

#include "core/view.h"
#include "display/mapping.h"

namespace vorel::display {

// One axis: `image` pixels, scaled by `scale`, in a client area of `client` window pixels.
struct StatelessAxis {
  int image = 0;
  double scale = 1;
  int client = 0;

  // The scaled image in window pixels.
  int displayed() const;
  bool needs_scroll_bar() const { return displayed() > client; }
  // Window pixels scrolled out of view at a position of 0 to `image`, in image pixels.
  int offset(int position) const;
  // The image pixel at a window pixel of the scaled image.
  int source_at(int place) const;
};

// Window pixels per image pixel.
//   image_dpi         0 or less if the image does not state its resolution
//   viewport, window  the zoom ratio; values below 1 count as 1
double stateless_scale(double image_dpi, int screen_dpi, int viewport, int window);

// A visible part: target in window pixels, source in image pixels counted from the upper left corner.
struct StatelessPart {
  int to = 0, to_extent = 0, from = 0, from_extent = 0;
};
StatelessPart stateless_part(const StatelessAxis& axis, int position);

// The scales that fit an image to the client area and keep the proportion of its own scales.
struct StatelessFit {
  double x, y;
};
StatelessFit stateless_fit(const StatelessAxis& x, const StatelessAxis& y);

// Dots per inch from a header's pixels per metre, unrounded.
double exact_dots_per_inch(int pixels_per_metre);

}  // namespace vorel::display
