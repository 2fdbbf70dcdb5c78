// How a picture is laid out on paper, and how a preview of that fits a window. Where the picture comes to lie is reckoned by the
// library's own page layout, the one thing that the viewer takes from inside the library: the preview then shows what is printed.
#pragma once

#include <string>
#include <vector>

#include "print/page_layout.h"

namespace vorel::viewer {

enum class PageSizing { kTrueSize, kFit, kStretch };

struct PrintLayout {
  PageSizing sizing = PageSizing::kFit;
  bool is_centred_across = true, is_centred_down = true;
  bool goes_by_resolution = true;  // the picture's; else a printer dot for each pixel
  int per_sheet = 1;               // several are always fitted
};

inline constexpr int kPerSheet[] = {1, 2, 4, 6, 9};

// The sheets of a job, each as the places of its pages in a list of `pages`.
std::vector<std::vector<size_t>> sheets_of(size_t pages, int per_sheet);

// The sheets in the order in which they are printed: copy after copy, or each sheet as often as copies are wanted.
std::vector<size_t> printing_order(size_t sheets, int copies, bool is_collated);

// For a job of one copy, in which nothing is asked.
ImgPrintOptions print_options(const PrintLayout& layout);

// "fit, centred", "true size, a dot a pixel".
std::wstring layout_text(const PrintLayout& layout);

// Paper in a printer, in its dots.
struct Sheet {
  print::DotDensity resolution;
  Size paper;
  Rect printable;  // on the paper
};

// Where a picture is printed, counted from the corner of the printable part.
Rect printed_box(const PrintLayout& layout, const DibHeader& picture, const Sheet& sheet);

// Where each of several pictures is printed, counted in the same way: in the columns and rows that leave the first one largest.
std::vector<Rect> printed_boxes(const PrintLayout& layout, const std::vector<DibHeader>& pictures, const Sheet& sheet);

// "100 x 150 mm on paper of 210 x 297 mm".
std::wstring printed_size_text(Rect printed, const Sheet& sheet);

// A sheet and what is on it, in pixels of a window.
struct PreviewBoxes {
  Rect paper, printable;
  std::vector<Rect> pictures;
};

// As large as a window has room for, in its middle, with a margin around the paper.
PreviewBoxes preview_boxes(const Sheet& sheet, const std::vector<Rect>& printed, Size window);

}  // namespace vorel::viewer
