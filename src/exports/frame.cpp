// Error code, messages and version.
#include <algorithm>
#include <cstring>

#include <vorel32.h>

#include "frame/messages.h"
#include "frame/thread_context.h"
#include "platform/user.h"

using namespace vorel;

static_assert(IMG_E_MEMORY == static_cast<int>(Error::kMemory) && IMG_E_PARAMETER == static_cast<int>(Error::kParameter) &&
              IMG_E_LOCK == static_cast<int>(Error::kLock) && IMG_E_PRINTER_DC == static_cast<int>(Error::kPrinterDc) &&
              IMG_E_NOTHING_TO_CONVERT == static_cast<int>(Error::kNothingToConvert));

extern "C" {

int VORELCALL ImgError(void) { return thread_context().error_code; }

int VORELCALL SetImgError(int code) {
  int32_t& stored = thread_context().error_code;
  const int previous = stored;
  if (has_message(code)) stored = code;
  return previous;
}

char* VORELCALL ImgErrorString(char* buffer, int code) {
  const char* text = message(has_message(code) ? code : thread_context().error_code);
  if (buffer == nullptr) {
    show_error_message(text, kErrorTitle);
    return nullptr;
  }
  std::memcpy(buffer, text, std::strlen(text) + 1);
  return buffer;
}

void VORELCALL GetImageVersion(char* buffer, int length) {
  if (buffer == nullptr || length <= 0) return;
  const auto room = static_cast<size_t>(length);
  std::memcpy(buffer, kVersionText.data(), std::min(room, kVersionText.size()));
  // A buffer with room for just the text, or less, is left without a terminating zero.
  if (room > kVersionText.size()) buffer[kVersionText.size()] = '\0';
}

}  // extern "C"
