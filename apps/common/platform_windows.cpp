#include <algorithm>

#include <vorel32.h>

#include "common/platform.h"

namespace vorel::programs {
namespace {

constexpr size_t kLongestPath = 127;

bool suits_library(const std::filesystem::path& path) {
  const std::wstring& name = path.native();
  return name.size() <= kLongestPath && std::ranges::all_of(name, [](wchar_t c) { return c < 128; });
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

// The address of a function would be that of this program's way to it.
FolderName library_folder() { return folder_of_code(GetModuleHandleA(VOREL_FILE_NAME)); }

bool has_drawing() { return true; }

}  // namespace vorel::programs
