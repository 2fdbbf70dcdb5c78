// The pages whose slant is measured.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "common/picture.h"

namespace vorel::bench {

struct TestPage {
  std::string kind;
  std::optional<double> degrees;  // clockwise; empty if the page has no direction and must be left alone
  programs::Picture picture;
};

// Pages of text, each from a random recipe: font, size, spacing, columns, resolution, slant within 15 degrees, faults of the scan,
// pictures.
inline constexpr int kTextPages = 240;
TestPage text_page(int number);

// Pages of other kinds, several of each.
int other_pages();
TestPage other_page(int number);

}  // namespace vorel::bench
