#include "platform/module.h"

#include <climits>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

namespace vorel {
namespace {

void* load(const char* file_name, const FolderName& first) {
  const std::string installed = first + file_name;
  const bool is_there = !first.empty() && access(installed.c_str(), F_OK) == 0;
  return dlopen(is_there ? installed.c_str() : file_name, RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

std::string module_file_name(const char* name) { return std::string(name) + ".so"; }

// The loader records the folder at load time; the name that it was given may be relative to a folder that is no longer
// current.
FolderName folder_of_code(const void* address) {
  Dl_info details;
  link_map* loaded = nullptr;
  if (dladdr1(address, &details, reinterpret_cast<void**>(&loaded), RTLD_DL_LINKMAP) == 0) return {};
  char folder[PATH_MAX];
  return dlinfo(loaded, RTLD_DI_ORIGIN, folder) == 0 ? folder + std::string("/") : std::string();
}

FolderName own_folder() { return folder_of_code(reinterpret_cast<const void*>(&own_folder)); }

LoadedModule::LoadedModule(const char* file_name, const FolderName& first) : handle_(load(file_name, first)) {}

LoadedModule::~LoadedModule() {
  if (is_loaded()) dlclose(handle_);
}

void* LoadedModule::entry(const char* name) const { return dlsym(handle_, name); }

}  // namespace vorel
