#include "cli/decimal.h"

#include <charconv>

namespace vorel::cli {

std::optional<double> parse_decimal(const std::string& text) {
  double value = 0;
  const char* const begin = text.data() + (text.starts_with('+') ? 1 : 0);
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(begin, end, value, std::chars_format::fixed);
  if (error != std::errc() || stop != end) return {};
  return value;
}

}  // namespace vorel::cli
