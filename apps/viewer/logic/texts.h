// Texts that tell about a picture.
#pragma once

#include <cstdint>
#include <string>

namespace vorel::viewer {

struct PictureFacts {
  std::wstring name;  // of the file, without its folder
  int page = 1, pages = 1;
  int width = 0, height = 0, depth = 0;
  int x_per_metre = 0, y_per_metre = 0;  // pixels; 0 where it is not stated
  int percent = 100;                     // of its size, as it is shown
  bool changed = false;                  // since it was loaded or saved
};

// A pixel of a picture.
struct PixelFacts {
  int x = 0, y = 0;
  uint32_t color = 0;  // 0x00RRGGBB
};

// "fax.tif* (page 2 of 5) - 50 % - Vorel Viewer"; the program's name alone without a picture.
std::wstring title_text(const PictureFacts& picture);

// "1 page", "5 pages", "page 2 of 5".
std::wstring page_text(const PictureFacts& picture);

// "640 x 480 pixels, 24 bits".
std::wstring size_text(const PictureFacts& picture);

// "300 dpi", "204 x 98 dpi"; empty where it is not stated.
std::wstring resolution_text(const PictureFacts& picture);

// "12, 34: 255 0 128", position and red, green and blue.
std::wstring pixel_text(const PixelFacts& pixel);

std::wstring percent_text(const PictureFacts& picture);

// "1 bit", "24 bits" for " bit".
std::wstring counted(int count, const std::wstring& what);

// The name of a command without what marks its key and its dialog: "Scale, linear" for "Scale, &linear...".
std::wstring plain_name(std::wstring menu_name);

// With a character twice wherever it stands, as menus want it.
std::wstring doubled(const std::wstring& text, wchar_t character);

// A message of the library, which is plain ASCII, as the last part of a sentence.
std::wstring as_reason(const std::string& message);

}  // namespace vorel::viewer
