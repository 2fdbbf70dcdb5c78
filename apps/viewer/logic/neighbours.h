// The pictures beside a picture in its folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorel::viewer {

// Whether a name comes before another as people count: case does not matter, and numbers go by their value, so that page 9 comes
// before page 10.
bool comes_before(const std::wstring& name, const std::wstring& other);

// In that order.
std::vector<std::wstring> in_order(std::vector<std::wstring> names);

// The name that comes `step` places after `current` among names in any order; none past the ends. `current` need not be there.
std::optional<std::wstring> neighbour(std::vector<std::wstring> names, const std::wstring& current, int step);

}  // namespace vorel::viewer
