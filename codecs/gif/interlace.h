// The order of rows in an interlaced picture.
#pragma once

namespace codec::gif {

// The row, from the top, that is the `i`th of an interlaced file of `height` rows.
constexpr int interlaced_row(int i, int height) {
  constexpr struct { int first, step; } kPasses[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
  for (const auto& pass : kPasses) {
    const int rows = (height - pass.first + pass.step - 1) / pass.step;
    if (i < rows) return pass.first + i * pass.step;
    i -= rows;
  }
  return 0;
}

}  // namespace codec::gif
