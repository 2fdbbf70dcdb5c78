// Calls into libpng, which reports errors by longjmp.
#pragma once

#include <csetjmp>
#include <limits>
#include <png.h>
#include <string_view>

namespace codec::png {

// For png_create_read_struct and png_create_write_struct: nothing is printed.
[[noreturn]] inline void leave(png_structp png, png_const_charp) { png_longjmp(png, 1); }
inline void ignore(png_structp, png_const_charp) {}

// Transparency is the only optional chunk whose loss changes pixels: a wrong checksum there is an error.
inline void take_warning(png_structp png, png_const_charp message) {
  if (std::string_view(message).starts_with("tRNS: CRC")) leave(png, message);
}

// Sizes are checked where DIBs are made; libpng's own limit is lower.
inline void allow_any_size(png_structp png) { png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX); }

// Returns whether `calls` ended without an error. Nothing in them may have a destructor.
template <class Calls>
bool run_guarded(png_structp png, Calls calls) noexcept {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  calls();
  return true;
}

}  // namespace codec::png
