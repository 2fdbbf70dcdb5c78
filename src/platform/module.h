// Modules loaded while the program runs.
#pragma once

#include <cstdint>
#include <string>

namespace vorel {

// The file that holds a module: its name with the ending that modules have on this system.
std::string module_file_name(const char* name);

// A module for a scope.
class LoadedModule {
 public:
  // Looks in the folder of this library first and, if there is no file of this name, wherever the system looks. No file
  // elsewhere can stand in for an installed module, not even for one that does not load.
  explicit LoadedModule(const char* file_name);
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  ~LoadedModule();

  // What the system gave: a handle or, below 32, the number of an error.
  intptr_t result() const { return reinterpret_cast<intptr_t>(handle_); }
  bool is_loaded() const { return static_cast<uintptr_t>(result()) >= 32; }

  // Null if the module has no such entry point.
  void* entry(const char* name) const;

 private:
  void* handle_;
};

}  // namespace vorel
