#include "cli/decimal.h"

#include <charconv>
#include <cmath>

namespace vorel::cli {
namespace {

template <class Number, class... Format>
std::optional<Number> parsed(const std::string& text, Format... format) {
  Number value{};
  const char* const begin = text.data() + (text.starts_with('+') ? 1 : 0);
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(begin, end, value, format...);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<double> parse_decimal(const std::string& text) {
  const auto value = parsed<double>(text, std::chars_format::fixed);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<int> parse_whole(const std::string& text) { return parsed<int>(text); }

}  // namespace vorel::cli
