#include "formats/text_image.h"

namespace vorel::formats {
namespace {

constexpr int kMostPixels = 32'767;
constexpr int kBackspaceCharacters = 8;

}  // namespace

TextExtent measure_text(std::string_view text, FontSize font) {
  text = text.substr(0, text.find('\0'));
  int x = 1, y = 1;
  for (size_t i = 0; i < text.size(); ++i) {
    if (y >= kMostPixels - font.line_height) return {.length = i, .is_cut = true, .x = x, .y = y};
    if (text[i] == '\r') {
      y += font.line_height;
      x = 0;
    } else if (x < kMostPixels - font.average_width) {
      x += text[i] == '\b' ? kBackspaceCharacters * font.average_width : font.average_width;
    }
  }
  return {.length = text.size(), .is_cut = false, .x = x, .y = y};
}

}  // namespace vorel::formats
