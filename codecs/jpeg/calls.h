// Calls into libjpeg, which reports errors by longjmp.
#pragma once

#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>

#include <vorel32.h>  // first: libjpeg has types of the same names, and then makes do with these

namespace codec::jpeg {

struct ErrorManager : jpeg_error_mgr {
  std::jmp_buf landing;
  bool has_no_end;  // the file has no end marker
};

// Nothing is printed. Loss of pixels, which libjpeg fills with grey, is an error.
jpeg_error_mgr* prepare(ErrorManager& errors);

// Returns whether `calls` ended without an error. Nothing in them may have a destructor.
template <class Calls>
bool came_through(ErrorManager& errors, Calls calls) noexcept {
  if (setjmp(errors.landing) != 0) return false;
  calls();
  return true;
}

}  // namespace codec::jpeg
