#include "common/describe.h"

#include <atomic>
#include <cstdint>
#ifndef _WIN32
#include <pthread.h>
#endif

namespace codec {
namespace {

// Never 0.
uintptr_t current_thread() {
#ifdef _WIN32
  return GetCurrentThreadId();
#else
  return pthread_self();
#endif
}

std::atomic<uintptr_t> describing_thread = 0;
BITMAPINFOHEADER* header_of_thread = nullptr;

}  // namespace

bool describe_only(BITMAPINFOHEADER* header) {
  const uintptr_t self = current_thread();
  uintptr_t expected = 0;
  if (header != nullptr) {
    if (!describing_thread.compare_exchange_strong(expected, self)) return false;
    header_of_thread = header;
    return true;
  }
  expected = self;
  describing_thread.compare_exchange_strong(expected, 0);
  return true;
}

BITMAPINFOHEADER* wanted_header() { return describing_thread == current_thread() ? header_of_thread : nullptr; }

}  // namespace codec
