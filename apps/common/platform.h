// What each system does its own way, as the programs need it to call the library.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "common/picture.h"
#include "platform/module.h"

namespace vorel::programs {

// The path as the library takes it, for a file that exists. None if no spelling of it is short and plain enough.
std::optional<std::string> path_for_library(const std::filesystem::path& path);

// Whether this build has what draws metafiles, text and device bitmaps.
bool has_drawing();

// A metafile's whole picture, given what the library has loaded of it: of a large one it draws a part. Throws Problem.
Picture whole_metafile(const std::filesystem::path& path, Picture loaded);

// The folder that the library was loaded from.
FolderName library_folder();

// A codec module for a scope, searched for where the library searches. `name` has no ending.
struct CodecModule : LoadedModule {
  explicit CodecModule(const char* name) : LoadedModule(module_file_name(name).c_str(), library_folder()) {}
};

}  // namespace vorel::programs
