// Pages of a file as people write them down.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorel::programs {

// "1-3,5" gives 1, 2, 3 and 5, in the order written; "4-" goes on to the last page; an empty text gives all. No value if the
// text is no list of pages, or names one beyond `pages`.
std::optional<std::vector<int>> parse_page_range(std::string text, int pages);

}  // namespace vorel::programs
