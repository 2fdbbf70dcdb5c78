// A codec module, loaded as a program would that calls it directly.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include <vorel32.h>

#ifndef _WIN32
#include <dlfcn.h>
#endif

namespace test {

// The folder of this program, where the build puts the modules too.
inline std::filesystem::path program_folder() {
#ifdef _WIN32
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  return std::filesystem::path(path).parent_path();
#else
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
#endif
}

class Module {
 public:
  // By its name without the ending: "MERV32".
  explicit Module(const std::string& name) {
#ifdef _WIN32
    handle_ = LoadLibraryA((name + ".DLL").c_str());
#else
    handle_ = dlopen((program_folder() / (name + ".so")).c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
    if (handle_ == nullptr) throw std::runtime_error(name);
  }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  ~Module() {
#ifdef _WIN32
    FreeLibrary(handle_);
#else
    dlclose(handle_);
#endif
  }

  template <class Function>
  Function entry(const char* name) const {
#ifdef _WIN32
    const auto address = reinterpret_cast<void*>(GetProcAddress(handle_, name));
#else
    void* address = dlsym(handle_, name);
#endif
    if (address == nullptr) throw std::runtime_error(name);
    return reinterpret_cast<Function>(address);
  }

 private:
#ifdef _WIN32
  HMODULE handle_;
#else
  void* handle_;
#endif
};

}  // namespace test
