#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

#include "cli/platform.h"

namespace vorel::cli {
namespace {

constexpr size_t kLongestPath = 127;

bool suits_library(const std::filesystem::path& path) {
  const std::wstring& name = path.native();
  return name.size() <= kLongestPath && std::ranges::all_of(name, [](wchar_t c) { return c < 128; });
}

std::error_code last_error() { return {static_cast<int>(GetLastError()), std::system_category()}; }

}  // namespace

void prepare_process() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

// Other paths go by their 8.3 names.
std::optional<std::string> path_for_library(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path whole = std::filesystem::absolute(path, error);
  if (!suits_library(whole)) {
    wchar_t brief[MAX_PATH];
    const DWORD length = GetShortPathNameW(whole.c_str(), brief, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return std::nullopt;
    whole = brief;
  }
  if (error || !suits_library(whole)) return std::nullopt;
  return whole.string();
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

namespace {

std::filesystem::path library() {
  std::wstring path(32'768, L'\0');  // the longest there is
  path.resize(GetModuleFileNameW(GetModuleHandleW(L"VOREL32.DLL"), path.data(), static_cast<DWORD>(path.size())));
  return path;
}

}  // namespace

CodecModule::CodecModule(const char* name) {
  const auto beside = library().replace_filename(file_name(name));
  std::error_code ignored;
  const bool is_there = std::filesystem::exists(beside, ignored);
  handle_ = is_there ? LoadLibraryExW(beside.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)
                     : LoadLibraryA(file_name(name).c_str());
}

CodecModule::~CodecModule() {
  if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
}

void* CodecModule::entry(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

std::string CodecModule::file_name(const char* name) { return std::string(name) + ".DLL"; }

std::string CodecModule::library_path() {
  const std::u8string path = library().u8string();
  return {path.begin(), path.end()};
}

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
