#include "cli/paper.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "cli/extent.h"
#include "common/forms.h"
#include "common/operations.h"
#include "common/page/units.h"

namespace vorel::cli {
namespace {

using programs::kMillimetresPerInch;
using programs::Picture;

// In dots of the paper.
struct DotSize {
  double width, height;
};

print::DotDensity resolution_of(const Picture& picture, const PaperLayout& layout, const Paper& paper) {
  const DibHeader& header = picture.header();
  if (layout.by_printer_dots || header.x_per_metre <= 0 || header.y_per_metre <= 0) return paper.resolution;
  return {static_cast<float>(header.x_per_metre / kInchesPerMetre),
          static_cast<float>(header.y_per_metre / kInchesPerMetre)};
}

DotSize true_size(const Picture& picture, print::DotDensity resolution, const Paper& paper) {
  return {picture.width() * static_cast<double>(paper.resolution.x) / resolution.x,
          picture.height() * static_cast<double>(paper.resolution.y) / resolution.y};
}

// How much larger a picture may be printed.
double room_for(DotSize size, const Paper& paper) {
  return std::min(paper.dots.width / size.width, paper.dots.height / size.height);
}

// Dots are rounded when they are laid out.
constexpr double kHalfDot = 0.5;

bool fits(DotSize size, const Paper& paper) {
  return size.width < paper.dots.width + kHalfDot && size.height < paper.dots.height + kHalfDot;
}

// The same size once turned by a quarter: an inch stays an inch.
DotSize turned(DotSize size, const Paper& paper) {
  const double across = static_cast<double>(paper.resolution.x) / paper.resolution.y;
  return {size.height * across, size.width / across};
}

bool is_better_turned(DotSize size, const PaperLayout& layout, const Paper& paper) {
  if (!layout.may_turn || layout.sizing == PaperSizing::kStretch) return false;
  const bool must_fit = layout.sizing == PaperSizing::kFit || !fits(size, paper);
  return must_fit && room_for(turned(size, paper), paper) > room_for(size, paper);
}

// A picture without a resolution is printed with a dot for each pixel.
void state_resolution(Picture& picture, print::DotDensity resolution, const PaperLayout& layout, double shrink) {
  const auto per_metre = [&](float dpi) { return static_cast<int>(std::ceil(dpi * shrink * kInchesPerMetre)); };
  if (shrink > 1)
    picture.set_resolution(per_metre(resolution.x), per_metre(resolution.y));
  else if (layout.by_printer_dots)
    picture.set_resolution(0, 0);
}

std::string cut_off(DotSize size, const Paper& paper) {
  const auto millimetres = [](double dots, float per_inch) { return dots / per_inch * kMillimetresPerInch; };
  const auto beyond = [](double dots, int room) { return dots < room + kHalfDot ? 0 : dots - room; };
  const double across = millimetres(beyond(size.width, paper.dots.width), paper.resolution.x);
  const double down = millimetres(beyond(size.height, paper.dots.height), paper.resolution.y);
  if (across > 0 && down > 0) return fmt::format("{:.0f} mm of its width and {:.0f} mm of its height", across, down);
  return across > 0 ? fmt::format("{:.0f} mm of its width", across) : fmt::format("{:.0f} mm of its height", down);
}

}  // namespace

ImgPrintOptions print_options(const PaperLayout& layout) {
  ImgPrintOptions options = {};
  options.silent = 1;
  options.centreHorizontally = layout.is_centered_across;
  options.centreVertically = layout.is_centered_down;
  options.fitProportionally = layout.sizing == PaperSizing::kFit;
  options.stretchToPage = layout.sizing == PaperSizing::kStretch;
  options.useImageDpi = 1;
  options.copies = 1;  // the tool prints pages again instead: most printers put the library's copies on one sheet
  return options;
}

OnPaper fitted(Picture picture, const PaperLayout& layout, const Paper& paper) {
  picture = programs::upright(std::move(picture));
  print::DotDensity resolution = resolution_of(picture, layout, paper);
  DotSize size = true_size(picture, resolution, paper);
  if (is_better_turned(size, layout, paper)) {
    picture = programs::turned(std::move(picture), 90);
    size = turned(size, paper);
    std::swap(resolution.x, resolution.y);
  }
  const bool is_cut = !fits(size, paper);
  const bool shrinks = is_cut && layout.sizing == PaperSizing::kShrink;
  state_resolution(picture, resolution, layout, shrinks ? 1 / room_for(size, paper) : 1);
  return {std::move(picture), is_cut && layout.sizing == PaperSizing::kTrueSize ? cut_off(size, paper) : std::string()};
}

}  // namespace vorel::cli
