// Painting an image without a display state: where it goes in the window and what of it is seen, in numbers alone.
#pragma once

#include "core/view.h"
#include "display/mapping.h"

namespace vorel {

// One direction: an image of `image` pixels drawn `scale` times as large into `client` window pixels.
struct OneShotAxis {
  int image = 0;
  double scale = 1;
  int client = 0;

  // Window pixels that the image takes.
  int displayed() const;
  bool needs_scroll_bar() const { return displayed() > client; }
  // Window pixels that are scrolled out, for a position in image pixels from 0 to the image's size.
  int offset(int position) const;
  // Image pixels from the start to a place in the displayed image.
  int source_at(int place) const;
};

// How many times as large as its pixels an image is drawn.
//   image_dpi  0 or less where the image does not say
//   zoom       viewport and window; below 1 counts as 1
double one_shot_scale(double image_dpi, int screen_dpi, int viewport, int window);

// What is drawn where: window pixels, and image pixels counted from the left upper corner.
struct OneShotPart {
  int to = 0, to_extent = 0, from = 0, from_extent = 0;
};
OneShotPart one_shot_part(const OneShotAxis& axis, int position);

// Scales at which an image fills a window in the proportions that its own scales give it.
struct OneShotFit {
  double x, y;
};
OneShotFit one_shot_fit(const OneShotAxis& x, const OneShotAxis& y);

// Dots per inch of a header's pixels per metre.
double exact_dots_per_inch(int pixels_per_metre);

}  // namespace vorel
