#include "platform/module.h"

#include <climits>
#include <dlfcn.h>
#include <link.h>

#include "platform/file.h"

namespace vorel {
namespace {

constexpr int kLoading = RTLD_NOW | RTLD_LOCAL;

// Where this code was loaded from, as it was then: the current folder may be another one by now.
std::string own_folder() {
  Dl_info details;
  link_map* own = nullptr;
  const auto* anchor = reinterpret_cast<void*>(&own_folder);
  if (dladdr1(anchor, &details, reinterpret_cast<void**>(&own), RTLD_DL_LINKMAP) == 0) return {};
  char folder[PATH_MAX];
  return dlinfo(own, RTLD_DI_ORIGIN, folder) == 0 ? folder : std::string();
}

}  // namespace

std::string module_file_name(const char* name) { return std::string(name) + ".so"; }

LoadedModule::LoadedModule(const char* file_name) {
  const std::string beside_us = own_folder() + '/' + file_name;
  handle_ = dlopen(name_exists(beside_us.c_str()) ? beside_us.c_str() : file_name, kLoading);
}

LoadedModule::~LoadedModule() {
  if (is_loaded()) dlclose(handle_);
}

void* LoadedModule::entry(const char* name) const { return dlsym(handle_, name); }

}  // namespace vorel
