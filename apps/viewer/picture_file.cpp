#include "viewer/picture_file.h"

#include <algorithm>

#include "common/forms.h"
#include "common/picture_file.h"
#include "common/platform.h"
#include "common/saving.h"
#include "viewer/failure.h"
#include "viewer/system.h"

namespace vorel::viewer {
namespace fs = std::filesystem;
namespace {

// An empty file in the folder of another, which is to take its place. It is removed with its scope.
class ScratchFile {
 public:
  ScratchFile(const fs::path& target, const wchar_t* ending) {
    wchar_t name[MAX_PATH];
    if (GetTempFileNameW(target.parent_path().c_str(), L"vor", 0, name) == 0)
      throw Failure(L"Nothing can be written to the folder of " + quoted(target));
    path_ = std::wstring(name) + ending;
    MoveFileExW(name, path_.c_str(), MOVEFILE_REPLACE_EXISTING);
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { DeleteFileW(path_.c_str()); }

  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

}  // namespace

std::wstring quoted(const fs::path& path) { return L"\"" + path.filename().wstring() + L"\""; }

FileStamp stamp_of(const fs::path& path) {
  std::error_code error;
  const fs::directory_entry entry(path, error);
  FileStamp stamp;
  if (!error && entry.is_regular_file(error)) stamp = {entry.last_write_time(error), entry.file_size(error)};
  return stamp;
}

LoadedPage load_page(const PagePlace& place) {
  std::error_code ignored;
  if (!fs::exists(place.path, ignored)) throw Failure(quoted(place.path) + L" is not found");
  return about(quoted(place.path) + L" cannot be loaded", [&] {
    const programs::PictureFile file(place.path);
    programs::Picture picture = programs::with_whole_table(programs::workable(file.load(place.page)));
    return LoadedPage{share(std::move(picture)), std::max(file.count_pages().value_or(1), 1)};
  });
}

// TGA files are known by their names.
void save_pages(const fs::path& path, const FileFormat& format, int pages,
                const std::function<SharedPicture(int page)>& page) {
  const bool is_tga = format.code == FormatCode::kTga;
  const ScratchFile scratch(path, is_tga ? L".tga" : L"");
  about(quoted(path) + L" cannot be saved", [&] {
    const auto plain = programs::path_for_library(scratch.path());
    if (!plain)
      throw programs::Problem(programs::Fault::kOutput, "its path is too long; choose a folder nearer to the root");
    const programs::Saving saving{.format = &format, .run_length = is_tga};
    for (int number = 1; number <= pages; ++number)
      programs::save_page(*plain, programs::suited(page(number)->picture.copy(), saving), saving, number);
  });
  if (!MoveFileExW(scratch.path().c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING))
    throw Failure(quoted(path) + L" cannot be replaced: it is in use, or protected");
}

}  // namespace vorel::viewer
