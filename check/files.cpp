// Files that end too early or change while they are read: a call gives zero with a stated code, or a picture that holds what its
// header says.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "check/drivers.h"
#include "check/report.h"
#include "check/row.h"
#include "check/system.h"

namespace fs = std::filesystem;

namespace check {
namespace {

// The fault of a loaded file's result, or nothing.
std::string fault_of_loading(Stage& stage, const std::string& path) {
  int status = kUntouched;
  const test::Block block(stage.call(LoadImageIntoDIB, path.c_str(), 1, &status));
  const int code = ImgError();
  if (!block) {
    const Codes codes = {kCodeBefore, IMG_E_FORMAT, IMG_E_OPEN_FILE, IMG_E_FILE_IO, IMG_E_MEMORY, IMG_E_CREATE_METAFILE};
    const Codes others = {IMG_E_CREATE_BITMAP, IMG_E_CREATE_DC, IMG_E_CLIPBOARD_FORMAT, IMG_E_CREATE_PALETTE};
    return codes.contain(code) || others.contain(code) ? "" : "zero with code " + std::to_string(code);
  }
  const BITMAPINFOHEADER header = test::header_of(test::bytes_of(block.get()));
  if (header.biSize != sizeof header) return "a picture with a header of " + std::to_string(header.biSize) + " bytes";
  if (header.biCompression != BI_RGB) return "";  // bitmap files stay compressed
  const int64_t stride = (static_cast<int64_t>(header.biWidth) * header.biBitCount + 31) / 32 * 4;
  const int64_t colors = header.biClrUsed != 0    ? header.biClrUsed
                         : header.biBitCount <= 8 ? int64_t{1} << header.biBitCount
                                                  : 0;
  const int64_t needed =
      static_cast<int64_t>(sizeof header) + 4 * colors + stride * std::abs(static_cast<int64_t>(header.biHeight));
  const auto size = static_cast<int64_t>(GlobalSize(block.get()));
  return size >= needed ? ""
                        : "a picture of " + std::to_string(size) + " bytes whose header states " + std::to_string(needed);
}

std::vector<fs::path> files_in(const char* folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int check_cut_files(const Arguments& arguments) {
  const auto header = static_cast<size_t>(arguments.number(1, 128)), later = static_cast<size_t>(arguments.number(2, 64));
  Report report;
  Stage stage;
  for (const fs::path& file : files_in(arguments.word(0, "."))) {
    const test::Bytes whole = test::read_file(file.string());
    const std::string path = stage.path("cut" + file.extension().string());
    const Holdings before = Holdings::now();
    for (size_t point = 0; point < header + later; ++point) {
      const size_t length =
          point < header ? point : header + (whole.size() - std::min(header, whole.size())) * (point - header) / later;
      if (length >= whole.size()) break;
      at_work(file.filename().string().c_str(), static_cast<long>(length));
      test::write_file(path, test::Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
      report.count();
      if (const std::string fault = fault_of_loading(stage, path); !fault.empty())
        report.fault(file.filename().string() + " cut to " + std::to_string(length) + " bytes", fault);
    }
    at_work("between files", 0);
    if (Holdings::now().files > before.files) report.fault(file.filename().string(), "a file stays open");
  }
  return report.end();
}

int check_replaced_files(const Arguments&) {
  constexpr const char* kNames[] = {"a.bmp", "a.tif", "a.pcx", "a.dcx", "a.gif",
                                    "a.tga", "a.cal", "a.jpg", "a.png", "a.fax"};
  Report report;
  FailingSystem system(kFilePart);
  Stage stage;
  for (const char* name : kNames) stage.file(name);
  const std::string path = stage.path("changing");
  for (const char* name : kNames)
    for (const char* other : {"a.bmp", "a.tif", "a.gif", "a.jpg", "nothing", "no file"})
      for (long at = 1;; ++at) {
        at_work(name, at);
        const std::string place = path + fs::path(name).extension().string();
        test::write_file(place, test::read_file(stage.path(name)));
        bool was_reached = false, is_replaced = false;
        system.act(at, [&] {
          was_reached = true;
          const std::string kind = other;
          std::error_code in_use;  // Windows keeps files that are open as they are
          if (kind == "no file") {
            is_replaced = fs::remove(place, in_use);
          } else {
            const test::Bytes content = kind == "nothing" ? test::Bytes() : test::read_file(stage.path(other));
            test::write_file(place, content);
            is_replaced = test::read_file(place) == content;
          }
        });
        stage.probe = &system;
        const std::string fault = fault_of_loading(stage, place);
        stage.probe = nullptr;
        if (!was_reached) break;
        if (is_replaced) report.count();
        if (!fault.empty()) report.fault(std::string(name) + " becomes " + other + " at call " + std::to_string(at), fault);
      }
  return report.end();
}

}  // namespace check
