// File names with wildcards, expanded by the tool itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorel::cli::batch {

bool has_wildcard(std::string_view name);

// * is any text, ? any letter, [a-c] and [!a-c] one of several.
bool matches(std::string_view pattern, std::string_view name);

// The folder that a pattern begins with, and what it says below that, as "scans" and {"*", "p?.tif"}.
struct Pattern {
  std::string folder;
  std::vector<std::string> below;
};
Pattern pattern_of(const std::string& text);

}  // namespace vorel::cli::batch
