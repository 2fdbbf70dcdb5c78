#include "platform/thread_slot.h"

#include <atomic>
#include <optional>
#include <pthread.h>

namespace vorel::thread_slot {
namespace {

using FreeBlock = void (*)(HGLOBAL);
std::atomic<FreeBlock> free_block;  // the same for every block

// When a thread ends, the system runs the key's destructor, repeatedly while calls from other destructors make new blocks.
// The key is never deleted, so that calls at the end of the process still find it, and the shared object stays loaded.
const std::optional<pthread_key_t>& slot() {
  static const std::optional<pthread_key_t> made = []() -> std::optional<pthread_key_t> {
    pthread_key_t key{};
    if (pthread_key_create(&key, [](void* block) { free_block.load()(block); }) != 0) return std::nullopt;
    return key;
  }();
  return made;
}

}  // namespace

bool create() { return slot().has_value(); }

void destroy() {}

HGLOBAL get() { return slot() ? pthread_getspecific(*slot()) : nullptr; }

bool set(HGLOBAL block, FreeBlock free) {
  free_block = free;
  return slot() && pthread_setspecific(*slot(), block) == 0;
}

void end_thread() { pthread_exit(nullptr); }

}  // namespace vorel::thread_slot
