// A dialog that asks for a few whole numbers.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>

#include "viewer/system.h"

namespace vorel::viewer {

struct Parameter {
  const wchar_t* label;  // with & before its key
  int least, most, usual;
};

inline constexpr size_t kMostParameters = 2;
using Numbers = std::array<int, kMostParameters>;

// Shows what numbers would do, while they are entered.
class NumberPreview {
 public:
  virtual ~NumberPreview() = default;
  virtual void begin(const Numbers& numbers, HWND dialog, UINT message) = 0;  // posts the message when it is done
  virtual std::wstring show() = 0;                                            // what is done; returns what to tell of it
};

// Returns what was entered, within the bounds of each parameter; none if it was cancelled. Begins with `numbers`.
std::optional<Numbers> ask_for_numbers(HWND owner, const std::wstring& title, std::span<const Parameter> parameters,
                                       const Numbers& numbers, NumberPreview* preview = nullptr);

}  // namespace vorel::viewer
