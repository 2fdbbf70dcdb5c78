// Calls into libjpeg, which reports an error by leaving all calls that are under way.
#pragma once

#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>

#include <vorel32.h>  // first: libjpeg has types of the same names, and then makes do with these

namespace codec::jpeg {

struct ErrorManager : jpeg_error_mgr {
  std::jmp_buf landing;
  bool has_no_end;  // the file ended without saying so
};

// Nothing is printed. What loses pixels is an error, though libjpeg would go on with grey ones.
jpeg_error_mgr* prepare(ErrorManager& errors);

// Returns whether `calls`, in which nothing may have a destructor, came to their end.
template <class Calls>
bool came_through(ErrorManager& errors, Calls calls) noexcept {
  if (setjmp(errors.landing) != 0) return false;
  calls();
  return true;
}

}  // namespace codec::jpeg
