#include "viewer/logic/print_layout.h"

#include <algorithm>
#include <cmath>

#include "common/page/units.h"

namespace vorel::viewer {
namespace {

constexpr int kMargin = 12;  // pixels

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
    return std::to_wstring(std::lround(dots * programs::kMillimetresPerInch / per_inch));
  };
  return rounded(width, resolution.x) + L" x " + rounded(height, resolution.y) + L" mm";
}

// The shape of a picture on paper: its width to its height, in a printer's dots.
double shape_of(const DibHeader& picture, const Sheet& sheet) {
  const print::DotDensity resolution = print::image_resolution(print_options({}), nullptr, picture, sheet.resolution);
  const double width = picture.width / static_cast<double>(resolution.x) * sheet.resolution.x;
  const double height = std::abs(picture.height) / static_cast<double>(resolution.y) * sheet.resolution.y;
  return width / height;
}

// As large as a cell has room for, in its middle.
Rect fitted_box(const DibHeader& picture, Rect cell, const Sheet& sheet) {
  const double shape = shape_of(picture, sheet);
  const int width = std::max(1, std::min(cell.width, static_cast<int>(cell.height * shape)));
  const int height = std::max(1, std::min(cell.height, static_cast<int>(width / shape)));
  return {cell.x + (cell.width - width) / 2, cell.y + (cell.height - height) / 2, width, height};
}

// Cells of a sheet, row by row, a little apart.
struct Grid {
  int columns, rows;
  Size room;

  Rect cell(int number) const {
    const int gap_x = room.width / 50, gap_y = room.height / 50;
    const int column = number % columns, row = number / columns;
    const int left = room.width * column / columns, top = room.height * row / rows;
    const int right = room.width * (column + 1) / columns, bottom = room.height * (row + 1) / rows;
    return {left + gap_x / 2, top + gap_y / 2, std::max(1, right - left - gap_x), std::max(1, bottom - top - gap_y)};
  }
};

Grid grid_for(int per_sheet, const DibHeader& first, const Sheet& sheet) {
  Grid best = {1, per_sheet, {sheet.printable.width, sheet.printable.height}};
  for (int columns = 2; columns <= per_sheet; ++columns) {
    const Grid grid = {columns, (per_sheet + columns - 1) / columns, best.room};
    if (fitted_box(first, grid.cell(0), sheet).width > fitted_box(first, best.cell(0), sheet).width) best = grid;
  }
  return best;
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

std::vector<std::vector<size_t>> sheets_of(size_t pages, int per_sheet) {
  std::vector<std::vector<size_t>> sheets;
  for (size_t page = 0; page < pages; ++page) {
    if (page % static_cast<size_t>(per_sheet) == 0) sheets.emplace_back();
    sheets.back().push_back(page);
  }
  return sheets;
}

std::vector<size_t> printing_order(size_t sheets, int copies, bool is_collated) {
  std::vector<size_t> order;
  const size_t count = sheets * static_cast<size_t>(copies);
  for (size_t i = 0; i < count; ++i) order.push_back(is_collated ? i % sheets : i / static_cast<size_t>(copies));
  return order;
}

std::wstring layout_text(const PrintLayout& layout) {
  if (layout.per_sheet > 1) return std::to_wstring(layout.per_sheet) + L" to a sheet";
  return std::wstring(sizing_text(layout.sizing)) + centring_text(layout) +
         (layout.goes_by_resolution ? L"" : L", a dot a pixel");
}

Rect printed_box(const PrintLayout& layout, const DibHeader& picture, const Sheet& sheet) {
  const ImgPrintOptions options = print_options(layout);
  const print::DotDensity resolution = print::image_resolution(options, nullptr, picture, sheet.resolution);
  const print::PrintablePage page = print::printable_page({sheet.printable.width, sheet.printable.height}, sheet.resolution);
  return print::place_image(options, {picture.width, picture.height}, resolution, page).dots;
}

std::vector<Rect> printed_boxes(const PrintLayout& layout, const std::vector<DibHeader>& pictures, const Sheet& sheet) {
  if (layout.per_sheet == 1) return {printed_box(layout, pictures.front(), sheet)};
  const Grid grid = grid_for(layout.per_sheet, pictures.front(), sheet);
  std::vector<Rect> boxes;
  for (size_t i = 0; i < pictures.size(); ++i)
    boxes.push_back(fitted_box(pictures[i], grid.cell(static_cast<int>(i)), sheet));
  return boxes;
}

std::wstring printed_size_text(Rect printed, const Sheet& sheet) {
  return size_in_millimetres(printed.width, printed.height, sheet.resolution) + L" on paper of " +
         size_in_millimetres(sheet.paper.width, sheet.paper.height, sheet.resolution);
}

PreviewBoxes preview_boxes(const Sheet& sheet, const std::vector<Rect>& printed, Size window) {
  const PaperScale scale(sheet, window);
  const Rect& area = sheet.printable;
  PreviewBoxes boxes = {scale.box({0, 0, sheet.paper.width, sheet.paper.height}), scale.box(area), {}};
  for (const Rect& box : printed)
    boxes.pictures.push_back(scale.box({area.x + box.x, area.y + box.y, box.width, box.height}));
  return boxes;
}

}  // namespace vorel::viewer
