// The layout of pictures on paper: they are turned and made smaller where they do not fit.
#pragma once

#include <optional>
#include <string>

#include "common/picture.h"
#include "print/page_layout.h"

namespace vorel::cli {

// The part of a sheet that a printer reaches.
struct Paper {
  print::DotDensity resolution;  // dots per inch
  Size dots;
};

enum class PaperSizing { kShrink, kTrueSize, kFit, kStretch };

struct PaperLayout {
  PaperSizing sizing = PaperSizing::kShrink;  // makes smaller what is too large
  bool by_printer_dots = false;               // a dot for each pixel; the picture's own resolution is ignored
  bool may_turn = true;                       // by a quarter, where the picture then comes out larger or whole
  bool is_centered_across = false, is_centered_down = false;
};

// For a job that prints the results of fitted().
ImgPrintOptions print_options(const PaperLayout& layout);

struct OnPaper {
  programs::Picture picture;  // states the resolution that it is printed at
  std::string cut;            // what is cut off, in words; empty for nothing
};

// Throws Problem.
OnPaper fitted(programs::Picture picture, const PaperLayout& layout, const Paper& paper);

}  // namespace vorel::cli
