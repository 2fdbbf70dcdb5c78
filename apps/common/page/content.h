// Where a page has something on it.
#pragma once

#include <optional>

#include "common/picture.h"

namespace vorel::programs {

// Both disregard dark borders of the scanner and specks of less than about half a millimetre, and take workable pictures.

// Ink in percent of the page inside its margins. `margin` is the share of width and height that is not looked at on each side: holes, staples and shadows are there.
double ink_percent(const Picture& page, double margin);

// The box around all content and a margin of some pixels, without dark borders as far as they can be kept out. Nothing if the page
// is blank.
std::optional<Rect> content_box(const Picture& page, Size margin);

}  // namespace vorel::programs
