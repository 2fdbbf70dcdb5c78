// Turning by any angle, skewing and scaling an A4 page at 300 dots per inch.
#include <benchmark/benchmark.h>
#include <string>

#include <vorel32.h>

#include "beside_plain.h"
#include "support/plain_geometry.h"

namespace {

using test::Bytes;

Operation rotation(int method) {
  return {[=](HGLOBAL dib) {
            int status = 0;
            return RotateDIB(dib, 17, method, &status, nullptr);
          },
          [=](const Bytes& dib) { return test::plain_rotation(dib, 17, method); }};
}

Operation skew(bool rows) {
  constexpr int kOffset = 400;
  return {[=](HGLOBAL dib) { return SkewDIB(dib, rows, kOffset, nullptr, nullptr); },
          [=](const Bytes& dib) { return test::plain_skew(dib, rows, kOffset); }};
}

Operation scaling(int depth, bool cubic, int percent) {
  const int width = kPageWidth * percent / 100, height = kPageHeight * percent / 100;
  return {[=](HGLOBAL dib) { return ScaleDIB(dib, cubic, static_cast<unsigned>(width), static_cast<unsigned>(height)); },
          [=](const Bytes& dib) {
            return depth == 1 ? test::plain_nearest(dib, 0, 0, kPageWidth, kPageHeight, width, height)
                              : test::plain_scaling(dib, cubic, width, height);
          }};
}

const bool registered = [] {
  for (int depth : {1, 8, 24}) {
    add_beside_plain("RotateDIB_exact", depth, rotation(0));
    add_beside_plain("RotateDIB_integer", depth, rotation(1));
    add_beside_plain("SkewDIB_rows", depth, skew(true));
    add_beside_plain("SkewDIB_columns", depth, skew(false));
  }
  for (int percent : {50, 75, 200})
    for (bool cubic : {false, true}) {
      const std::string name = (cubic ? "ScaleDIB_cubic_" : "ScaleDIB_linear_") + std::to_string(percent);
      add_beside_plain(name, 8, scaling(8, cubic, percent));
      add_beside_plain(name, 8, scaling(8, cubic, percent), true);
      add_beside_plain(name, 24, scaling(24, cubic, percent));
    }
  add_beside_plain("ScaleDIB_nearest_50", 1, scaling(1, false, 50));
  return true;
}();

}  // namespace
