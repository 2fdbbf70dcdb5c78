#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <vector>

#include "cli/platform.h"

namespace vorel::cli {
namespace {

bool prepared = false;

constexpr UINT kStopped = 130;  // the exit code that shells give for Ctrl+C

SRWLOCK list_lock = SRWLOCK_INIT;
std::vector<std::filesystem::path> scratch_files;

class ListGuard {
 public:
  ListGuard() { AcquireSRWLockExclusive(&list_lock); }
  ListGuard(const ListGuard&) = delete;
  ListGuard& operator=(const ListGuard&) = delete;
  ~ListGuard() { ReleaseSRWLockExclusive(&list_lock); }
};

// Runs on a thread of its own, while the others go on: a file that is open cannot be removed yet.
BOOL WINAPI end_by_console(DWORD) {
  constexpr int kTries = 200;
  constexpr DWORD kMillisecondsBetween = 10;
  const ListGuard guard;  // kept: nobody makes another file from now on
  for (int i = 0; i < kTries && !scratch_files.empty(); ++i) {
    std::erase_if(scratch_files,
                  [](const auto& path) { return DeleteFileW(path.c_str()) || GetLastError() == ERROR_FILE_NOT_FOUND; });
    if (!scratch_files.empty()) Sleep(kMillisecondsBetween);
  }
  ExitProcess(kStopped);
}

std::error_code last_error() { return {static_cast<int>(GetLastError()), std::system_category()}; }

}  // namespace

bool is_prepared() { return prepared; }

void prepare_process() {
  prepared = true;
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  SetConsoleCtrlHandler(end_by_console, TRUE);
}

void end_if_stopped(int) {}

void remove_if_stopped(const std::filesystem::path& path) {
  const ListGuard guard;
  scratch_files.push_back(std::filesystem::absolute(path));
}

void forget_if_stopped(const std::filesystem::path& path) {
  const ListGuard guard;
  std::erase(scratch_files, std::filesystem::absolute(path));
}

std::error_code create_new_file(const std::filesystem::path& path, Readers) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return last_error();
  CloseHandle(file);
  return {};
}

std::error_code move_to_free_name(const std::filesystem::path& from, const std::filesystem::path& to) {
  return MoveFileExW(from.c_str(), to.c_str(), 0) ? std::error_code() : last_error();
}

bool standard_error_is_terminal() { return _isatty(_fileno(stderr)) != 0; }

programs::Picture drawn_text(const std::string& path, bool is_oem) {
  HBITMAP bitmap = LoadASCIIFile(path.c_str(), !is_oem);
  const HGLOBAL dib = bitmap == nullptr ? nullptr : ConvertBitmapToDIB(bitmap, nullptr);
  if (bitmap != nullptr) DeleteObject(bitmap);
  return programs::Picture(dib);
}

}  // namespace vorel::cli
