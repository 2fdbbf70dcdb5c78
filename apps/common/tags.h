// What files tell of their pictures in words: the tags of TIFF files, the records of cameras, the texts of PNG files and comments.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "core/file_formats.h"

namespace vorel::programs {

struct Tag {
  std::string name, value;  // in UTF-8, on one line
};

// Of a page, counted from 1, of a file that starts at the beginning of the stream. A damaged file has the tags in front of the
// damage; formats that keep none have none.
std::vector<Tag> read_tags(std::istream& stream, FormatCode format, int page);

}  // namespace vorel::programs
