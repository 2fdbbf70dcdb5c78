// Text as a picture: the part that fits a bitmap, and the bitmap's size.
#pragma once

#include <string_view>

namespace vorel::formats {

// The font measurements, in pixels.
struct FontSize {
  int line_height, average_width;
};

// The extent of a text that is written character by character, at average width.
struct TextExtent {
  size_t length;  // characters up to the first zero byte, or up to where the text is cut off
  bool is_cut;    // the rest needs a bitmap higher than any
  int x, y;       // behind the last character: column within its line, top of that line
};

// Only carriage returns end lines. A line as wide as any bitmap grows no further; a backspace is eight characters wide.
TextExtent measure_text(std::string_view text, FontSize font);

}  // namespace vorel::formats
