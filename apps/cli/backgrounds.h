// The option of steps whose result has corners that the picture does not fill.
#pragma once

#include "cli/arguments.h"
#include "common/operations.h"

namespace vorel::cli {

inline void declare_background(Arguments& arguments, bool& white) {
  arguments.flag("--white", white,
                 "fill what the picture leaves free with white, or the colour nearest to it (default: black)");
}

inline programs::Background background_of(bool white) {
  return white ? programs::Background::kWhite : programs::Background::kBlack;
}

}  // namespace vorel::cli
