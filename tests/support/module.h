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

#ifdef _WIN32
inline constexpr const char* kModuleEnding = ".DLL";
#else
inline constexpr const char* kModuleEnding = ".so";
#endif

class Module {
 public:
  // The one that was built, by its name without the ending: "MERV32".
  explicit Module(const std::string& name) : Module(Path{program_folder() / (name + kModuleEnding)}) {}

  struct Path {
    std::filesystem::path file;
  };
  explicit Module(const Path& path) {
#ifdef _WIN32
    handle_ = LoadLibraryW(path.file.c_str());
#else
    handle_ = dlopen(path.file.c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
    if (handle_ == nullptr) throw std::runtime_error(path.file.string());
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
