#include "platform/thread_slot.h"

#include <pthread.h>

namespace vorel::thread_slot {
namespace {

struct Holder {
  HGLOBAL block = nullptr;
  Holder() = default;
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() { GlobalFree(block); }
};

thread_local Holder holder;

}  // namespace

bool create() { return true; }

void destroy() {}

HGLOBAL get() { return holder.block; }

bool set(HGLOBAL block) {
  holder.block = block;
  return true;
}

void end_thread() { pthread_exit(nullptr); }

}  // namespace vorel::thread_slot
