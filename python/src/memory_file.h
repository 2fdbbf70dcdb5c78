// A file in memory that has a path: the library reads and writes files by path.
#pragma once

#include <filesystem>
#include <span>
#include <vector>

namespace vorel::python {

// Removed with its scope. On Linux it is an anonymous file that never reaches a disk. Where the system has none, or does not show
// open files under /proc, it is a temporary file.
class MemoryFile {
 public:
  // Both throw std::system_error.
  explicit MemoryFile(std::span<const char> content = {});
  std::vector<char> content() const;

  const std::filesystem::path& path() const { return open_.path; }

 private:
  struct OpenFile {
    OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile();

    int descriptor = -1;
    bool is_temporary = false;
    std::filesystem::path path;
  };

  OpenFile open_;
};

}  // namespace vorel::python
