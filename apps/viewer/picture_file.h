// Picture files: what the library loads and saves.
#pragma once

#include <filesystem>

#include "common/picture.h"
#include "core/file_formats.h"

namespace vorel::viewer {

struct LoadedPage {
  programs::Picture picture;
  int pages;  // that the file has
};

// Loads a page, counted from 1. Throws Failure.
LoadedPage load_page(const std::filesystem::path& path, int page);

// Replaces a file, or leaves it as it was and throws Failure.
void save_picture(const std::filesystem::path& path, const programs::Picture& picture, const FileFormat& format);

}  // namespace vorel::viewer
