#include "common/page_range.h"

#include <algorithm>
#include <numeric>
#include <ranges>
#include <string_view>

namespace vorel::programs {
namespace {

struct Range {
  int first, last;
};

// A page number, of digits alone.
std::optional<int> parse_page(std::string_view text, int pages) {
  if (text.empty()) return std::nullopt;
  int page = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') return std::nullopt;
    page = page * 10 + (digit - '0');
    if (page > pages) return std::nullopt;
  }
  return page > 0 ? std::optional(page) : std::nullopt;
}

std::optional<Range> parse_part(std::string_view text, int pages) {
  const size_t dash = text.find('-');
  const auto first = parse_page(text.substr(0, dash), pages);
  if (dash == text.npos) return first ? std::optional(Range{*first, *first}) : std::nullopt;
  const std::string_view behind = text.substr(dash + 1);
  const auto last = behind.empty() ? pages : parse_page(behind, pages);
  return first && last && *first <= *last ? std::optional(Range{*first, *last}) : std::nullopt;
}

void append(std::vector<int>& pages, Range range) {
  const auto count = static_cast<size_t>(range.last - range.first) + 1;
  pages.resize(pages.size() + count);
  std::iota(pages.end() - static_cast<std::ptrdiff_t>(count), pages.end(), range.first);
}

}  // namespace

std::optional<std::vector<int>> parse_page_range(std::string text, int pages) {
  std::erase(text, ' ');
  if (text.empty()) text = "1-";
  std::vector<int> listed;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(',', begin), text.size());
    const auto range = parse_part(std::string_view(text).substr(begin, end - begin), pages);
    if (!range) return std::nullopt;
    append(listed, *range);
    begin = end + 1;
  }
  return listed;
}

}  // namespace vorel::programs
