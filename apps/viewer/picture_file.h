// Picture files: what the library loads and saves.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "core/file_formats.h"
#include "viewer/shown_picture.h"

namespace vorel::viewer {

// The name of a file as messages have it.
std::wstring quoted(const std::filesystem::path& path);

// A page of a file, counted from 1.
struct PagePlace {
  static constexpr int kLast = 0;  // whatever its number is

  std::filesystem::path path;
  int page = 1;
  bool operator==(const PagePlace&) const = default;
};

// What tells that a file was written since.
struct FileStamp {
  std::filesystem::file_time_type time;
  uint64_t bytes = 0;
  bool operator==(const FileStamp&) const = default;
};
FileStamp stamp_of(const std::filesystem::path& path);  // all zero for no file

struct LoadedPage {
  SharedPicture picture;
  int pages = 1;  // that the file has

  int number(const PagePlace& place) const { return place.page == PagePlace::kLast ? pages : place.page; }
};

// Throws Failure.
LoadedPage load_page(const PagePlace& place);

// Replaces a file by pictures, page after page, or leaves it as it was and throws Failure. Several need a format that holds pages.
//   page  gives the picture of a page, counted from 1
void save_pages(const std::filesystem::path& path, const FileFormat& format, int pages,
                const std::function<SharedPicture(int page)>& page);

}  // namespace vorel::viewer
