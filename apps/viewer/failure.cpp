#include "viewer/failure.h"

#include <vorel32.h>

#include "viewer/logic/texts.h"

namespace vorel::viewer {

std::wstring widened(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).wstring();
}

std::string narrowed(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::wstring reason(int status, const wchar_t* otherwise) {
  const int code = status != IMG_OK ? status : ImgError();
  if (code <= IMG_OK || code > IMG_E_NOTHING_TO_CONVERT) return otherwise;
  char message[IMG_MESSAGE_BYTES];
  return as_reason(ImgErrorString(message, code));
}

}  // namespace vorel::viewer
