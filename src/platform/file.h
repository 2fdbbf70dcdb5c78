// Files by their classic handles. Windows goes through OpenFile, _lopen, _hread and similar calls, Linux through file descriptors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "platform/win32.h"

namespace vorel {

enum class SeekFrom { kStart, kCurrent, kEnd };

// An open file that another object owns.
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
  // Opens no folders or null paths, and no pipes for reading. On Windows this is OpenFile, which takes paths of at most 127
  // characters and also searches the system's folders for a bare name.
  static std::optional<OwnedFile> open_for_reading(const char* path);
  // Takes the path as given: it may be longer, and a bare name means the current folder only.
  static std::optional<OwnedFile> open_as_named(const char* path);
  static std::optional<OwnedFile> create(const char* path);
  static std::optional<OwnedFile> create_as_named(const char* path);

  OwnedFile(OwnedFile&& other) noexcept : FileRef(std::exchange(other.handle_, HFILE_ERROR)) {}
  OwnedFile& operator=(OwnedFile&&) = delete;
  ~OwnedFile();

 private:
  explicit OwnedFile(HFILE handle) : FileRef(handle) {}
};

// Whether a file or folder of this name exists.
bool name_exists(const char* path);

// The path of the file that open_for_reading finds: a bare name may be found outside the current folder. None if the file
// cannot be opened for reading.
std::optional<std::string> find_file(const char* path);

}  // namespace vorel
