// How pictures are brought onto paper: turned and made smaller where they do not fit.
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
  bool by_printer_dots = false;               // a dot for each pixel, whatever resolution the picture states
  bool may_turn = true;                       // where a picture comes out larger, or whole, turned by a quarter
  bool is_centered_across = false, is_centered_down = false;
};

// For a job that prints what fitted() gives.
ImgPrintOptions print_options(const PaperLayout& layout);

struct OnPaper {
  programs::Picture picture;  // states the resolution that it is printed at
  std::string cut;            // what is cut off, in words; empty for nothing
};

// Throws Problem.
OnPaper fitted(programs::Picture picture, const PaperLayout& layout, const Paper& paper);

}  // namespace vorel::cli
