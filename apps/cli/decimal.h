// Numbers with a decimal point as people write them.
#pragma once

#include <fmt/format.h>
#include <optional>
#include <string>

#include "cli/arguments.h"

namespace vorel::cli {

// None if the text is something else.
std::optional<double> parse_decimal(const std::string& text);

// Lets pass numbers within two others.
inline Check decimal_between(double least, double most) {
  return [=](const std::string& text) -> std::string {
    const auto value = parse_decimal(text);
    if (!value) return fmt::format("\"{}\" is no number", text);
    if (*value < least || *value > most) return fmt::format("{} is not within {} and {}", text, least, most);
    return "";
  };
}

}  // namespace vorel::cli
