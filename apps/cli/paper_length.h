// Lengths on paper as people write them: "0.5mm", "4px".
#pragma once

#include <string>

#include "common/picture.h"
#include "core/view.h"

namespace vorel::cli {

// Returns what is wrong with a text.
std::string length_is_wrong(const std::string& text);

// Pixels across and down, of a text that has passed: at least one, unless the length is 0. Pictures without a resolution of 30 to
// 10,000 dpi count as ones of 300 dpi.
Size length_on(const programs::Picture& picture, const std::string& text);

// " (at 300 dpi, which is assumed)" where length_on() assumes a resolution, else nothing.
std::string resolution_note(const programs::Picture& picture, const std::string& text);

}  // namespace vorel::cli
