// Numbers as people write them: a sign may stand before the digits.
#pragma once

#include <optional>
#include <string>

namespace vorel::cli {

// None if the text is something else.
std::optional<double> parse_decimal(const std::string& text);  // without an exponent, and finite
std::optional<int> parse_whole(const std::string& text);

}  // namespace vorel::cli
