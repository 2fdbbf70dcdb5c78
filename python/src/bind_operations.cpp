// Operations that are no steps of a chain: with several pictures, or with numbers that change from call to call. Each leaves its
// pictures alone and makes new ones.
#include <fmt/format.h>
#include <optional>
#include <pybind11/stl.h>
#include <string>

#include "bindings.h"
#include "common/operations.h"
#include "common/problem.h"

namespace vorel::python {
namespace {

namespace py = pybind11;
using programs::Fault;
using programs::Mixing;
using programs::Picture;
using programs::Problem;

Mixing mixing_called(const std::string& word) {
  if (word == "replace") return Mixing::kReplace;
  if (word == "or") return Mixing::kOr;
  if (word == "xor") return Mixing::kXor;
  throw Problem(Fault::kWrongUse, fmt::format("\"{}\" is none of replace, or, xor", word));
}

Picture crop(const Picture& picture, int left, int top, int width, int height) {
  if (left < 0 || top < 0 || width < 1 || height < 1 || width > picture.width() - left || height > picture.height() - top) {
    throw Problem(Fault::kWrongUse,
                  fmt::format("the picture has {} x {} pixels, and the piece reaches outside; ask for one inside",
                              picture.width(), picture.height()));
  }
  return unlocked([&] { return made_own(programs::cropped(picture.lent(), {left, top, width, height})); });
}

std::pair<Picture, Picture> cut_at(const Picture& picture, int line) {
  if (line < 1 || line >= picture.height()) {
    throw Problem(Fault::kWrongUse, fmt::format("there is nothing on one side of line {} of {}", line, picture.height()));
  }
  return unlocked([&] {
    programs::Halves halves = programs::cut(picture.lent(), line);
    return std::pair(std::move(halves.above), std::move(halves.below));
  });
}

Picture combine(const Picture& base, const Picture& overlay, std::pair<int, int> at, const Picture* mask,
                const std::string& mixing) {
  const Mixing how = mixing_called(mixing);
  return unlocked([&] {
    std::optional<Picture> hole;
    if (mask != nullptr) hole = mask->lent();
    return programs::combined(base.lent(), overlay.lent(), std::move(hole), {at.first, at.second}, how);
  });
}

}  // namespace

void bind_operations(py::module_& module) {
  module.def("crop", &crop);
  module.def("cut", &cut_at);
  module.def("combine", &combine);
}

}  // namespace vorel::python
