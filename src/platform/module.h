// Modules loaded while the program runs. Depends on nothing else of this library, so that programs use it too.
#pragma once

#include <cstdint>
#include <string>

namespace vorel {

// The file name of a module: its name with this system's extension.
std::string module_file_name(const char* name);

#ifdef _WIN32
using FolderName = std::wstring;
#else
using FolderName = std::string;
#endif

// The folder that the library or program at an address of code was loaded from, ending in a separator; empty if unknown. It
// stays right when the current folder changes. On Windows the address may be a module handle.
FolderName folder_of_code(const void* address);

// The folder of the library or program that this code is linked into.
FolderName own_folder();

// A module for a scope.
class LoadedModule {
 public:
  // Looks in one folder first, on Linux also in the folder vorel32 below it, and, if there is no file of this name, wherever the
  // system looks. No file elsewhere can replace an installed module, not even one that does not load.
  explicit LoadedModule(const char* file_name, const FolderName& first = own_folder());
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  ~LoadedModule();

  // The system's result: a handle or, below 32, the number of an error.
  intptr_t result() const { return reinterpret_cast<intptr_t>(handle_); }
  bool is_loaded() const { return static_cast<uintptr_t>(result()) >= 32; }

  // Null if the module has no such entry point.
  void* entry(const char* name) const;

 private:
  void* handle_;
};

}  // namespace vorel
