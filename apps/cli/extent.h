// Sizes, positions and resolutions as people write them.
#pragma once

#include <optional>
#include <string>

#include "common/operations.h"
#include "core/view.h"

namespace vorel::cli {

// Checks that let pass "WIDTHxHEIGHT" with numbers from 1, the same or "P%" with a number above 0, "X,Y", and "N" or "NxM" dots
// per inch. Each returns what is wrong with a text.
std::string extent_is_wrong(const std::string& text);
std::string extent_or_percent_is_wrong(const std::string& text);
std::string position_is_wrong(const std::string& text);
std::string dpi_is_wrong(const std::string& text);

// None if the text is something else.
std::optional<double> parse_percent(const std::string& text);

// Of texts that have passed.
Size parse_extent(const std::string& text);
programs::Corner parse_position(const std::string& text);
Size parse_dpi(const std::string& text);

constexpr double kInchesPerMetre = 100 / 2.54;

// Of a text that has passed.
void state_dpi(programs::Picture& picture, const std::string& dpi);

}  // namespace vorel::cli
