// Texts that tell about a picture.
#pragma once

#include <string>

namespace vorel::viewer {

struct PictureFacts {
  std::wstring name;  // of the file, without its folder
  int page = 1, pages = 1;
  int width = 0, height = 0, depth = 0;
  int percent = 100;     // of its size, as it is shown
  bool changed = false;  // since it was loaded or saved
};

// "fax.tif* (page 2 of 5) - 50 % - Vorel Viewer"; the program's name alone without a picture.
std::wstring title_text(const PictureFacts& picture);

// "1 page", "5 pages", "page 2 of 5".
std::wstring page_text(const PictureFacts& picture);

// "640 x 480 pixels, 24 bits".
std::wstring size_text(const PictureFacts& picture);

std::wstring percent_text(const PictureFacts& picture);

// "1 bit", "24 bits" for " bit".
std::wstring counted(int count, const std::wstring& what);

// The name of a command without what marks its key and its dialog: "Scale, linear" for "Scale, &linear...".
std::wstring plain_name(std::wstring menu_name);

// A message of the library, which is plain ASCII, as the last part of a sentence.
std::wstring as_reason(const std::string& message);

}  // namespace vorel::viewer
