// Pages of a file as people write them down.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorel::programs {

// "1-3,5" as 1, 2, 3 and 5, in the order in which they are written; "4-" goes on to the last page. All pages for an empty text; none
// for one that is no list of pages, or names pages that a file of `pages` does not have.
std::optional<std::vector<int>> parse_page_range(std::string text, int pages);

}  // namespace vorel::programs
