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
ImgDescription* description_of_thread = nullptr;

}  // namespace

bool describe_only(ImgDescription* description) {
  const uintptr_t self = current_thread();
  uintptr_t expected = 0;
  if (description != nullptr) {
    if (!describing_thread.compare_exchange_strong(expected, self)) return false;
    description_of_thread = description;
    return true;
  }
  expected = self;
  describing_thread.compare_exchange_strong(expected, 0);
  return true;
}

ImgDescription* wanted_description() { return describing_thread == current_thread() ? description_of_thread : nullptr; }

}  // namespace codec
