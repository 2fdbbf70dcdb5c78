// Steps of the command line tool as texts.
#pragma once

#include <span>
#include <string>

namespace vorel::viewer {

// A pattern with numbers: {0} stands for the first one, {0:2} for the same with at least two digits.
std::string filled(const std::string& pattern, std::span<const int> numbers);

// One after another, as the tool takes them. Either may be empty.
std::string chained(const std::string& steps, const std::string& more);

// The same with a step a line, as a file of steps has them.
std::string as_lines(const std::string& steps);

}  // namespace vorel::viewer
