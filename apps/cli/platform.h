// The few things that each system does its own way, besides those of common/platform.h.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

#include "common/dib.h"
#include "common/platform.h"

namespace vorel::cli {

// Binary standard streams, and no message box or signal in place of an error code. Called once, by main().
void prepare_process();

enum class Readers { kOwner, kAsUsual };

// Makes an empty file where there is nothing yet.
std::error_code create_new_file(const std::filesystem::path& path, Readers readers);

// Renames a file, but never over another one.
std::error_code move_to_free_name(const std::filesystem::path& from, const std::filesystem::path& to);

// Whether somebody watches the standard error stream.
bool standard_error_is_terminal();

// Whether this build has what draws metafiles, text and device bitmaps.
bool has_drawing();

// A text file drawn as a bitmap, black on white. Null if that fails.
Dib drawn_text(const std::string& path, bool is_oem);

// A file opened for the library's functions that take one, closed with its scope.
class LibraryFile {
 public:
  explicit LibraryFile(const std::string& path);
  LibraryFile(const LibraryFile&) = delete;
  LibraryFile& operator=(const LibraryFile&) = delete;
  ~LibraryFile();

  HFILE get() const { return handle_; }
  bool is_open() const { return handle_ != HFILE_ERROR; }
  int64_t position() const;  // bytes from the start

 private:
  HFILE handle_;
};

}  // namespace vorel::cli
