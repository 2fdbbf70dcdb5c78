#include "viewer/settings.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "viewer/system.h"

namespace vorel::viewer {
namespace {

std::filesystem::path settings_folder() {
  wchar_t folder[MAX_PATH] = {};
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder))) return {};
  return std::filesystem::path(folder) / L"Vorel32";
}

std::filesystem::path recent_files_path() { return settings_folder() / L"recent.txt"; }

}  // namespace

RecentFiles load_recent_files() {
  std::ifstream file(recent_files_path(), std::ios::binary);
  return RecentFiles::parse({std::istreambuf_iterator<char>(file), {}});
}

void save_recent_files(const RecentFiles& files) {
  std::error_code ignored;
  std::filesystem::create_directories(settings_folder(), ignored);
  std::ofstream(recent_files_path(), std::ios::binary) << files.text();
}

}  // namespace vorel::viewer
