// Lengths on paper as people write them: "0.5mm", "4px".
#pragma once

#include <string>

#include "common/picture.h"
#include "core/view.h"

namespace vorel::cli {

// Returns what is wrong with a text.
std::string length_is_wrong(const std::string& text);

// A length that has passed the check in pixels, across and down: at least one, unless the length is 0. A picture without a
// resolution of 30 to 10,000 dpi counts as one of 300 dpi.
Size length_on(const programs::Picture& picture, const std::string& text);

// " (at 300 dpi, which is assumed)" where length_on() assumes a resolution, else "".
std::string resolution_note(const programs::Picture& picture, const std::string& text);

}  // namespace vorel::cli
