// Numbers in short texts, read without allocating: scanf of some C libraries allocates, and crashes when it cannot.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace codec {

class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  // Moves past `expected` if it comes next.
  bool skip(std::string_view expected) {
    const bool is_next = rest_.starts_with(expected);
    if (is_next) rest_.remove_prefix(expected.size());
    return is_next;
  }

  // Moves behind the next `expected`.
  bool skip_to(std::string_view expected) {
    rest_.remove_prefix(std::min(rest_.find(expected), rest_.size()));
    return skip(expected);
  }

  void skip_spaces() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\n\v\f\r"), rest_.size())); }

  // A decimal number of at most `most` characters, its sign included.
  std::optional<int64_t> number(size_t most) {
    std::string_view text = rest_.substr(0, most);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return std::nullopt;
    rest_.remove_prefix(static_cast<size_t>(end - rest_.data()));
    return value;
  }

 private:
  std::string_view rest_;
};

}  // namespace codec
