#include "viewer/picture_file.h"

#include <algorithm>

#include "common/forms.h"
#include "common/picture_file.h"
#include "common/saving.h"
#include "viewer/failure.h"
#include "viewer/usable_file.h"

namespace vorel::viewer {
namespace fs = std::filesystem;

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
    const UsableFile usable(place.path);
    const programs::PictureFile file(usable.path());
    LoadedPage page;
    if (place.page == PagePlace::kLast) page.pages = std::max(file.count_pages().value_or(1), 1);
    page.picture = share(programs::with_whole_table(programs::workable(file.load(page.number(place)))));
    page.pages = std::max(file.count_pages().value_or(1), 1);
    return page;
  });
}

// TGA files are known by their names.
void save_pages(const fs::path& path, const FileFormat& format, int pages,
                const std::function<SharedPicture(int page)>& page) {
  const bool is_tga = format.code == FormatCode::kTga;
  const Replacement replacement(path, is_tga ? L".tga" : L"");
  about(quoted(path) + L" cannot be saved", [&] {
    const programs::Saving saving{.format = &format, .run_length = is_tga};
    for (int number = 1; number <= pages; ++number)
      programs::save_page(replacement.usable_name(), programs::suited(page(number)->picture.copy(), saving), saving, number);
  });
  replacement.commit();
}

}  // namespace vorel::viewer
