#include "viewer/logic/work_queue.h"

#include <utility>

namespace vorel::viewer {

WorkQueue::WorkQueue() {
  for (const size_t urgencies : {size_t{1}, kUrgencies}) threads_.emplace_back([this, urgencies] { run(urgencies); });
}

WorkQueue::~WorkQueue() {
  {
    const std::lock_guard lock(mutex_);
    is_ending_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void WorkQueue::add(Urgency urgency, Work work) {
  {
    const std::lock_guard lock(mutex_);
    waiting_[static_cast<size_t>(urgency)].push_back(std::move(work));
  }
  changed_.notify_all();
}

void WorkQueue::drop(Urgency urgency) {
  const std::lock_guard lock(mutex_);
  waiting_[static_cast<size_t>(urgency)].clear();
}

// The most urgent of the first kinds that has work; null if none has.
std::deque<WorkQueue::Work>* WorkQueue::next(size_t urgencies) {
  for (size_t i = 0; i < urgencies; ++i)
    if (!waiting_[i].empty()) return &waiting_[i];
  return nullptr;
}

void WorkQueue::run(size_t urgencies) {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [&] { return is_ending_ || next(urgencies) != nullptr; });
    if (is_ending_) return;
    std::deque<Work>& queue = *next(urgencies);
    const Work work = std::move(queue.front());
    queue.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

}  // namespace vorel::viewer
