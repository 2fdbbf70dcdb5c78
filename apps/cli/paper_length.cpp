#include "cli/paper_length.h"

#include <algorithm>

#include "cli/decimal.h"
#include "common/page/units.h"

namespace vorel::cli {
namespace {

constexpr double kMostLength = 100'000;

bool is_on_paper(const std::string& text) { return text.ends_with("mm"); }

}  // namespace

std::string length_is_wrong(const std::string& text) {
  const bool has_unit = is_on_paper(text) || text.ends_with("px");
  const auto value = has_unit ? parse_decimal(text.substr(0, text.size() - 2)) : std::nullopt;
  return value && *value >= 0 && *value <= kMostLength ? "" : "\"" + text + "\" is no length like 0.5mm or 4px";
}

Size length_on(const programs::Picture& picture, const std::string& text) {
  const double value = *parse_decimal(text.substr(0, text.size() - 2));
  const bool on_paper = is_on_paper(text);
  const auto pixels = [&](double per_millimetre) {
    return std::max(1, programs::pixels_of(value, on_paper ? per_millimetre : 1));
  };
  if (value == 0) return {0, 0};
  return {pixels(programs::across_per_millimetre(picture)), pixels(programs::down_per_millimetre(picture))};
}

std::string resolution_note(const programs::Picture& picture, const std::string& text) {
  return is_on_paper(text) && !programs::states_resolution(picture) ? " (at 300 dpi, which is assumed)" : "";
}

}  // namespace vorel::cli
