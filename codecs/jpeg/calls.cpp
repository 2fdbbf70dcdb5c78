#include "jpeg/calls.h"

#include <jerror.h>

namespace codec::jpeg {
namespace {

[[noreturn]] void leave(j_common_ptr jpeg) { std::longjmp(static_cast<ErrorManager*>(jpeg->err)->jump_buffer, 1); }

bool loses_pixels(int warning) {
  switch (warning) {
    case JWRN_ARITH_BAD_CODE:
    case JWRN_BOGUS_PROGRESSION:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_MUST_RESYNC: return true;
    default: return false;
  }
}

// Levels below 0 are warnings. A file that ends within its pixels also causes another warning.
void take_message(j_common_ptr jpeg, int level) {
  if (level < 0 && jpeg->err->msg_code == JWRN_JPEG_EOF) static_cast<ErrorManager*>(jpeg->err)->lacks_end_marker = true;
  if (level < 0 && loses_pixels(jpeg->err->msg_code)) leave(jpeg);
}

}  // namespace

jpeg_error_mgr* prepare(ErrorManager& errors) {
  jpeg_std_error(&errors);
  errors.error_exit = leave;
  errors.emit_message = take_message;
  errors.output_message = [](j_common_ptr) {};
  return &errors;
}

}  // namespace codec::jpeg
