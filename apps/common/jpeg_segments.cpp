#include "common/jpeg_segments.h"

#include <string>

namespace vorel::programs {

void for_each_jpeg_segment(std::istream& stream, const std::function<void(int marker, std::string_view bytes)>& visit) {
  constexpr int kEndOfHeaders = 0xDA;
  if (stream.get() != 0xFF || stream.get() != 0xD8) return;
  std::string segment;
  for (;;) {
    int marker = stream.get();
    if (marker != 0xFF) return;
    while (marker == 0xFF) marker = stream.get();
    const int high = stream.get(), low = stream.get();
    if (!stream || marker == kEndOfHeaders || high * 256 + low < 2) return;
    segment.resize(static_cast<size_t>(high * 256 + low - 2));
    stream.read(segment.data(), static_cast<std::streamsize>(segment.size()));
    segment.resize(static_cast<size_t>(stream.gcount()));
    visit(marker, segment);
  }
}

bool is_exif(int marker, std::string_view bytes) {
  constexpr int kApplication1 = 0xE1;
  return marker == kApplication1 && bytes.starts_with(kExifSignature);
}

}  // namespace vorel::programs
