#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "check/armed.h"
#include "check/system.h"
#include "support/module.h"

extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* block);
}

namespace {

using check::Armed;

thread_local constinit Armed armed;
std::atomic<long> live_blocks = 0;

bool fails(check::SystemPart part, const char* function, int error) {
  if (!armed.meets(part, function)) return false;
  errno = error;
  return true;
}

constexpr int kErrorFlag = 0x20;  // of a FILE of the C library

bool no_memory(const char* function) { return fails(check::kMemoryPart, function, ENOMEM); }
bool no_file(const char* function, int error = EIO) { return fails(check::kFilePart, function, error); }

// ---- memory that ends at a page without access

// Zero while blocks are not guarded; larger requests than this fail.
size_t most_bytes = 0;

constexpr size_t kPage = 4096, kSlot = 16 * kPage, kSlots = 8192, kInSlot = kSlot - kPage;
uint8_t* slots = nullptr;
std::atomic<size_t> next_slot = 0;
bool taken[kSlots];

bool is_in_slot(const void* block) { return slots != nullptr && block >= slots && block < slots + kSlot * kSlots; }
size_t slot_of(const void* block) { return static_cast<size_t>(static_cast<const uint8_t*>(block) - slots) / kSlot; }

void* slot_for(size_t bytes) {
  size_t slot = next_slot++ % kSlots;
  while (taken[slot]) slot = next_slot++ % kSlots;
  taken[slot] = true;
  uint8_t* const first = slots + slot * kSlot;
  mprotect(first, kInSlot, PROT_READ | PROT_WRITE);
  constexpr size_t kAlignment = 16;
  const size_t rounded = (bytes + kAlignment - 1) / kAlignment * kAlignment;
  uint8_t* const block = first + kInSlot - rounded;
  std::memset(block, 0, bytes);
  return block;
}

// A block that was freed has no access either.
void free_slot(void* block) {
  const size_t slot = slot_of(block);
  mmap(slots + slot * kSlot, kSlot, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE, -1, 0);
  taken[slot] = false;
}

size_t bytes_from(const void* block) {
  return static_cast<size_t>(slots + slot_of(block) * kSlot + kInSlot - static_cast<const uint8_t*>(block));
}

// Replaces malloc and calloc while blocks are guarded.
bool guarded(size_t bytes, void*& block) {
  if (most_bytes == 0) return false;
  if (bytes > most_bytes)
    block = nullptr;
  else
    block = bytes <= kInSlot ? slot_for(std::max<size_t>(bytes, 1)) : __libc_calloc(bytes, 1);
  return true;
}

void* counted(void* block) {
  if (block != nullptr) live_blocks.fetch_add(1, std::memory_order_relaxed);
  return block;
}

// The function that one of this program's replaces. The lookup itself must not meet a failure.
template <class Function>
Function* next(const char* name) {
  const Armed before = std::exchange(armed, Armed{});
  auto* const function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
  armed = before;
  return function;
}

}  // namespace

#define NEXT(name)                                               \
  ([] {                                                          \
    static auto* const function = next<decltype(::name)>(#name); \
    return function;                                             \
  }())

#pragma GCC visibility push(default)
void* operator new(size_t bytes) {
  if (fails(check::kNewPart, "operator new", ENOMEM)) throw std::bad_alloc();
  void* const block = malloc(std::max<size_t>(bytes, 1));
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

extern "C" {

void* malloc(size_t bytes) noexcept {
  if (void* block = nullptr; guarded(bytes, block)) return block;
  return no_memory("malloc") ? nullptr : counted(__libc_malloc(bytes));
}
void* calloc(size_t count, size_t bytes) noexcept {
  if (void* block = nullptr; guarded(count * bytes, block)) return block;
  return no_memory("calloc") ? nullptr : counted(__libc_calloc(count, bytes));
}
void* realloc(void* block, size_t bytes) noexcept {
  if (is_in_slot(block)) {
    void* const moved = malloc(bytes);
    if (moved != nullptr) std::memcpy(moved, block, std::min(bytes, bytes_from(block)));
    if (moved != nullptr) free_slot(block);
    return moved;
  }
  if (no_memory("realloc")) return nullptr;
  void* const moved = __libc_realloc(block, bytes);
  if (block == nullptr) return counted(moved);
  if (moved == nullptr && bytes == 0) live_blocks.fetch_sub(1, std::memory_order_relaxed);
  return moved;
}
void* memalign(size_t alignment, size_t bytes) noexcept {
  return no_memory("memalign") ? nullptr : counted(__libc_memalign(alignment, bytes));
}
void* aligned_alloc(size_t alignment, size_t bytes) noexcept { return memalign(alignment, bytes); }
int posix_memalign(void** block, size_t alignment, size_t bytes) noexcept {
  *block = memalign(alignment, bytes);
  return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) noexcept {
  if (is_in_slot(block)) return free_slot(block);
  if (block != nullptr) live_blocks.fetch_sub(1, std::memory_order_relaxed);
  __libc_free(block);
}

// The library calls this function by its usual name.
void* map_pages(void* address, size_t bytes, int protection, int flags, int file, off_t offset) noexcept __asm__("mmap");
void* map_pages(void* address, size_t bytes, int protection, int flags, int file, off_t offset) noexcept {
  return no_memory("mmap") || (most_bytes != 0 && bytes > most_bytes && (flags & MAP_FIXED) == 0)
             ? MAP_FAILED
             : mmap(address, bytes, protection, flags, file, offset);
}
void* GlobalLock(HGLOBAL block) { return no_memory("GlobalLock") ? nullptr : NEXT(GlobalLock)(block); }
HGLOBAL GlobalAlloc(UINT flags, size_t bytes) {
  return no_memory("GlobalAlloc") ? nullptr : NEXT(GlobalAlloc)(flags, bytes);
}
HGLOBAL GlobalReAlloc(HGLOBAL block, size_t bytes, UINT flags) {
  return no_memory("GlobalReAlloc") ? nullptr : NEXT(GlobalReAlloc)(block, bytes, flags);
}

// The loader's own memory does not fail: a failure inside dlopen can leave dependencies half loaded.
void* dlopen(const char* path, int flags) noexcept {
  if (no_memory("dlopen")) return nullptr;
  const unsigned parts = std::exchange(armed.parts, 0u);
  void* const module = NEXT(dlopen)(path, flags);
  armed.parts = parts;
  return module;
}
int dlclose(void* module) noexcept {
  const unsigned parts = std::exchange(armed.parts, 0u);
  const int status = NEXT(dlclose)(module);
  armed.parts = parts;
  return status;
}

ssize_t read(int file, void* buffer, size_t bytes) { return no_file("read") ? -1 : NEXT(read)(file, buffer, bytes); }
ssize_t write(int file, const void* buffer, size_t bytes) {
  return no_file("write", ENOSPC) ? -1 : NEXT(write)(file, buffer, bytes);
}
off_t lseek(int file, off_t offset, int from) noexcept { return no_file("lseek") ? -1 : NEXT(lseek)(file, offset, from); }
int fstat(int file, struct stat* facts) noexcept { return no_file("fstat") ? -1 : NEXT(fstat)(file, facts); }
int stat(const char* path, struct stat* facts) noexcept { return no_file("stat", EACCES) ? -1 : NEXT(stat)(path, facts); }
int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return no_file("open", EACCES) ? -1 : NEXT(open)(path, flags, mode);
}
FILE* fopen(const char* path, const char* mode) { return no_file("fopen", EACCES) ? nullptr : NEXT(fopen)(path, mode); }
// A failure also sets the file's error flag.
size_t fread(void* buffer, size_t size, size_t count, FILE* file) {
  return no_file("fread") ? (file->_flags |= kErrorFlag, 0) : NEXT(fread)(buffer, size, count, file);
}
size_t fwrite(const void* buffer, size_t size, size_t count, FILE* file) {
  return no_file("fwrite", ENOSPC) ? (file->_flags |= kErrorFlag, 0) : NEXT(fwrite)(buffer, size, count, file);
}
int fflush(FILE* file) { return no_file("fflush", ENOSPC) ? (file->_flags |= kErrorFlag, EOF) : NEXT(fflush)(file); }
// Closing writes buffered bytes, so it can fail; the file is closed in any case.
int fclose(FILE* file) {
  const bool is_lost = no_file("fclose", ENOSPC);
  const int status = NEXT(fclose)(file);
  return is_lost ? EOF : status;
}
int ftruncate(int file, off_t bytes) noexcept { return no_file("ftruncate") ? -1 : NEXT(ftruncate)(file, bytes); }
int fseeko(FILE* file, off_t offset, int from) { return no_file("fseeko") ? -1 : NEXT(fseeko)(file, offset, from); }

}  // extern "C"
#pragma GCC visibility pop

namespace check {

void set_up_system() {}
void use_device_contexts() {}

// The C library ends the process where a library's thread-local data find no memory. So the JPEG library stays loaded, with its
// data.
void keep_jpeg_loaded() {
  for (const char* module : {"KALO32", "KALO"}) new test::Module(module);
  Stage stage;
  GlobalFree(LoadImageIntoDIB(stage.file("a.jpg"), 1, nullptr));
}

std::string FailingSystem::failed() const { return armed.failed == nullptr ? "" : armed.failed; }
void FailingSystem::begin() {
  armed = {.parts = parts_, .at = at_, .lasts = lasts_, .action = action_ ? &action_ : nullptr};
}
void FailingSystem::end() { armed.parts = 0; }

void guard_blocks(size_t most) {
  slots =
      static_cast<uint8_t*>(mmap(nullptr, kSlot * kSlots, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
  most_bytes = most;
}
HGLOBAL new_guarded(const void* bytes, size_t size) {
  HGLOBAL block = GlobalAlloc(GHND, size);
  std::memcpy(GlobalLock(block), bytes, size);
  GlobalUnlock(block);
  return block;
}
void* lock_guarded(HGLOBAL block) { return GlobalLock(block); }
void unlock_guarded(HGLOBAL block) { GlobalUnlock(block); }
void free_guarded(HGLOBAL block) { GlobalFree(block); }

Holdings Holdings::now() {
  Holdings held;
  const std::filesystem::directory_iterator files("/proc/self/fd");
  held.files = std::distance(begin(files), std::filesystem::directory_iterator());
  held.blocks = live_blocks.load();
  return held;
}

long resident_bytes() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

}  // namespace check
