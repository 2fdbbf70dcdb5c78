#include "cli/extent.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "core/resolution.h"

namespace vorel::cli {
namespace {

constexpr int kMostDpi = 50'000;

// Two whole numbers with a character between them.
std::optional<std::pair<int, int>> numbers(const std::string& text, char between) {
  std::pair<int, int> both;
  const char* const end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, both.first);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != between) return std::nullopt;
  const auto second = std::from_chars(first.ptr + 1, end, both.second);
  if (second.ec != std::errc() || second.ptr != end) return std::nullopt;
  return both;
}

bool states_extent(const std::string& text) {
  const auto both = numbers(text, 'x');
  return both && both->first > 0 && both->second > 0;
}

// One number stands for both directions.
std::optional<std::pair<int, int>> dpi_of(const std::string& text) {
  const auto both = numbers(text.find('x') == std::string::npos ? text + 'x' + text : text, 'x');
  const auto is_usual = [](int dpi) { return dpi > 0 && dpi <= kMostDpi; };
  return both && is_usual(both->first) && is_usual(both->second) ? both : std::nullopt;
}

}  // namespace

std::string extent_is_wrong(const std::string& text) {
  return states_extent(text) ? "" : "\"" + text + "\" is no size; write it like 640x480";
}

std::string extent_or_percent_is_wrong(const std::string& text) {
  return states_extent(text) || parse_percent(text) ? "" : "\"" + text + "\" is no size; write it like 640x480 or 50%";
}

std::string position_is_wrong(const std::string& text) {
  return numbers(text, ',') ? "" : "\"" + text + "\" is no position; write it like 100,50";
}

std::string dpi_is_wrong(const std::string& text) {
  return dpi_of(text) ? "" : "\"" + text + "\" is no resolution; write it like 300 or 204x196";
}

std::optional<double> parse_percent(const std::string& text) {
  double percent = 0;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, percent);
  const bool is_percent =
      number.ec == std::errc() && number.ptr + 1 == end && *number.ptr == '%' && percent > 0 && std::isfinite(percent);
  return is_percent ? std::optional(percent) : std::nullopt;
}

Size parse_extent(const std::string& text) {
  const auto [width, height] = numbers(text, 'x').value();
  return {width, height};
}

programs::Corner parse_position(const std::string& text) {
  const auto [x, y] = numbers(text, ',').value();
  return {x, y};
}

Size parse_dpi(const std::string& text) {
  const auto [x, y] = dpi_of(text).value();
  return {x, y};
}

void state_dpi(programs::Picture& picture, const std::string& dpi) {
  const Size per_inch = parse_dpi(dpi);
  const auto [x, y] = from_dpi(per_inch.width, per_inch.height);
  picture.set_resolution(x, y);
}

}  // namespace vorel::cli
