#include "common/file.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <sys/stat.h>
#include <utility>

#include "common/entry.h"

#ifdef _WIN32
#include <io.h>
#define close _close
#define dup _dup
#define fileno _fileno
#define fseeko _fseeki64
#define ftruncate _chsize_s
#else
#include <unistd.h>
#endif

namespace codec {
namespace {

// The size of a regular file. Queried by name before it is opened, because opening a pipe would wait for its writer. The
// name goes to the system unchanged: std::filesystem would translate it, on Windows to another file's name.
std::optional<uint64_t> size_of_file(const char* path) {
#ifdef _WIN32
  struct _stat64 facts {};
  const bool is_there = path != nullptr && _stat64(path, &facts) == 0;
#else
  struct stat facts {};
  const bool is_there = path != nullptr && stat(path, &facts) == 0;
#endif
  if (!is_there || !S_ISREG(facts.st_mode)) return std::nullopt;
  return static_cast<uint64_t>(facts.st_size);
}

uint64_t size_to_open(const char* path) {
  const auto size = size_of_file(path);
  if (!size) fail(IMG_E_OPEN_FILE);
  return *size;
}

// Closes the file first, because closing may still write buffered bytes.
void close_and_cut(FileHandle file, uint64_t size) {
  const int descriptor = dup(fileno(file.get()));
  file.reset();
  if (descriptor < 0) return;
  [[maybe_unused]] const auto ignored = ftruncate(descriptor, static_cast<int64_t>(size));
  close(descriptor);
}

FileHandle open_file(const char* path, const char* mode) {
  FileHandle file(std::fopen(path, mode));
  if (!file) fail(IMG_E_OPEN_FILE);
  return file;
}

}  // namespace

size_t read_at(std::FILE* file, uint64_t offset, std::span<uint8_t> bytes) {
  if (fseeko(file, static_cast<int64_t>(offset), SEEK_SET) != 0) return 0;
  return std::fread(bytes.data(), 1, bytes.size(), file);
}

InputFile::InputFile(const char* path) : size_(size_to_open(path)) { file_ = open_file(path, "rb"); }

std::vector<uint8_t> InputFile::read(uint64_t offset, uint64_t count) const {
  const uint64_t available = offset < size_ ? std::min(count, size_ - offset) : 0;
  if (available == 0) return {};
  if (available > std::numeric_limits<std::ptrdiff_t>::max()) fail(IMG_E_MEMORY);
  std::vector<uint8_t> bytes(static_cast<size_t>(available));
  if (read_at(get(), offset, bytes) != bytes.size()) fail(IMG_E_FILE_IO);
  return bytes;
}

OutputFile::OutputFile(const char* path, Mode mode) : mode_(mode) {
  if (path == nullptr) fail(IMG_E_OPEN_FILE);
  path_ = path;
  if (mode == Mode::kAdd) found_size_ = size_to_open(path);
  file_ = open_file(path, mode == Mode::kAdd ? "r+b" : "wb");
}

OutputFile::~OutputFile() {
  if (completed_) return;
  if (mode_ == Mode::kAdd) {
    restore();
  } else {
    file_.reset();
    if (size_of_file(path_.c_str())) std::remove(path_.c_str());
  }
}

// Closes the old handle first, so that buffered writes reach the file before the earlier bytes, or fail with it.
void OutputFile::restore() {
  if (!overwritten_.empty()) file_.reset();
  if (!file_) file_.reset(std::fopen(path_.c_str(), "r+b"));  // or closing it failed
  if (!file_) return;
  for (const Piece& piece : overwritten_)
    if (fseeko(get(), static_cast<int64_t>(piece.offset), SEEK_SET) == 0)
      std::fwrite(piece.bytes.data(), 1, piece.bytes.size(), get());
  close_and_cut(std::move(file_), found_size_);
}

void OutputFile::seek(uint64_t offset) const {
  if (fseeko(get(), static_cast<int64_t>(offset), SEEK_SET) != 0) fail(IMG_E_FILE_IO);
}

void OutputFile::write(std::span<const uint8_t> bytes) const {
  if (std::fwrite(bytes.data(), 1, bytes.size(), get()) != bytes.size()) fail(IMG_E_FILE_IO);
}

void OutputFile::overwrite(uint64_t offset, std::span<const uint8_t> bytes) {
  Piece found{offset, std::vector<uint8_t>(bytes.size())};
  if (read_at(get(), offset, found.bytes) != bytes.size()) fail(IMG_E_FILE_IO);
  overwritten_.insert(overwritten_.begin(), std::move(found));  // the last change is undone first
  seek(offset);
  write(bytes);
}

void OutputFile::flush() const {
  if (std::fflush(get()) != 0 || std::ferror(get()) != 0) fail(IMG_E_FILE_IO);
}

void OutputFile::complete() {
  flush();
  if (std::fclose(file_.release()) != 0) fail(IMG_E_FILE_IO);  // some file systems report a full disk only here
  completed_ = true;
}

}  // namespace codec
