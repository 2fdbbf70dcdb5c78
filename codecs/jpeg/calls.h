// Calls into libjpeg, which reports errors by longjmp.
#pragma once

#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>

namespace codec::jpeg {

struct ErrorManager : jpeg_error_mgr {
  std::jmp_buf jump_buffer;
  bool lacks_end_marker;
};

// Nothing is printed. Loss of pixels, which libjpeg fills with grey, is an error.
jpeg_error_mgr* prepare(ErrorManager& errors);

// Returns whether `calls` ended without an error. Nothing in them may have a destructor.
template <class Calls>
bool run_guarded(ErrorManager& errors, Calls calls) noexcept {
  if (setjmp(errors.jump_buffer) != 0) return false;
  calls();
  return true;
}

}  // namespace codec::jpeg
