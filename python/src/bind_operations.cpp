// What the programs do to pictures. Each function leaves its picture alone and makes a new one.
#include <algorithm>
#include <fmt/format.h>
#include <pybind11/stl.h>
#include <string>
#include <vector>

#include "bindings.h"
#include "common/forms.h"
#include "common/operations.h"
#include "common/problem.h"

namespace vorel::python {
namespace {

namespace py = pybind11;
using namespace programs;  // NOLINT(google-build-using-namespace): this file is nothing but its operations

// Lends the picture to an operation.
template <class Operation>
Picture result_of(const Picture& picture, Operation operation) {
  return unlocked([&] { return made_own(operation(picture.lent())); });
}

Background background(bool white) { return white ? Background::kWhite : Background::kBlack; }

template <class Choice>
Choice chosen(const std::string& word, std::initializer_list<std::pair<const char*, Choice>> choices) {
  std::string words;
  for (const auto& [name, choice] : choices) {
    if (word == name) return choice;
    words += words.empty() ? name : std::string(", ") + name;
  }
  throw Problem(Fault::kWrongUse, fmt::format("\"{}\" is none of {}", word, words));
}

void check_range(const char* name, int value, int least, int most) {
  if (value >= least && value <= most) return;
  throw Problem(Fault::kWrongUse, fmt::format("{} is {}; give it from {} to {}", name, value, least, most));
}

Picture rotate(const Picture& picture, int degrees, bool white) {
  return result_of(picture, [&](Picture lent) { return turned(std::move(lent), degrees, background(white)); });
}

Picture mirror(const Picture& picture, const std::string& direction) {
  const bool vertical = chosen<bool>(direction, {{"horizontal", false}, {"vertical", true}});
  return result_of(picture, vertical ? mirrored_top_bottom : mirrored_left_right);
}

Picture skew(const Picture& picture, const std::string& direction, int pixels, bool white) {
  const Shear shear = chosen<Shear>(direction, {{"horizontal", Shear::kRows}, {"vertical", Shear::kColumns}});
  return result_of(picture, [&](Picture lent) { return skewed(std::move(lent), shear, pixels, background(white)); });
}

Picture scale(const Picture& picture, int width, int height, const std::string& method) {
  const auto resampling = chosen<Resampling>(
      method, {{"linear", Resampling::kLinear}, {"cubic", Resampling::kCubic}, {"nearest", Resampling::kNearest}});
  if (width < 1 || height < 1) throw Problem(Fault::kWrongUse, "a picture has at least one pixel; ask for a larger one");
  return result_of(picture, [&](Picture lent) { return scaled(std::move(lent), {width, height}, resampling); });
}

Picture crop(const Picture& picture, int left, int top, int width, int height) {
  if (left < 0 || top < 0 || width < 1 || height < 1 || width > picture.width() - left || height > picture.height() - top) {
    throw Problem(Fault::kWrongUse,
                  fmt::format("the picture has {} x {} pixels, and the piece reaches outside; ask for one inside",
                              picture.width(), picture.height()));
  }
  return result_of(picture, [&](Picture lent) { return cropped(std::move(lent), {left, top, width, height}); });
}

std::pair<Picture, Picture> cut_at(const Picture& picture, int line) {
  if (line < 1 || line >= picture.height()) {
    throw Problem(Fault::kWrongUse, fmt::format("there is nothing on one side of line {} of {}", line, picture.height()));
  }
  return unlocked([&] {
    Halves halves = cut(picture.lent(), line);
    return std::pair(std::move(halves.above), std::move(halves.below));
  });
}

Picture to_gray(const Picture& picture, bool weighted, int smooth) {
  check_range("smooth", smooth, 0, 2);
  const GrayWeights weights = weighted ? GrayWeights::kByColor : GrayWeights::kEqual;
  return result_of(picture, [&](Picture lent) { return gray(std::move(lent), weights, smooth); });
}

Picture tone(const Picture& picture, int brightness, int contrast) {
  check_range("brightness", brightness, -100, 100);
  check_range("contrast", contrast, -100, 100);
  return result_of(picture, [&](Picture lent) { return toned(std::move(lent), brightness, contrast); });
}

Picture lut(const Picture& picture, int brightness, int contrast, std::optional<std::pair<int, int>> square) {
  std::optional<Corner> corner;
  if (square) corner = Corner{square->first, square->second};
  return result_of(picture, [&](Picture lent) { return looked_up(std::move(lent), brightness, contrast, corner); });
}

Picture filter(const Picture& picture, const std::string& name, int size, bool weighted, const std::vector<int>& kernel) {
  Filtering filtering{.filter = chosen<Filter>(name, {{"box", Filter::kBox},
                                                      {"blur", Filter::kBlur},
                                                      {"sharpen", Filter::kSharpen},
                                                      {"sharpen-more", Filter::kSharpenMore},
                                                      {"kernel", Filter::kKernel}}),
                      .size = size,
                      .intensity = weighted ? GrayWeights::kByColor : GrayWeights::kEqual,
                      .kernel = kernel};
  if (size != 3 && size != 5 && size != 7) throw Problem(Fault::kWrongUse, "the size of a filter is 3, 5 or 7; choose one");
  const auto count = static_cast<size_t>(size) * static_cast<size_t>(size);
  if (filtering.filter != Filter::kKernel && !kernel.empty())
    throw Problem(Fault::kWrongUse, "a kernel goes with the filter \"kernel\" alone; leave it out");
  if (filtering.filter == Filter::kKernel) {
    if (filtering.kernel.size() == count) filtering.kernel.push_back(0);
    if (filtering.kernel.size() != count + 1)
      throw Problem(Fault::kWrongUse,
                    fmt::format("a kernel of size {} has {} numbers, and may have a divisor behind them", size, count));
  }
  return result_of(picture, [&](Picture lent) { return filtered(std::move(lent), filtering); });
}

Picture clean(const Picture& picture, int level, bool gentle) {
  check_range("level", level, 20, 100);
  return result_of(
      picture, [&](Picture lent) { return cleaned(std::move(lent), level, gentle ? Cleaning::kGentle : Cleaning::kAll); });
}

Picture dither(const Picture& picture, const std::string& method, int bits) {
  const auto methods = dither_methods();
  const auto found = std::ranges::find(methods, method, &DitherMethod::word);
  if (found == methods.end())
    throw Problem(Fault::kWrongUse, fmt::format("\"{}\" is none of fs, jjn, smooth, sharp", method));
  if (bits != 1 && bits != 4 && bits != 8) throw Problem(Fault::kWrongUse, "pictures are dithered to 1, 4 or 8 bits");
  return result_of(picture, [&](Picture lent) { return dithered(std::move(lent), *found, bits); });
}

Picture halftone(const Picture& picture, const std::string& method, int brightness) {
  const auto kind = chosen<programs::Halftone>(method, {{"threshold", programs::Halftone::kThreshold},
                                                        {"diffusion", programs::Halftone::kDiffusion},
                                                        {"ordered", programs::Halftone::kOrdered}});
  check_range("brightness", brightness, -255, 255);
  return result_of(picture, [&](Picture lent) { return halftoned(std::move(lent), kind, brightness); });
}

Picture combine(const Picture& base, const Picture& overlay, std::pair<int, int> at, const Picture* mask,
                const std::string& mixing) {
  const Mixing how = chosen<Mixing>(mixing, {{"replace", Mixing::kReplace}, {"or", Mixing::kOr}, {"xor", Mixing::kXor}});
  return result_of(base, [&](Picture lent) {
    std::optional<Picture> hole;
    if (mask != nullptr) hole = mask->lent();
    return combined(std::move(lent), overlay.lent(), std::move(hole), {at.first, at.second}, how);
  });
}

}  // namespace

void bind_operations(py::module_& module) {
  module.def("rotate", &rotate);
  module.def("mirror", &mirror);
  module.def("skew", &skew);
  module.def("scale", &scale);
  module.def("crop", &crop);
  module.def("cut", &cut_at);
  module.def("invert", [](const Picture& picture) { return result_of(picture, negative); });
  module.def("gray", &to_gray);
  module.def("expand", [](const Picture& picture) { return result_of(picture, in_true_color); });
  module.def("tone", &tone);
  module.def("lut", &lut);
  module.def("filter", &filter);
  module.def("clean", &clean);
  module.def("dither", &dither);
  module.def("halftone", &halftone);
  module.def("combine", &combine);
  module.attr("MOST_SCALED_PIXELS") = kMostScaledPixels;
}

}  // namespace vorel::python
