// The library's memory for each thread, and its lifetime.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "frame/error.h"

namespace vorel {

// A thread's memory is one block: this header, then one slot for each state that a subsystem keeps per thread.
struct ImgThreadContext {
  int32_t error_code;
};

// The calling thread's context, made on its first use. A thread that cannot have one is ended: every operation reports
// through the context, so no other way is left.
ImgThreadContext& thread_context();

// Stores why an operation of the calling thread failed. kUnreported leaves the code as it is.
void set_thread_error(Error error);

// A place in every thread's block. The frame knows its size, and how to create and destroy its content.
class ThreadSlot {
 public:
  struct Content {
    size_t bytes;
    void (*create)(void* at);
    void (*destroy)(void* at);
  };

  ThreadSlot(const ThreadSlot&) = delete;
  ThreadSlot& operator=(const ThreadSlot&) = delete;

 protected:
  static constexpr size_t kAlignment = 8;

  explicit ThreadSlot(const Content& content) noexcept;
  ~ThreadSlot() = default;

  void* of_this_thread() const;

 private:
  friend class ThreadBlock;

  Content content_;
  size_t offset_;
  const ThreadSlot* next_;
};

// A subsystem's own state for each thread, initialised with the defaults of `State`. Declare it at namespace scope: every
// slot gets its place before the first block is made.
template <class State>
class PerThread : ThreadSlot {
 public:
  PerThread() noexcept
      : ThreadSlot(
            {sizeof(State), [](void* at) { new (at) State{}; }, [](void* at) { static_cast<State*>(at)->~State(); }}) {
    static_assert(alignof(State) <= kAlignment);
  }

  State& operator*() const { return *static_cast<State*>(of_this_thread()); }
  State* operator->() const { return &**this; }
};

// The notices that the system sends to a module; the values are the system's.
enum class ModuleNotice : uint32_t { kProcessDetach = 0, kProcessAttach = 1, kThreadAttach = 2, kThreadDetach = 3 };

// Follows a notice and returns whether it is accepted; unknown ones are not.
//   repeats_notices  the system is of the family (Windows 9x) that attaches and detaches a process twice: the second notice
//                    of each kind is refused
bool follow_module_notice(ModuleNotice notice, bool repeats_notices);

}  // namespace vorel
