// Measuring a text with a font of any size.
#include "calls.h"
#include "formats/text_image.h"

using namespace vorel::formats;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const FontSize font{.line_height = 1 + input.byte(), .average_width = 1 + input.byte()};
  const std::string_view text(reinterpret_cast<const char*>(input.rest().data()), input.rest().size());
  const TextExtent all = measure_text(text, font);
  fuzz::require(all.length <= text.size() && all.x >= 0 && all.y >= 0);
  // What was measured measures the same by itself.
  const TextExtent again = measure_text(text.substr(0, all.length), font);
  fuzz::require(again.length == all.length && again.x == all.x && again.y == all.y);
  return 0;
}
