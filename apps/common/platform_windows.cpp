#include <algorithm>
#include <windows.h>

#include "common/platform.h"

namespace vorel {
namespace {

constexpr size_t kLongestPath = 127;

bool suits_library(const std::filesystem::path& path) {
  const std::wstring& name = path.native();
  return name.size() <= kLongestPath && std::ranges::all_of(name, [](wchar_t c) { return c < 128; });
}

std::filesystem::path library() {
  std::wstring path(32'768, L'\0');  // the longest there is
  path.resize(GetModuleFileNameW(GetModuleHandleW(L"VOREL32.DLL"), path.data(), static_cast<DWORD>(path.size())));
  return path;
}

}  // namespace

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

}  // namespace vorel
