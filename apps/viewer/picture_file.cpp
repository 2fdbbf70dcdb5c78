#include "viewer/picture_file.h"

#include <algorithm>

#include "common/platform.h"
#include "viewer/failure.h"
#include "viewer/picture.h"

namespace vorel::viewer {
namespace fs = std::filesystem;
namespace {

std::wstring quoted(const fs::path& path) { return L"\"" + path.filename().wstring() + L"\""; }

std::string path_or_failure(const fs::path& path) {
  const auto plain = path_for_library(path);
  if (!plain)
    throw Failure(L"The path of " + quoted(path) + L" is too long, or has characters that the library does not take");
  return *plain;
}

// Modules count the pages of their files. One of another maker that does not is taken at its first page.
int counted_by_module(const std::string& path, const Format& format) {
  const CodecModule module(format.load.module);
  const auto count =
      module.is_loaded() ? reinterpret_cast<ImgCountPages>(module.entry(format.count.name)) : ImgCountPages{nullptr};
  return count != nullptr ? count(path.c_str(), nullptr) : 1;
}

int count_pages(const std::string& path) {
  const int code = GetImageFormat(path.c_str());
  if (code == IMG_FORMAT_COLOR_FAX) return GetNumberOfImagesInFaxFile(path.c_str());
  const Format* format = format_of(code);
  return format != nullptr && format->count.module != nullptr ? counted_by_module(path, *format) : 1;
}

// A new name in the folder of a file, for a file that is to take its place.
fs::path scratch_name_beside(const fs::path& path) {
  wchar_t name[MAX_PATH];
  if (GetTempFileNameW(path.parent_path().c_str(), L"vor", 0, name) == 0) {
    throw Failure(L"Nothing can be written to the folder of " + quoted(path));
  }
  return name;
}

// PNG files are saved by their module alone; the library only loads them.
bool save_png(const std::string& path, const Dib& dib, const Format& format, int& status) {
  const CodecModule module(format.save.module);
  const auto save =
      module.is_loaded() ? reinterpret_cast<ImgSavePicture>(module.entry(format.save.name)) : ImgSavePicture{nullptr};
  return save != nullptr && save(path.c_str(), dib.get(), &status);
}

bool save_as(const std::string& path, const Dib& dib, const Format& format, int& status) {
  constexpr int kOption = 0;                                // GIF: rows in order
  const int value = format.code == IMG_FORMAT_TGA ? 1 : 0;  // TGA: run-length codes; TIFF: what suits the depth
  if (format.code == IMG_FORMAT_PNG) return save_png(path, dib, format, status);
  return SaveDIBInImageFormat(path.c_str(), dib.get(), format.code, kOption, value) != FALSE;
}

}  // namespace

LoadedPage load_page(const fs::path& path, int page) {
  const std::string plain = path_or_failure(path);
  SetImgError(IMG_OK);
  int status = 0;
  Dib dib(LoadImageIntoDIB(plain.c_str(), page, &status));
  if (!dib) {
    throw Failure(quoted(path) + L" cannot be loaded: " +
                  reason(status, L"it is damaged, or of a variant that is not supported"));
  }
  return {normalised(std::move(dib)), std::max(count_pages(plain), 1)};
}

void save_picture(const fs::path& path, const Dib& dib, const Format& format) {
  const fs::path scratch = scratch_name_beside(path);
  const std::string plain = path_or_failure(scratch);
  DeleteFileW(scratch.c_str());  // a file that is there would gain a page in some formats
  SetImgError(IMG_OK);
  int status = 0;
  if (!save_as(plain, dib, format, status)) {
    const std::wstring why = reason(status, L"the format does not suit the picture, or the disk is full");
    DeleteFileW(scratch.c_str());
    throw Failure(quoted(path) + L" cannot be saved: " + why);
  }
  if (!MoveFileExW(scratch.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
    DeleteFileW(scratch.c_str());
    throw Failure(quoted(path) + L" cannot be replaced: it is in use, or protected");
  }
}

}  // namespace vorel::viewer
