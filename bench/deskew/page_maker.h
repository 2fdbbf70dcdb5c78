// Scanned pages with a known slant, made from outline fonts and drawn shapes.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "common/picture.h"

namespace vorel::bench {

struct PagePoint {
  double x = 0, y = 0;  // in points of 1/72 inch from the upper left corner of the straight page
};

struct ScanFaults {
  double blur = 0;         // radius in pixels
  double grain = 0;        // standard deviation of the ink before the threshold
  double specks = 0;       // share of the pixels
  double threshold = 0.5;  // the least ink of a black pixel
};

// A page of ink, turned clockwise about its centre by some degrees while it is drawn: outlines are turned, not pixels.
class PageMaker {
 public:
  PageMaker(double width, double height, int dpi, double degrees, uint32_t seed);
  ~PageMaker();

  static std::vector<std::string> fonts();  // paths of the installed fonts

  // Returns the width of the text. `at` is the left end of the baseline.
  double text(const std::string& font, double size, PagePoint at, const std::string& text);
  // A column of paragraphs of random words.
  void paragraphs(const std::string& font, double size, double spacing, PagePoint at, double width, double height,
                  bool is_justified);
  void stroke(const std::vector<PagePoint>& points, double thickness);
  void box(PagePoint at, double width, double height);                       // solid
  void photo(PagePoint at, double width, double height, double screen_lpi);  // soft shapes through a screen of round dots

  // Black edges of the scan, which are never slanted. Widths in pixels.
  void dark_border(int left, int top, int right, int bottom);

  std::string words(int count);
  double uniform(double low, double high) { return std::uniform_real_distribution(low, high)(random_); }
  int below(int limit) { return static_cast<int>(random_() % static_cast<uint32_t>(limit)); }

  programs::Picture scanned(const ScanFaults& faults);       // 1 bit
  programs::Picture scanned_gray(const ScanFaults& faults);  // dark grey on light grey

 private:
  struct Fonts;

  PagePoint to_pixels(PagePoint at) const;
  PagePoint to_page(double x, double y) const;
  void ink(int x, int y, double amount);
  void segment(PagePoint a, PagePoint b, double radius);
  void degrade(const ScanFaults& faults);
  void blur(int radius);

  int width_, height_, dpi_;
  double page_width_, page_height_, sine_, cosine_;
  std::vector<uint8_t> ink_;
  std::mt19937 random_;
  std::unique_ptr<Fonts> fonts_;
};

}  // namespace vorel::bench
