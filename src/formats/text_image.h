// Text as a picture: how much of it a bitmap can hold, and the bitmap.
#pragma once

#include <string_view>

namespace vorel::formats {

// What the measuring knows of a font, in pixels.
struct FontSize {
  int line_height, average_width;
};

// How far a text goes that is written character by character, all of them average.
struct TextExtent {
  size_t length;  // characters up to the first zero byte, or up to where the text is cut off
  bool is_cut;    // there is more, but no bitmap is as high
  int x, y;       // behind the last character: column within its line, top of that line
};

// Only carriage returns end lines. A line that is too long goes on where it is; a backspace is eight characters wide.
TextExtent measure_text(std::string_view text, FontSize font);

}  // namespace vorel::formats
