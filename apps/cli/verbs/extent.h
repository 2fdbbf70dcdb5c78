// Sizes and positions as people write them.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace vorel::cli {

struct Extent {
  int width = 0, height = 0;
};

struct Position {
  int x = 0, y = 0;
};

// Let pass "WIDTHxHEIGHT" with numbers from 1, the same or "P%" with a number above 0, and "X,Y".
CLI::Validator is_extent();
CLI::Validator is_extent_or_percent();
CLI::Validator is_position();

// None if the text is something else.
std::optional<double> parse_percent(const std::string& text);

// Of texts that have passed.
Extent parse_extent(const std::string& text);
Position parse_position(const std::string& text);

}  // namespace vorel::cli
