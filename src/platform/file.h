// Files by their classic handles. Windows goes through OpenFile, _lopen, _hread and their kin, Linux through file descriptors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "platform/win32.h"

namespace vorel {

enum class SeekFrom { kStart, kCurrent, kEnd };

// An open file that belongs to somebody else.
class FileRef {
 public:
  explicit FileRef(HFILE handle) : handle_(handle) {}

  HFILE handle() const { return handle_; }
  bool is_open() const { return handle_ != HFILE_ERROR; }

  // Moves the position. Returns the new one, counted from the start, or -1.
  int64_t seek(int64_t offset, SeekFrom from) const;
  int64_t position() const { return seek(0, SeekFrom::kCurrent); }
  // The file's size, or -1; the position stays where it was.
  int64_t size() const;

  // Both return the number of bytes moved, or -1.
  int64_t read(void* buffer, size_t bytes) const;
  int64_t write(const void* buffer, size_t bytes) const;

 protected:
  HFILE handle_;
};

// An open file that is closed with its scope.
class OwnedFile : public FileRef {
 public:
  // Folders and null paths cannot be opened, nor pipes for reading. On Windows OpenFile does it, which takes no path of more
  // than 127 characters and looks for a bare name in the system's folders too.
  static std::optional<OwnedFile> open_for_reading(const char* path);
  // Takes the path as it stands: it may be longer, and a bare name is in the current folder alone.
  static std::optional<OwnedFile> open_as_named(const char* path);
  static std::optional<OwnedFile> create(const char* path);
  static std::optional<OwnedFile> create_as_named(const char* path);

  OwnedFile(OwnedFile&& other) noexcept : FileRef(std::exchange(other.handle_, HFILE_ERROR)) {}
  OwnedFile& operator=(OwnedFile&&) = delete;
  ~OwnedFile();

 private:
  explicit OwnedFile(HFILE handle) : FileRef(handle) {}
};

// Whether there is anything of this name.
bool name_exists(const char* path);

// The file that a path stands for, as every function finds it: a bare name may have led to a folder that is not the current
// one. None for what cannot be opened for reading.
std::optional<std::string> find_file(const char* path);

}  // namespace vorel
