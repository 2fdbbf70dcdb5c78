// Where a page has something on it.
#pragma once

#include <optional>

#include "common/picture.h"

namespace vorel::programs {

// Both disregard dark borders of the scanner and specks of less than about half a millimetre, and take workable pictures.

// Ink in percent of the page inside its margins. `margin` is their share of width and height on each side, where holes,
// staples and shadows are.
double ink_percent(const Picture& page, double margin);

// The box around all content and a margin of some pixels, which ends at dark borders. Nothing if the page is blank.
std::optional<Rect> content_box(const Picture& page, Size margin);

}  // namespace vorel::programs
