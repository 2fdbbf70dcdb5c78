// ASCII letters regardless of case, independent of the locale.
#pragma once

#include <algorithm>
#include <string_view>

namespace vorel {

inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

inline bool equal_ignoring_case(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lower, lower);
}

struct LessIgnoringCase {
  bool operator()(std::string_view a, std::string_view b) const {
    return std::ranges::lexicographical_compare(a, b, {}, lower, lower);
  }
};

}  // namespace vorel
