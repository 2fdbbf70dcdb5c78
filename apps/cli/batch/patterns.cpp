#include "cli/batch/patterns.h"

#include <algorithm>
#include <cstdint>

namespace vorel::cli::batch {
namespace {

// Names differ by case on some systems and not on others.
#ifdef _WIN32
constexpr bool kIgnoresCase = true;
constexpr std::string_view kSlashes = "/\\";
#else
constexpr bool kIgnoresCase = false;
constexpr std::string_view kSlashes = "/";
#endif

char folded(char letter) {
  return kIgnoresCase && letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// Bytes of the first letter.
size_t letter_bytes(std::string_view text) {
  size_t bytes = 1;
  while (bytes < text.size() && (static_cast<uint8_t>(text[bytes]) & 0xC0) == 0x80) ++bytes;
  return bytes;
}

// The end of a set such as [a-c], or 0 if it has none and the bracket is a letter.
size_t set_end(std::string_view pattern) {
  const size_t first = pattern.size() > 1 && pattern[1] == '!' ? 3 : 2;
  const size_t end = pattern.find(']', first);
  return end == std::string_view::npos ? 0 : end + 1;
}

bool is_in_set(std::string_view set, std::string_view letter) {  // between the brackets
  const bool is_negated = set.starts_with('!');
  if (is_negated) set.remove_prefix(1);
  bool found = false;
  for (size_t i = 0; i < set.size();) {
    const std::string_view from = set.substr(i, letter_bytes(set.substr(i)));
    std::string_view to = from;
    i += from.size();
    if (i + 1 < set.size() && set[i] == '-') {
      to = set.substr(i + 1, letter_bytes(set.substr(i + 1)));
      i += 1 + to.size();
    }
    found = found || (from <= letter && letter <= to);  // the order of UTF-8 is that of the letters
  }
  return found != is_negated;
}

}  // namespace

bool has_wildcard(std::string_view name) { return name.find_first_of("*?[") != std::string_view::npos; }

bool matches(std::string_view pattern, std::string_view name) {
  // Where to go on if the text that the last asterisk stands for must be longer.
  std::string_view behind_asterisk, rest;
  bool has_asterisk = false;
  while (!name.empty() || !pattern.empty()) {
    if (pattern.starts_with('*')) {
      has_asterisk = true;
      behind_asterisk = pattern = pattern.substr(1);
      rest = name;
      continue;
    }
    if (!name.empty() && !pattern.empty()) {
      const size_t letter = letter_bytes(name), set = pattern[0] == '[' ? set_end(pattern) : 0;
      const bool is_match = set != 0            ? is_in_set(pattern.substr(1, set - 2), name.substr(0, letter))
                            : pattern[0] == '?' ? true
                                                : folded(pattern[0]) == folded(name[0]);
      if (is_match) {
        name.remove_prefix(set != 0 || pattern[0] == '?' ? letter : 1);
        pattern.remove_prefix(set != 0 ? set : 1);
        continue;
      }
    }
    if (!has_asterisk || rest.empty()) return false;
    rest.remove_prefix(letter_bytes(rest));
    name = rest;
    pattern = behind_asterisk;
  }
  return true;
}

Pattern pattern_of(const std::string& text) {
  const size_t wildcard = text.find_first_of("*?[");
  const size_t slash = wildcard == 0 ? std::string::npos : text.find_last_of(kSlashes, wildcard);
  Pattern pattern;
  if (slash != std::string::npos) pattern.folder = text.substr(0, slash == 0 ? 1 : slash);
  for (size_t at = slash + 1; at <= text.size();) {  // npos + 1 is 0
    const size_t end = std::min(text.find_first_of(kSlashes, at), text.size());
    if (end > at) pattern.below.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return pattern;
}

}  // namespace vorel::cli::batch
