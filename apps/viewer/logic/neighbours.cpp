#include "viewer/logic/neighbours.h"

#include <algorithm>
#include <cwctype>
#include <string_view>
#include <utility>

namespace vorel::viewer {
namespace {

bool is_digit(wchar_t character) { return character >= L'0' && character <= L'9'; }

// Takes the digits off the front of a text, and leading zeros off those.
std::wstring_view take_number(std::wstring_view& text) {
  const auto end = std::ranges::find_if_not(text, is_digit) - text.begin();
  std::wstring_view digits = text.substr(0, end);
  text.remove_prefix(end);
  digits.remove_prefix(std::min(digits.find_first_not_of(L'0'), digits.size()));
  return digits;
}

// Negative, 0 or positive, as the first differing part says.
int compare(std::wstring_view a, std::wstring_view b) {
  while (!a.empty() && !b.empty()) {
    if (is_digit(a.front()) && is_digit(b.front())) {
      const std::wstring_view x = take_number(a), y = take_number(b);
      if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
      if (const int order = x.compare(y)) return order;
    } else {
      const auto x = std::towlower(a.front()), y = std::towlower(b.front());
      if (x != y) return x < y ? -1 : 1;
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  return static_cast<int>(b.empty()) - static_cast<int>(a.empty());
}

}  // namespace

bool comes_before(const std::wstring& name, const std::wstring& other) {
  const int order = compare(name, other);
  return order != 0 ? order < 0 : name < other;
}

std::vector<std::wstring> in_order(std::vector<std::wstring> names) {
  std::ranges::sort(names, comes_before);
  return names;
}

std::optional<std::wstring> neighbour(std::vector<std::wstring> names, const std::wstring& current, int step) {
  std::erase(names, current);
  names = in_order(std::move(names));
  const auto after = std::ranges::lower_bound(names, current, comes_before) - names.begin();
  const auto place = step > 0 ? after + step - 1 : after + step;
  if (place < 0 || place >= std::ssize(names)) return std::nullopt;
  return names[place];
}

}  // namespace vorel::viewer
