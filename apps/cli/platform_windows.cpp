#include <cstdio>
#include <fcntl.h>
#include <io.h>

#include "cli/platform.h"

namespace vorel::cli {
namespace {

std::error_code last_error() { return {static_cast<int>(GetLastError()), std::system_category()}; }

}  // namespace

void prepare_process() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

std::error_code create_new_file(const std::filesystem::path& path, Readers) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return last_error();
  CloseHandle(file);
  return {};
}

std::error_code move_to_free_name(const std::filesystem::path& from, const std::filesystem::path& to) {
  return MoveFileExW(from.c_str(), to.c_str(), 0) ? std::error_code() : last_error();
}

bool standard_error_is_terminal() { return _isatty(_fileno(stderr)) != 0; }

bool has_drawing() { return true; }

Dib drawn_text(const std::string& path, bool is_oem) {
  HBITMAP bitmap = LoadASCIIFile(path.c_str(), !is_oem);
  if (bitmap == nullptr) return nullptr;
  Dib dib(ConvertBitmapToDIB(bitmap, nullptr));
  DeleteObject(bitmap);
  return dib;
}

LibraryFile::LibraryFile(const std::string& path) : handle_(_lopen(path.c_str(), OF_READ)) {}

LibraryFile::~LibraryFile() {
  if (is_open()) _lclose(handle_);
}

int64_t LibraryFile::position() const { return _llseek(handle_, 0, FILE_CURRENT); }

}  // namespace vorel::cli
