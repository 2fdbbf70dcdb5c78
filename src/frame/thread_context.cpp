#include "frame/thread_context.h"

#include <utility>

#include "platform/thread_slot.h"
#include "platform/win32.h"

namespace vorel {

// The blocks and their slots. The variables are constant-initialised, so slots can be constructed in any order.
class ThreadBlock {
 public:
  static size_t add(const ThreadSlot& slot) {
    first_slot_ = &slot;
    return std::exchange(bytes_, bytes_ + rounded_up(slot.content_.bytes));
  }

  static const ThreadSlot* first_slot() { return first_slot_; }

  static void create() {
    HGLOBAL block = GlobalAlloc(GPTR, bytes_);  // a fixed block: its handle is its address
    if (block == nullptr) thread_slot::end_thread();
    if (!thread_slot::set(block, free)) {
      GlobalFree(block);
      thread_slot::end_thread();
    }
    for (const ThreadSlot* slot = first_slot_; slot != nullptr; slot = slot->next_)
      slot->content_.create(place(block, *slot));
  }

  static void free(HGLOBAL block) {
    for (const ThreadSlot* slot = first_slot_; slot != nullptr; slot = slot->next_)
      slot->content_.destroy(place(block, *slot));
    GlobalFree(block);
  }

  static void free_own() {
    HGLOBAL block = thread_slot::get();
    if (block == nullptr) return;
    thread_slot::set(nullptr, free);
    free(block);
  }

  static void* place(HGLOBAL block, const ThreadSlot& slot) { return static_cast<std::byte*>(block) + slot.offset_; }

 private:
  static constexpr size_t rounded_up(size_t bytes) {
    return (bytes + ThreadSlot::kAlignment - 1) / ThreadSlot::kAlignment * ThreadSlot::kAlignment;
  }

  static constinit const ThreadSlot* first_slot_;
  static constinit size_t bytes_;
};

constinit const ThreadSlot* ThreadBlock::first_slot_ = nullptr;
constinit size_t ThreadBlock::bytes_ = rounded_up(sizeof(ImgThreadContext));

namespace {

bool attached = false;
bool detached = false;

// Sets a flag and returns whether its notice is accepted.
bool first_notice(bool& flag, bool repeats_notices) {
  const bool refused = repeats_notices && flag;
  flag = true;
  return !refused;
}

}  // namespace

ThreadSlot::ThreadSlot(const Content& content) noexcept : content_(content), next_(ThreadBlock::first_slot()) {
  offset_ = ThreadBlock::add(*this);
}

void* ThreadSlot::of_this_thread() const { return ThreadBlock::place(&thread_context(), *this); }

ImgThreadContext& thread_context() {
  if (thread_slot::get() == nullptr) ThreadBlock::create();
  return *static_cast<ImgThreadContext*>(thread_slot::get());
}

void set_thread_error(Error error) {
  if (error != Error::kUnreported) thread_context().error_code = static_cast<int32_t>(error);
}

bool follow_module_notice(ModuleNotice notice, bool repeats_notices) {
  switch (notice) {
    case ModuleNotice::kProcessAttach: return first_notice(attached, repeats_notices) && thread_slot::create();
    case ModuleNotice::kThreadAttach: ThreadBlock::create(); return true;
    case ModuleNotice::kThreadDetach: ThreadBlock::free_own(); return true;
    case ModuleNotice::kProcessDetach:
      if (!first_notice(detached, repeats_notices)) return false;
      ThreadBlock::free_own();
      thread_slot::destroy();
      return true;
  }
  return false;
}

}  // namespace vorel
