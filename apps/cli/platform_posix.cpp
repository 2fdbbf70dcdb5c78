#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "cli/platform.h"

namespace vorel::cli {

// A reader that goes away and a limit on the size of files are errors like any other: to be stopped by their signals would
// leave temporary files behind.
void prepare_process() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

std::error_code create_new_file(const std::filesystem::path& path, Readers readers) {
  const mode_t mode = readers == Readers::kOwner ? 0600 : 0666;
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (file < 0) return {errno, std::generic_category()};
  ::close(file);
  return {};
}

std::error_code move_to_free_name(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::error_code error;
  std::filesystem::create_hard_link(from, to, error);
  if (!error) {
    std::filesystem::remove(from, error);
    return {};
  }
  // Some file systems have no links.
  std::error_code ignored;
  if (std::filesystem::exists(std::filesystem::symlink_status(to, ignored))) {
    return std::make_error_code(std::errc::file_exists);
  }
  std::filesystem::rename(from, to, error);
  return error;
}

bool standard_error_is_terminal() { return ::isatty(STDERR_FILENO) != 0; }

bool has_drawing() { return false; }

Dib drawn_text(const std::string&, bool) { return nullptr; }

LibraryFile::LibraryFile(const std::string& path) : handle_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}

LibraryFile::~LibraryFile() {
  if (is_open()) ::close(handle_);
}

int64_t LibraryFile::position() const { return ::lseek(handle_, 0, SEEK_CUR); }

}  // namespace vorel::cli
