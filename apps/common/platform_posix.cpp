#include <dlfcn.h>

#include <vorel32.h>

#include "common/platform.h"

namespace vorel {

std::optional<std::string> path_for_library(const std::filesystem::path& path) { return path.native(); }

CodecModule::CodecModule(const char* name) {
  const auto beside = std::filesystem::path(library_path()).replace_filename(file_name(name));
  std::error_code ignored;
  const bool is_there = std::filesystem::exists(beside, ignored);
  handle_ = ::dlopen(is_there ? beside.c_str() : file_name(name).c_str(), RTLD_NOW | RTLD_LOCAL);
}

CodecModule::~CodecModule() {
  if (handle_ != nullptr) ::dlclose(handle_);
}

void* CodecModule::entry(const char* name) const { return ::dlsym(handle_, name); }

std::string CodecModule::file_name(const char* name) { return std::string(name) + ".so"; }

std::string CodecModule::library_path() {
  Dl_info details;
  if (::dladdr(reinterpret_cast<void*>(&LoadImageIntoDIB), &details) == 0) return {};
  return std::filesystem::absolute(details.dli_fname).string();
}

}  // namespace vorel
