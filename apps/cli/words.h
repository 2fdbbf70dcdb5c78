// Splitting, quoting and comparing words that users type.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace vorel::cli {

// Pieces of a chain's text: words, bars and line ends. Quotes work as in a shell. A backslash protects a quote, a blank, a
// bar, a hash or itself; elsewhere it is an ordinary character. A hash at the start of a word begins a comment.
struct Piece {
  enum class Kind { kWord, kBar, kLineEnd } kind;
  std::string text;
};
// Empty if a quotation does not end.
std::optional<std::vector<Piece>> pieces_of(const std::string& text);

// A word in the spelling that pieces_of() takes back.
std::string quoted(const std::string& word);

// The enumerator that a known word stands for: the words are in the order of the enumeration.
template <class Enum>
Enum enumerator_of(const std::vector<std::string>& words, const std::string& word) {
  return static_cast<Enum>(std::ranges::find(words, word) - words.begin());
}

// "; did you mean "x"?" or nothing.
std::string suggestion(const std::string& typed, const std::vector<std::string>& known);

}  // namespace vorel::cli
