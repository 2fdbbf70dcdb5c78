// The rasters of what print_jobs_test printed: every image where it should be, to a dot, and the right way up.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>

#include "win32/support/printer.h"

using namespace test;

namespace {

// A raster of one bit per dot.
class Raster {
 public:
  explicit Raster(const std::string& file) : bytes_(read_file(file)) {
    const std::string head(bytes_.begin(), bytes_.begin() + std::min<std::ptrdiff_t>(200, std::ssize(bytes_)));
    size_t at = 0;
    const auto line = [&] {
      const size_t start = at, end = head.find('\n', at);
      at = end == std::string::npos ? head.size() : end + 1;
      return head.substr(start, at - start);
    };
    if (line() != "P4\n") return;
    std::string sizes = line();
    while (sizes.starts_with("#")) sizes = line();
    std::sscanf(sizes.c_str(), "%d %d", &width_, &height_);
    rows_ = at;
  }

  explicit operator bool() const { return height_ > 0; }
  bool is_black(double x, double y) const { return is_black(static_cast<int>(x), static_cast<int>(y)); }
  bool is_black(int x, int y) const { return (bytes_[row(y) + static_cast<size_t>(x / 8)] & (0x80 >> x % 8)) != 0; }

  // The edges of all that is black.
  std::array<int, 4> edges() const {
    std::array<int, 4> found = {width_, height_, 0, 0};
    for (int y = 0; y < height_; ++y) {
      const uint8_t* begin = bytes_.data() + row(y);
      const uint8_t* end = begin + stride();
      if (std::all_of(begin, end, [](uint8_t byte) { return byte == 0; })) continue;
      int left = 0, right = width_;
      while (!is_black(left, y)) ++left;
      while (!is_black(right - 1, y)) --right;
      found = {std::min(found[0], left), std::min(found[1], y), std::max(found[2], right), y + 1};
    }
    return found;
  }

 private:
  size_t stride() const { return static_cast<size_t>(width_ + 7) / 8; }
  size_t row(int y) const { return rows_ + static_cast<size_t>(y) * stride(); }

  Bytes bytes_;
  int width_ = 0, height_ = 0;
  size_t rows_ = 0;
};

class Edges : public testing::TestWithParam<int> {
 protected:
  ~Edges() override {  // the rasters are large
    for (int page = 1; !HasFailure() && std::filesystem::remove(file_of(page)); ++page) {
    }
  }

  std::filesystem::path file_of(int page) const {
    return printed_folder() / (std::to_string(GetParam()) + "-page" + std::to_string(page) + ".pbm");
  }
};

TEST_P(Edges, AreWhereTheLayoutPutsThem) {
  const auto raster_of = [&](int page) { return Raster(file_of(page).string()); };
  const auto printable = raster_of(1).edges();  // the page that is all black
  std::ifstream list(printed_folder() / (std::to_string(GetParam()) + ".expected"));
  int page = 1;
  for (double left, top, right, bottom; list >> left >> top >> right >> bottom;) {
    const Raster raster = raster_of(++page);
    ASSERT_TRUE(raster) << "page " << page;
    const auto found = raster.edges();
    const double wanted[] = {left, top, right, bottom};
    for (size_t i = 0; i < 4; ++i) {
      EXPECT_LE(std::abs(found[i] - printable[i % 2] - wanted[i]), 1.0) << "page " << page << ", edge " << i;
    }
    const auto black_at = [&](double x, double y) {
      return raster.is_black(printable[0] + left + (right - left) * x, printable[1] + top + (bottom - top) * y);
    };
    const bool is_one_image = black_at(0.5, 0.5);
    if (is_one_image) {
      EXPECT_TRUE(!black_at(0.375, 0.1875) && black_at(0.625, 0.1875) && black_at(0.375, 0.8125)) << "page " << page;
    }
  }
  EXPECT_GT(page, 36);
  EXPECT_FALSE(raster_of(page + 1)) << "a page too many";
}

INSTANTIATE_TEST_SUITE_P(Resolutions, Edges, testing::ValuesIn(kPrinterResolutions),
                         [](const auto& tested) { return std::to_string(tested.param); });

}  // namespace
