#include "platform/file.h"

#include <algorithm>
#include <cstring>

namespace vorel {
namespace {

std::optional<HFILE> open_file(const char* path, UINT mode) {
  if (path == nullptr) return std::nullopt;
  OFSTRUCT details{};
  const HFILE handle = OpenFile(path, &details, mode);
  if (handle <= HFILE_ERROR) return std::nullopt;
  return handle;
}

constexpr DWORD origin(SeekFrom from) {
  switch (from) {
    case SeekFrom::kStart: return FILE_BEGIN;
    case SeekFrom::kCurrent: return FILE_CURRENT;
    case SeekFrom::kEnd: return FILE_END;
  }
  return FILE_BEGIN;
}

// The classic calls have 32-bit counts.
LONG one_transfer(size_t bytes) { return static_cast<LONG>(std::min<size_t>(bytes, 0x7FFFFFFF)); }

// A classic handle is a system handle, and the system's calls reach past 2 GB.
HANDLE system_handle(HFILE handle) { return reinterpret_cast<HANDLE>(static_cast<intptr_t>(handle)); }

}  // namespace

int64_t FileRef::seek(int64_t offset, SeekFrom from) const {
  LARGE_INTEGER distance, position;
  distance.QuadPart = offset;
  return SetFilePointerEx(system_handle(handle_), distance, &position, origin(from)) ? position.QuadPart : -1;
}

int64_t FileRef::size() const {
  LARGE_INTEGER size;
  return GetFileSizeEx(system_handle(handle_), &size) ? size.QuadPart : -1;
}

int64_t FileRef::read(void* buffer, size_t bytes) const { return _hread(handle_, buffer, one_transfer(bytes)); }

int64_t FileRef::write(const void* buffer, size_t bytes) const {
  return _hwrite(handle_, static_cast<const char*>(buffer), one_transfer(bytes));
}

std::optional<OwnedFile> OwnedFile::open_for_reading(const char* path) {
  const auto handle = open_file(path, OF_READ);
  if (!handle) return std::nullopt;
  return OwnedFile(*handle);
}

std::optional<OwnedFile> OwnedFile::open_as_named(const char* path) {
  const HFILE handle = path == nullptr ? HFILE_ERROR : _lopen(path, OF_READ);
  if (handle == HFILE_ERROR) return std::nullopt;
  return OwnedFile(handle);
}

std::optional<OwnedFile> OwnedFile::create(const char* path) {
  const auto handle = open_file(path, OF_CREATE | OF_READWRITE);
  if (!handle) return std::nullopt;
  return OwnedFile(*handle);
}

std::optional<OwnedFile> OwnedFile::create_as_named(const char* path) {
  const HFILE handle = path == nullptr ? HFILE_ERROR : _lcreat(path, 0);
  if (handle == HFILE_ERROR) return std::nullopt;
  return OwnedFile(handle);
}

OwnedFile::~OwnedFile() {
  if (is_open()) _lclose(handle_);
}

bool name_exists(const char* path) { return path != nullptr && GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES; }

std::optional<std::string> find_file(const char* path) {
  OFSTRUCT details{};
  if (path == nullptr || OpenFile(path, &details, OF_EXIST) <= HFILE_ERROR) return std::nullopt;
  const bool is_bare_name = std::strpbrk(path, "\\/:") == nullptr;
  return is_bare_name ? details.szPathName : path;
}

}  // namespace vorel
