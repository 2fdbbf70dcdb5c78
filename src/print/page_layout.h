// The place of an image on a printed page. Lengths are single precision, in inches until they become printer dots.
#pragma once

#include <vorel32.h>

#include "core/header.h"
#include "core/view.h"

namespace vorel::print {

// Dots, or pixels, per inch.
struct DotDensity {
  float x, y;
};

struct Inches {
  float width, height;
};

// The part of a sheet that a printer can print on.
struct PrintablePage {
  DotDensity resolution;
  Inches size;
};

PrintablePage printable_page(Size dots, DotDensity resolution);

// The resolution an image is printed at. If the options want the image's own, it is the caller's (`given`, which may be
// null) or the header's; otherwise the printer's, which makes a pixel a dot. Invalid numbers count as none.
DotDensity image_resolution(const ImgPrintOptions& options, const int* given, const DibHeader& header, DotDensity printer);

// The scale of the printed image.
struct PageScale {
  float x, y;
};

struct Placement {
  PageScale scale;
  Rect dots;  // on the page
};

// The layout that the options request. Images larger than the page lie partly outside it.
Placement place_image(const ImgPrintOptions& options, Size pixels, DotDensity image, const PrintablePage& page);

// A part of an image, and the dots that it is printed on.
struct PlacedPart {
  Rect dots, pixels;
};

// The part of an image that falls into a band of the page, at least a pixel wide and high; empty if they do not meet.
PlacedPart part_in_band(Rect image, Size pixels, Rect band);

}  // namespace vorel::print
