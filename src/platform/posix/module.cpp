#include "platform/module.h"

#include <climits>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

namespace vorel {
namespace {

// Where the library is installed among others, its modules have a folder of their own below.
constexpr const char* kModuleFolders[] = {"", "vorel32/"};

void* load(const char* file_name, const FolderName& first) {
  std::string found = file_name;
  for (const char* folder : kModuleFolders) {
    const std::string installed = first + folder + file_name;
    if (!first.empty() && access(installed.c_str(), F_OK) == 0) {
      found = installed;
      break;
    }
  }
  return dlopen(found.c_str(), RTLD_NOW | RTLD_LOCAL);
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
