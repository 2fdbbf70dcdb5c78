// The segments in front of a JPEG picture.
#pragma once

#include <functional>
#include <istream>
#include <string_view>

namespace vorel::programs {

// Calls visit(marker, contents) for each one up to the picture or to damage.
void for_each_jpeg_segment(std::istream& stream, const std::function<void(int marker, std::string_view bytes)>& visit);

// The record of a camera begins with this; a TIFF header follows.
inline constexpr std::string_view kExifSignature{"Exif\0\0", 6};
bool is_exif(int marker, std::string_view bytes);

}  // namespace vorel::programs
