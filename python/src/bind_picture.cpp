// Pictures in memory, their facts and their pixels.
#include <algorithm>
#include <pybind11/stl.h>
#include <tuple>
#include <vector>

#include "bindings.h"
#include "common/forms.h"
#include "common/problem.h"

namespace vorel::python {
namespace {

namespace py = pybind11;
using programs::Fault;
using programs::Picture;
using programs::Problem;

using Color = std::tuple<uint8_t, uint8_t, uint8_t>;  // red, green, blue

std::vector<Color> palette_of(const Picture& picture) {
  std::vector<Color> palette;
  for (const Rgb color : picture.colors()) palette.emplace_back(color.red, color.green, color.blue);
  return palette;
}

Picture blank(int width, int height, int depth, const std::vector<Color>& palette, std::pair<int, int> per_metre) {
  if (width < 1 || height < 1) throw Problem(Fault::kWrongUse, "a picture has at least one pixel; ask for a larger one");
  std::vector<Rgb> colors;
  for (const auto& [red, green, blue] : palette) colors.push_back({blue, green, red, 0});
  DibHeader header;
  header.width = width;
  header.height = height;
  header.depth = static_cast<uint16_t>(depth);
  header.x_per_metre = per_metre.first;
  header.y_per_metre = per_metre.second;
  return unlocked([&] { return Picture::blank(header, colors); });
}

Picture with_resolution(const Picture& picture, int x_per_metre, int y_per_metre) {
  return unlocked([&] {
    Picture result = picture.copy();
    result.set_resolution(x_per_metre, y_per_metre);
    return result;
  });
}

std::ptrdiff_t top_stride(const Picture& picture) {
  return picture.is_top_down() ? picture.pixels().stride() : -picture.pixels().stride();
}

uint8_t* top_row(const Picture& picture) {
  return picture.pixels().row(picture.is_top_down() ? 0 : picture.height() - 1).data();
}

// The pixels where a pixel takes whole bytes, the packed bytes of rows where it takes less; the top row first.
py::buffer_info pixels_of(const Picture& picture) {
  if (picture.is_compressed()) throw py::buffer_error("run-length compressed rows have no pixels in memory");
  const py::ssize_t rows = picture.height(), stride = top_stride(picture), depth = picture.depth();
  const auto bytes = static_cast<py::ssize_t>(row_bytes(picture.depth(), picture.width()));
  uint8_t* const first = top_row(picture);
  using Sizes = std::vector<py::ssize_t>;
  if (depth <= 8) return py::buffer_info(first, 1, "B", 2, Sizes{rows, bytes}, Sizes{stride, 1});
  if (depth == 16) return py::buffer_info(first, 2, "H", 2, Sizes{rows, picture.width()}, Sizes{stride, 2});
  return py::buffer_info(first, 1, "B", 3, Sizes{rows, picture.width(), depth / 8}, Sizes{stride, depth / 8, 1});
}

// A pixel to a byte of pictures of 1 and 4 bits, the top row first.
void unpack(const Picture& picture, const py::buffer& target) {
  const py::buffer_info to = target.request(true);
  const int width = picture.width(), height = picture.height(), depth = picture.depth();
  if (to.size * to.itemsize != py::ssize_t{width} * height) throw py::value_error("one byte for each pixel is needed");
  auto* out = static_cast<uint8_t*>(to.ptr);
  unlocked([&] {
    const uint8_t* row = top_row(picture);
    const int per_byte = 8 / depth, mask = (1 << depth) - 1;
    for (int y = 0; y < height; ++y, row += top_stride(picture), out += width)
      for (int x = 0; x < width; ++x)
        out[x] = static_cast<uint8_t>(row[x / per_byte] >> (8 - depth - x % per_byte * depth) & mask);
  });
}

// The reverse, into a picture whose pixels are all 0.
void pack(const Picture& picture, const py::buffer& source) {
  const py::buffer_info from = source.request();
  const int width = picture.width(), height = picture.height(), depth = picture.depth();
  if (from.ndim != 2 || from.itemsize != 1 || from.shape[0] != height || from.shape[1] != width || from.strides[1] != 1)
    throw py::value_error("rows of one byte for each pixel are needed");
  unlocked([&] {
    const int per_byte = 8 / depth, mask = (1 << depth) - 1;
    const auto* in = static_cast<const uint8_t*>(from.ptr);
    uint8_t* row = top_row(picture);
    for (int y = 0; y < height; ++y, row += top_stride(picture), in += from.strides[0])
      for (int x = 0; x < width; ++x)
        row[x / per_byte] |= static_cast<uint8_t>((in[x] & mask) << (8 - depth - x % per_byte * depth));
  });
}

// All rows as the picture holds them, padding included, from the first stored one on.
py::bytes stored_rows(const Picture& picture) {
  const auto rows = picture.image_bytes();
  return {reinterpret_cast<const char*>(rows.data()), rows.size()};
}

void set_stored_rows(const Picture& picture, const py::buffer& source) {
  const py::buffer_info from = source.request();
  const auto rows = picture.image_bytes();
  if (PyBuffer_IsContiguous(from.view(), 'C') == 0) throw py::value_error("the bytes of rows follow each other");
  if (from.size * from.itemsize > static_cast<py::ssize_t>(rows.size())) throw py::value_error("there are too many bytes");
  std::copy_n(static_cast<const uint8_t*>(from.ptr), from.size * from.itemsize, rows.data());
}

}  // namespace

void bind_picture(py::module_& module) {
  py::class_<Picture>(module, "Picture", py::buffer_protocol())
      .def_property_readonly("width", &Picture::width)
      .def_property_readonly("height", &Picture::height)
      .def_property_readonly("depth", &Picture::depth)
      .def_property_readonly("is_compressed", &Picture::is_compressed)
      .def_property_readonly("is_top_down", &Picture::is_top_down)
      .def_property_readonly("has_gray_ramp", &programs::has_gray_ramp)
      .def_property_readonly("stride", [](const Picture& picture) { return picture.pixels().stride(); })
      .def_property_readonly("bytes", [](const Picture& picture) { return picture.bytes().size(); })
      .def_property_readonly("palette", &palette_of)
      .def_property_readonly(
          "per_metre",
          [](const Picture& picture) { return std::pair(picture.header().x_per_metre, picture.header().y_per_metre); })
      .def("copy", [](const Picture& picture) { return unlocked([&] { return picture.copy(); }); })
      .def("with_resolution", &with_resolution)
      .def("expanded",
           [](const Picture& picture) { return unlocked([&] { return made_own(programs::expanded(picture.lent())); }); })
      .def("unpack", &unpack)
      .def("pack", &pack)
      .def("stored_rows", &stored_rows)
      .def("set_stored_rows", &set_stored_rows)
      .def_buffer(&pixels_of);
  module.def("blank", &blank);
}

}  // namespace vorel::python
