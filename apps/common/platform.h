// What each system does its own way, as the programs need it to call the library.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/module.h"

namespace vorel {

// The path as the library takes it, for a file that exists. None if no spelling of it is short and plain enough.
std::optional<std::string> path_for_library(const std::filesystem::path& path);

// The folder that the library was loaded from.
FolderName library_folder();

// A codec module for a scope, searched for where the library searches. `name` has no ending.
struct CodecModule : LoadedModule {
  explicit CodecModule(const char* name) : LoadedModule(module_file_name(name).c_str(), library_folder()) {}
};

}  // namespace vorel
