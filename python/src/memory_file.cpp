#include "memory_file.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vorel::python {
namespace {

[[noreturn]] void fail() { throw std::system_error(errno, std::generic_category()); }

void write_all(int descriptor, std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) fail();
    bytes = bytes.subspan(static_cast<size_t>(written));
  }
}

}  // namespace

MemoryFile::OpenFile::OpenFile() : descriptor(memfd_create("vorel32", MFD_CLOEXEC)) {
  if (descriptor >= 0) {
    path = "/proc/self/fd/" + std::to_string(descriptor);
    if (access(path.c_str(), R_OK | W_OK) == 0) return;
    close(descriptor);
  }
  std::string name = std::filesystem::temp_directory_path() / "vorel-XXXXXX";
  descriptor = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor < 0) fail();
  is_temporary = true;
  path = name;
}

MemoryFile::OpenFile::~OpenFile() {
  close(descriptor);
  if (is_temporary) unlink(path.c_str());
}

MemoryFile::MemoryFile(std::span<const char> content) { write_all(open_.descriptor, content); }

std::vector<char> MemoryFile::content() const {
  struct stat facts {};
  if (fstat(open_.descriptor, &facts) != 0) fail();
  std::vector<char> bytes(static_cast<size_t>(facts.st_size));
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t got = pread(open_.descriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) fail();
    done += static_cast<size_t>(got);
  }
  return bytes;
}

}  // namespace vorel::python
