#include "viewer/usable_file.h"

#include <atomic>
#include <optional>
#include <utility>

#include "common/platform.h"
#include "viewer/failure.h"
#include "viewer/picture_file.h"
#include "viewer/system.h"

namespace vorel::viewer {
namespace fs = std::filesystem;

// ---- Names ----

ScratchName::ScratchName(const fs::path& folder, const std::wstring& ending) {
  static std::atomic<unsigned> count = 0;
  const std::wstring process = std::to_wstring(GetCurrentProcessId());
  std::error_code ignored;
  do path_ = folder / (L"vor" + process + L"-" + std::to_wstring(++count) + ending);
  while (fs::exists(path_, ignored));
}

ScratchName& ScratchName::operator=(ScratchName&& other) noexcept {
  std::swap(path_, other.path_);
  return *this;
}

ScratchName::~ScratchName() {
  if (!path_.empty()) DeleteFileW(path_.c_str());
}

namespace {

ScratchName among_temporary_files(const std::wstring& ending) {
  std::error_code error;
  const fs::path folder = fs::temp_directory_path(error);
  return error ? ScratchName() : ScratchName(folder, ending);
}

bool create(const fs::path& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  CloseHandle(file);
  return true;
}

}  // namespace

// ---- Loading ----

UsableFile::UsableFile(const fs::path& path) : path_(path) {
  if (programs::path_for_library(path)) return;
  other_ = among_temporary_files(path.extension().wstring());
  const wchar_t* const name = other_.path().c_str();
  if (CreateHardLinkW(name, path.c_str(), nullptr) || CopyFileW(path.c_str(), name, TRUE)) path_ = other_.path();
}

// ---- Saving ----

// A short name needs the file.
Replacement::Replacement(const fs::path& target, const std::wstring& ending)
    : target_(target), beside_(target.parent_path(), ending) {
  if (!create(beside_.path())) throw Failure(L"Nothing can be written to the folder of " + quoted(target));
  auto usable = programs::path_for_library(beside_.path());
  if (!usable) {
    elsewhere_ = among_temporary_files(ending);
    if (create(elsewhere_.path())) usable = programs::path_for_library(elsewhere_.path());
  }
  if (!usable) throw Failure(quoted(target) + L" cannot be saved: its path is too long; choose a folder nearer to the root");
  usable_name_ = *usable;
}

void Replacement::commit() const {
  const bool is_elsewhere = !elsewhere_.path().empty();
  if ((is_elsewhere && !CopyFileW(elsewhere_.path().c_str(), beside_.path().c_str(), FALSE)) ||
      !MoveFileExW(beside_.path().c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING))
    throw Failure(quoted(target_) + L" cannot be replaced: it is in use, or protected");
}

}  // namespace vorel::viewer
