// Picture files on disk and in memory.
#include <algorithm>
#include <optional>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>
#include <string>

#include "bindings.h"
#include "common/formats.h"
#include "common/losses.h"
#include "common/picture_file.h"
#include "common/problem.h"
#include "common/saving.h"
#include "memory_file.h"

namespace vorel::python {
namespace {

namespace py = pybind11;
using programs::Fault;
using programs::Picture;
using programs::PictureFile;
using programs::Problem;
using programs::Saving;

// A file that pictures are loaded from, and the memory that it lies in if it does.
class Source {
 public:
  explicit Source(const std::filesystem::path& path) : file_(path) {}
  Source(std::unique_ptr<MemoryFile> memory, const std::string& name)
      : memory_(std::move(memory)), file_(memory_->path(), name) {}

  Picture load(int page) const {
    if (page < 1) throw Problem(Fault::kWrongUse, "pages are counted from 1");
    return unlocked([&] { return file_.load(page); });
  }
  std::optional<int> count_pages() const {
    return unlocked([&] { return file_.count_pages(); });
  }
  const char* format() const { return file_.format().word; }
  std::vector<std::string> losses(int page) const {
    return unlocked([&] { return file_.losses(page); });
  }
  std::optional<std::string> compression(int page) const {
    return unlocked([&] { return file_.compression(page); });
  }

 private:
  std::unique_ptr<MemoryFile> memory_;
  PictureFile file_;
};

std::unique_ptr<Source> source_in_memory(const py::buffer& content, const std::filesystem::path& name) {
  const py::buffer_info info = content.request();
  if (PyBuffer_IsContiguous(info.view(), 'C') == 0) throw py::value_error("the bytes of a file follow each other");
  const std::span bytes(static_cast<const char*>(info.ptr), static_cast<size_t>(info.size * info.itemsize));
  return unlocked([&] { return std::make_unique<Source>(std::make_unique<MemoryFile>(bytes), name.string()); });
}

const FileFormat* savable(const FileFormat* format) {
  return format != nullptr && format->saver != Saver::kNobody && !format->needs_windows ? format : nullptr;
}

std::string savable_words() {
  std::string words;
  for (const FileFormat* format : programs::picture_formats())
    if (savable(format) != nullptr) words += (words.empty() ? "" : ", ") + std::string(format->word);
  return words;
}

// What a format, a name or an ending, and its options ask for.
Saving saving_for(const std::string& format, const std::string& compression, bool interlaced, std::optional<int> quality,
                  bool progressive) {
  const FileFormat* const kind = savable(programs::picture_format_called(format));
  const auto fail = [](const std::string& text) { throw Problem(Fault::kWrongUse, text); };
  if (kind == nullptr) fail("\"" + format + "\" is none of " + savable_words());
  Saving saving{.format = kind, .interlaced = interlaced, .quality = quality.value_or(0), .progressive = progressive};
  if ((quality || progressive) && kind->code != FormatCode::kJpeg)
    fail("only JPEG files have a quality and can be progressive");
  if (quality && (*quality < 1 || *quality > 100)) fail("a quality is from 1 to 100");
  if (interlaced && kind->code != FormatCode::kGif) fail("only GIF files can be interlaced");
  if (compression.empty()) return saving;
  if (kind->code == FormatCode::kTga && (compression == "rle" || compression == "none")) {
    saving.run_length = compression == "rle";
    return saving;
  }
  const auto known = programs::tiff_compressions();
  const auto found = std::ranges::find(known, compression, &programs::TiffCompression::word);
  if (kind->code != FormatCode::kTiff || found == known.end())
    fail(std::string(kind->name) + " files have no compression \"" + compression + "\"");
  saving.tiff_compression = found->number;
  return saving;
}

// Returns what the file has no room for. With `strict` that is a failure instead.
std::vector<std::string> save(const Picture& picture, const std::filesystem::path& path, const Saving& saving, int page,
                              bool strict) {
  if (page > 1 && !saving.format->holds_pages)
    throw Problem(Fault::kWrongUse, std::string(saving.format->name) + " files hold one page; use TIFF or DCX for several");
  return unlocked([&] {
    std::vector<std::string> losses = losses_when_saved(picture, saving);
    if (strict && !losses.empty()) throw Problem(Fault::kFormat, losses.front() + ", or leave strict out");
    programs::save_page(path, suited(picture.lent(), saving), saving, page);
    return losses;
  });
}

}  // namespace

void bind_files(py::module_& module) {
  py::class_<Source>(module, "Source")
      .def(py::init<std::filesystem::path>())
      .def_static("in_memory", &source_in_memory)
      .def("load", &Source::load)
      .def("count_pages", &Source::count_pages)
      .def("compression", &Source::compression)
      .def("losses", &Source::losses)
      .def_property_readonly("format", &Source::format);
  py::class_<MemoryFile>(module, "MemoryFile")
      .def(py::init<>())
      .def_property_readonly("path", &MemoryFile::path)
      .def("content", [](const MemoryFile& file) {
        const std::vector<char> bytes = file.content();
        return py::bytes(bytes.data(), bytes.size());
      });
  py::class_<Saving>(module, "Saving")
      .def(py::init(&saving_for))
      .def_property_readonly("format", [](const Saving& saving) { return saving.format->word; })
      .def_property_readonly("holds_pages", [](const Saving& saving) { return saving.format->holds_pages; });
  module.def("save", &save);
  module.def("format_for_name", [](const std::filesystem::path& name) -> std::optional<std::string> {
    const FileFormat* const format = savable(programs::picture_format_for_name(name.string()));
    return format == nullptr ? std::nullopt : std::optional<std::string>(format->word);
  });
}

}  // namespace vorel::python
