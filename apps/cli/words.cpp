#include "cli/words.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>

namespace vorel::cli {
namespace {

constexpr std::string_view kProtectable = "'\"\\|# \t";
constexpr std::string_view kBlanks = " \t\r\v\f";

bool is_in(std::string_view set, char letter) { return set.find(letter) != std::string_view::npos; }

class Splitter {
 public:
  explicit Splitter(std::string_view text) : text_(text) {}

  std::optional<std::vector<Piece>> split() {
    for (; at_ < text_.size(); ++at_)
      if (!take(text_[at_])) return std::nullopt;
    end_word();
    return std::move(pieces_);
  }

 private:
  // False if a quotation does not end.
  bool take(char letter) {
    if (letter == '|' || letter == '\n') {
      end_word();
      pieces_.push_back({letter == '|' ? Piece::Kind::kBar : Piece::Kind::kLineEnd, {}});
    } else if (is_in(kBlanks, letter)) {
      end_word();
    } else if (letter == '#' && !in_word_) {
      at_ = std::min(text_.find('\n', at_), text_.size()) - 1;
    } else {
      in_word_ = true;
      if (letter == '\'' || letter == '"') return take_quotation(letter);
      if (letter == '\\' && is_protecting()) ++at_;
      word_ += text_[at_];
    }
    return true;
  }

  bool take_quotation(char quote) {
    for (++at_; at_ < text_.size() && text_[at_] != quote; ++at_) {
      if (quote == '"' && text_[at_] == '\\' && at_ + 1 < text_.size() && is_in("\"\\", text_[at_ + 1])) ++at_;
      word_ += text_[at_];
    }
    return at_ < text_.size();
  }

  bool is_protecting() const { return at_ + 1 < text_.size() && is_in(kProtectable, text_[at_ + 1]); }

  void end_word() {
    if (in_word_) pieces_.push_back({Piece::Kind::kWord, std::move(word_)});
    word_.clear();
    in_word_ = false;
  }

  std::string_view text_;
  size_t at_ = 0;
  std::vector<Piece> pieces_;
  std::string word_;
  bool in_word_ = false;
};

// Letters left out, put in, exchanged or swapped with a neighbour.
size_t distance(std::string_view a, std::string_view b) {
  std::vector<size_t> before, above(b.size() + 1), row(b.size() + 1);
  std::iota(above.begin(), above.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      const bool is_swap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (is_swap) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = std::exchange(above, row);
  }
  return above.back();
}

// The known word that somebody may have meant. Empty if none is similar.
std::string nearest_word(const std::string& typed, const std::vector<std::string>& known) {
  std::string nearest;
  size_t least = typed.size() / 3 + 1;  // more errors are another word
  for (const std::string& word : known) {
    const bool is_beginning = typed.size() > 1 && word.starts_with(typed);
    const size_t errors = is_beginning ? 0 : distance(typed, word);
    if (errors > least || (errors == least && !nearest.empty())) continue;
    nearest = word;
    least = errors;
  }
  return nearest;
}

}  // namespace

std::optional<std::vector<Piece>> pieces_of(const std::string& text) { return Splitter(text).split(); }

std::string quoted(const std::string& word) {
  const bool is_plain = !word.empty() && word.find_first_of("'\"\\|# \t\r\v\f\n") == std::string::npos;
  if (is_plain) return word;
  if (word.find('\'') == std::string::npos) return "'" + word + "'";
  std::string text = "\"";
  for (const char letter : word) {
    if (letter == '"' || letter == '\\') text += '\\';
    text += letter;
  }
  return text + '"';
}

std::string suggestion(const std::string& typed, const std::vector<std::string>& known) {
  const std::string nearest = nearest_word(typed, known);
  return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}

}  // namespace vorel::cli
