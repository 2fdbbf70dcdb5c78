#include "common/file.h"

#include <algorithm>
#include <filesystem>
#include <limits>

#include "common/entry.h"

#ifdef _WIN32
#define fseeko _fseeki64
#endif

namespace codec {
namespace fs = std::filesystem;
namespace {

uint64_t size_of_file(const char* path) {
  std::error_code error;
  if (path == nullptr || !fs::is_regular_file(path, error)) fail(IMG_E_OPEN_FILE);
  const uint64_t size = fs::file_size(path, error);
  if (error) fail(IMG_E_OPEN_FILE);
  return size;
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

InputFile::InputFile(const char* path) : size_(size_of_file(path)) { file_ = open_file(path, "rb"); }

std::vector<uint8_t> InputFile::read(uint64_t offset, uint64_t count) const {
  const uint64_t there = offset < size_ ? std::min(count, size_ - offset) : 0;
  if (there == 0) return {};
  if (there > std::numeric_limits<std::ptrdiff_t>::max()) fail(IMG_E_MEMORY);
  std::vector<uint8_t> bytes(static_cast<size_t>(there));
  if (read_at(get(), offset, bytes) != bytes.size()) fail(IMG_E_FILE_IO);
  return bytes;
}

OutputFile::OutputFile(const char* path, Mode mode) : mode_(mode) {
  if (path == nullptr) fail(IMG_E_OPEN_FILE);
  path_ = path;
  if (mode == Mode::kAdd) found_size_ = size_of_file(path);
  file_ = open_file(path, mode == Mode::kAdd ? "r+b" : "wb");
}

OutputFile::~OutputFile() {
  if (completed_) return;
  file_.reset();
  std::error_code ignored;
  if (mode_ == Mode::kAdd) {
    fs::resize_file(path_, found_size_, ignored);
  } else if (fs::is_regular_file(path_, ignored)) {
    fs::remove(path_, ignored);
  }
}

void OutputFile::seek(uint64_t offset) const {
  if (fseeko(get(), static_cast<int64_t>(offset), SEEK_SET) != 0) fail(IMG_E_FILE_IO);
}

void OutputFile::write(std::span<const uint8_t> bytes) const {
  if (std::fwrite(bytes.data(), 1, bytes.size(), get()) != bytes.size()) fail(IMG_E_FILE_IO);
}

void OutputFile::flush() const {
  if (std::fflush(get()) != 0 || std::ferror(get()) != 0) fail(IMG_E_FILE_IO);
}

void OutputFile::complete() {
  flush();
  file_.reset();
  completed_ = true;
}

}  // namespace codec
