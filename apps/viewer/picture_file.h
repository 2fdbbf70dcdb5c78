// Picture files: what the library loads and saves.
#pragma once

#include <filesystem>

#include "common/dib.h"
#include "common/formats.h"

namespace vorel::viewer {

struct LoadedPage {
  Dib dib;
  int pages;  // that the file has
};

// Loads a page, counted from 1. Throws Failure.
LoadedPage load_page(const std::filesystem::path& path, int page);

// Replaces a file, or leaves it as it was and throws Failure.
void save_picture(const std::filesystem::path& path, const Dib& dib, const Format& format);

}  // namespace vorel::viewer
