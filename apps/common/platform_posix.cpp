#include <vorel32.h>

#include "common/platform.h"

namespace vorel::programs {

std::optional<std::string> path_for_library(const std::filesystem::path& path) { return path.native(); }

FolderName library_folder() { return folder_of_code(reinterpret_cast<const void*>(&LoadImageIntoDIB)); }

bool has_drawing() { return false; }

Picture whole_metafile(const std::filesystem::path&, Picture loaded) { return loaded; }

}  // namespace vorel::programs
