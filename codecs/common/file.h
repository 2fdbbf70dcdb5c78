// Files of a codec module, closed with their scope.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace codec {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

// Reads up to `bytes.size()` bytes from `offset` on and returns their number. ferror() tells whether reading failed.
size_t read_at(std::FILE* file, uint64_t offset, std::span<uint8_t> bytes);

class InputFile {
 public:
  // Opens regular files only. Throws Failure.
  explicit InputFile(const char* path);

  uint64_t size() const { return size_; }
  std::FILE* get() const { return file_.get(); }  // at its start until something is read

  // At most `count` bytes from `offset` on, fewer at the end of the file. Throws Failure when reading fails.
  std::vector<uint8_t> read(uint64_t offset, uint64_t count) const;
  std::vector<uint8_t> read_all() const { return read(0, size_); }

 private:
  FileHandle file_;
  uint64_t size_ = 0;
};

// A file being written. Unless it is completed, its scope restores the earlier state: a new file is removed, an extended file
// gets its overwritten bytes and its length back. A replaced file is lost.
class OutputFile {
 public:
  enum class Mode { kReplace, kAdd };

  // Throws Failure.
  explicit OutputFile(const char* path, Mode mode = Mode::kReplace);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  std::FILE* get() const { return file_.get(); }
  uint64_t found_size() const { return found_size_; }

  // Throw Failure on a write error.
  void seek(uint64_t offset) const;
  void write(std::span<const uint8_t> bytes) const;
  // Changes bytes that were there before.
  void overwrite(uint64_t offset, std::span<const uint8_t> bytes);
  void flush() const;
  void complete();

 private:
  struct Piece {
    uint64_t offset;
    std::vector<uint8_t> bytes;
  };

  void restore();

  std::string path_;
  Mode mode_;
  std::vector<Piece> overwritten_;
  FileHandle file_;
  uint64_t found_size_ = 0;
  bool completed_ = false;
};

}  // namespace codec
