#include "cli/verbs/extent.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace vorel::cli {
namespace {

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

}  // namespace

CLI::Validator is_extent() {
  return {[](std::string& text) { return states_extent(text) ? "" : text + " is no size; write it like 640x480"; }, ""};
}

CLI::Validator is_extent_or_percent() {
  return {[](std::string& text) {
            const bool is_either = states_extent(text) || parse_percent(text);
            return is_either ? "" : text + " is no size; write it like 640x480 or 50%";
          },
          ""};
}

CLI::Validator is_position() {
  return {[](std::string& text) { return numbers(text, ',') ? "" : text + " is no position; write it like 100,50"; }, ""};
}

std::optional<double> parse_percent(const std::string& text) {
  double percent = 0;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, percent);
  const bool is_percent =
      number.ec == std::errc() && number.ptr + 1 == end && *number.ptr == '%' && percent > 0 && std::isfinite(percent);
  return is_percent ? std::optional(percent) : std::nullopt;
}

Extent parse_extent(const std::string& text) {
  const auto [width, height] = numbers(text, 'x').value();
  return {width, height};
}

Position parse_position(const std::string& text) {
  const auto [x, y] = numbers(text, ',').value();
  return {x, y};
}

}  // namespace vorel::cli
