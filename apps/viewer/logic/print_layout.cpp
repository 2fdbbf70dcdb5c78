#include "viewer/logic/print_layout.h"

#include <algorithm>
#include <cmath>

namespace vorel::viewer {
namespace {

constexpr int kMargin = 12;  // pixels
constexpr double kMillimetresPerInch = 25.4;

const wchar_t* centring_text(const PrintLayout& layout) {
  if (layout.is_centred_across && layout.is_centred_down) return L", centred";
  if (layout.is_centred_across) return L", centred across";
  return layout.is_centred_down ? L", centred down" : L"";
}

const wchar_t* sizing_text(PageSizing sizing) {
  switch (sizing) {
    case PageSizing::kFit: return L"fit";
    case PageSizing::kStretch: return L"stretch";
    case PageSizing::kTrueSize: break;
  }
  return L"true size";
}

std::wstring size_in_millimetres(int width, int height, print::DotDensity resolution) {
  const auto rounded = [](int dots, float per_inch) {
    return std::to_wstring(std::lround(dots * kMillimetresPerInch / per_inch));
  };
  return rounded(width, resolution.x) + L" x " + rounded(height, resolution.y) + L" mm";
}

// A sheet's dots as a window's pixels. Edges are rounded, not sizes, so that boxes which meet on paper meet in the window.
class PaperScale {
 public:
  PaperScale(const Sheet& sheet, Size window) : resolution_(sheet.resolution) {
    const double width = inches_across(sheet.paper.width), height = inches_down(sheet.paper.height);
    const auto room = [](int pixels) { return std::max(1.0, pixels - 2.0 * kMargin); };
    pixels_per_inch_ = std::min(room(window.width) / width, room(window.height) / height);
    left_ = (window.width - width * pixels_per_inch_) / 2;
    top_ = (window.height - height * pixels_per_inch_) / 2;
  }

  Rect box(Rect dots) const {
    const int left = x(dots.x), top = y(dots.y);
    return {left, top, x(dots.x + dots.width) - left, y(dots.y + dots.height) - top};
  }

 private:
  double inches_across(int dots) const { return dots / static_cast<double>(resolution_.x); }
  double inches_down(int dots) const { return dots / static_cast<double>(resolution_.y); }
  int x(int dots) const { return static_cast<int>(std::lround(left_ + inches_across(dots) * pixels_per_inch_)); }
  int y(int dots) const { return static_cast<int>(std::lround(top_ + inches_down(dots) * pixels_per_inch_)); }

  print::DotDensity resolution_;
  double pixels_per_inch_, left_, top_;
};

}  // namespace

ImgPrintOptions print_options(const PrintLayout& layout) {
  ImgPrintOptions options = {};
  options.centreHorizontally = layout.is_centred_across;
  options.centreVertically = layout.is_centred_down;
  options.fitProportionally = layout.sizing == PageSizing::kFit;
  options.stretchToPage = layout.sizing == PageSizing::kStretch;
  options.useImageDpi = layout.goes_by_resolution;
  options.showPageProgress = 1;
  options.copies = 1;
  return options;
}

std::wstring layout_text(const PrintLayout& layout) {
  return std::wstring(sizing_text(layout.sizing)) + centring_text(layout) +
         (layout.goes_by_resolution ? L"" : L", a dot a pixel");
}

Rect printed_box(const PrintLayout& layout, const DibHeader& picture, const Sheet& sheet) {
  const ImgPrintOptions options = print_options(layout);
  const print::DotDensity resolution = print::image_resolution(options, nullptr, picture, sheet.resolution);
  const print::PrintablePage page = print::printable_page({sheet.printable.width, sheet.printable.height}, sheet.resolution);
  return print::place_image(options, {picture.width, picture.height}, resolution, page).dots;
}

std::wstring printed_size_text(Rect printed, const Sheet& sheet) {
  return size_in_millimetres(printed.width, printed.height, sheet.resolution) + L" on paper of " +
         size_in_millimetres(sheet.paper.width, sheet.paper.height, sheet.resolution);
}

PreviewBoxes preview_boxes(const Sheet& sheet, Rect printed, Size window) {
  const PaperScale scale(sheet, window);
  const Rect& area = sheet.printable;
  return {scale.box({0, 0, sheet.paper.width, sheet.paper.height}), scale.box(area),
          scale.box({area.x + printed.x, area.y + printed.y, printed.width, printed.height})};
}

}  // namespace vorel::viewer
