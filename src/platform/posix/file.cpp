#include "platform/file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorel {
namespace {

constexpr int origin(SeekFrom from) {
  switch (from) {
    case SeekFrom::kStart: return SEEK_SET;
    case SeekFrom::kCurrent: return SEEK_CUR;
    case SeekFrom::kEnd: return SEEK_END;
  }
  return SEEK_SET;
}

// Repeats a read or write until all bytes are moved or the file ends. An error is reported only if no byte was moved before
// it.
template <class Move>
int64_t move_all(size_t bytes, Move move) {
  size_t done = 0;
  while (done < bytes) {
    const ssize_t moved = move(done, bytes - done);
    if (moved < 0 && errno == EINTR) continue;
    if (moved < 0 && done == 0) return -1;
    if (moved <= 0) break;
    done += static_cast<size_t>(moved);
  }
  return static_cast<int64_t>(done);
}

}  // namespace

int64_t FileRef::seek(int64_t offset, SeekFrom from) const { return lseek(handle_, offset, origin(from)); }

int64_t FileRef::size() const {
  struct stat facts {};
  return fstat(handle_, &facts) == 0 ? facts.st_size : -1;
}

int64_t FileRef::read(void* buffer, size_t bytes) const {
  return move_all(bytes, [&](size_t done, size_t left) { return ::read(handle_, static_cast<char*>(buffer) + done, left); });
}

int64_t FileRef::write(const void* buffer, size_t bytes) const {
  return move_all(bytes,
                  [&](size_t done, size_t left) { return ::write(handle_, static_cast<const char*>(buffer) + done, left); });
}

std::optional<OwnedFile> OwnedFile::open_for_reading(const char* path) {
  // Checked before opening: opening a pipe without a writer would block.
  struct stat facts {};
  if (path == nullptr || stat(path, &facts) != 0) return std::nullopt;
  if (S_ISDIR(facts.st_mode) || S_ISFIFO(facts.st_mode) || S_ISSOCK(facts.st_mode)) return std::nullopt;
  const int handle = ::open(path, O_RDONLY | O_CLOEXEC);
  if (handle < 0) return std::nullopt;
  return OwnedFile(handle);
}

std::optional<OwnedFile> OwnedFile::open_as_named(const char* path) { return open_for_reading(path); }

std::optional<OwnedFile> OwnedFile::create(const char* path) {
  if (path == nullptr) return std::nullopt;
  const int handle = ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (handle < 0) return std::nullopt;
  return OwnedFile(handle);
}

std::optional<OwnedFile> OwnedFile::create_as_named(const char* path) { return create(path); }

OwnedFile::~OwnedFile() {
  if (is_open()) ::close(handle_);
}

bool name_exists(const char* path) { return path != nullptr && access(path, F_OK) == 0; }

std::optional<std::string> find_file(const char* path) {
  if (!OwnedFile::open_for_reading(path)) return std::nullopt;
  return path;
}

}  // namespace vorel
