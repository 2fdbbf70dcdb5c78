// Calls into libpng, which reports an error by leaving all calls that are under way.
#pragma once

#include <csetjmp>
#include <limits>
#include <png.h>
#include <string_view>

namespace codec::png {

// For png_create_read_struct and png_create_write_struct: nothing is printed.
[[noreturn]] inline void leave(png_structp png, png_const_charp) { png_longjmp(png, 1); }
inline void ignore(png_structp, png_const_charp) {}

// Transparency with a wrong checksum costs pixels. Of the chunks that a picture can do without it is the only one that does.
inline void take_warning(png_structp png, png_const_charp message) {
  if (std::string_view(message).starts_with("tRNS: CRC")) leave(png, message);
}

// Sizes are checked where DIBs are made; libpng's own limit is lower.
inline void allow_any_size(png_structp png) { png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX); }

// Returns whether `calls`, in which nothing may have a destructor, came to their end.
template <class Calls>
bool came_through(png_structp png, Calls calls) noexcept {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  calls();
  return true;
}

}  // namespace codec::png
