// What each system does its own way, as the programs need it to call the library.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace vorel {

// The path as the library takes it, for a file that exists. None if no spelling of it is short and plain enough.
std::optional<std::string> path_for_library(const std::filesystem::path& path);

// A codec module for a scope, looked for where the library looks.
class CodecModule {
 public:
  explicit CodecModule(const char* name);  // without the ending
  CodecModule(const CodecModule&) = delete;
  CodecModule& operator=(const CodecModule&) = delete;
  ~CodecModule();

  bool is_loaded() const { return handle_ != nullptr; }
  void* entry(const char* name) const;  // null if there is none of this name

  static std::string file_name(const char* name);
  static std::string library_path();

 private:
  void* handle_;
};

}  // namespace vorel
