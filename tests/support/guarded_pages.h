// Memory between two pages without access.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace test {

// Whole pages with room for a number of bytes, filled with zeros.
class GuardedPages {
 public:
  explicit GuardedPages(size_t bytes) : room_((bytes + page() - 1) / page() * page() + 2 * page()) {
#ifdef _WIN32
    memory_ = static_cast<uint8_t*>(VirtualAlloc(nullptr, room_, MEM_RESERVE, PAGE_NOACCESS));
    is_there_ = memory_ != nullptr &&
                (bytes == 0 || VirtualAlloc(begin(), room_ - 2 * page(), MEM_COMMIT, PAGE_READWRITE) != nullptr);
#else
    void* memory = mmap(nullptr, room_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    memory_ = static_cast<uint8_t*>(memory);
    is_there_ = mprotect(begin(), room_ - 2 * page(), PROT_READ | PROT_WRITE) == 0;
#endif
  }
  GuardedPages(const GuardedPages&) = delete;
  GuardedPages& operator=(const GuardedPages&) = delete;
  ~GuardedPages() {
    if (memory_ == nullptr) return;
#ifdef _WIN32
    VirtualFree(memory_, 0, MEM_RELEASE);
#else
    munmap(memory_, room_);
#endif
  }

  // False when memory is short.
  explicit operator bool() const { return is_there_; }

  uint8_t* begin() const { return memory_ + page(); }
  uint8_t* end() const { return memory_ + room_ - page(); }

 private:
  static size_t page() {
#ifdef _WIN32
    return 4096;
#else
    static const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return size;
#endif
  }

  size_t room_;
  uint8_t* memory_ = nullptr;
  bool is_there_ = false;
};

}  // namespace test
