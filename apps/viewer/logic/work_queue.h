// Work on other threads, the most urgent first.
#pragma once

#include <array>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vorel::viewer {

class WorkQueue {
 public:
  // kNow has a thread of its own, so that it never waits for the others.
  enum class Urgency { kNow, kSoon, kSometime };
  using Work = std::function<void()>;  // throws nothing

  WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;
  ~WorkQueue();  // waits for work that has begun, and drops the rest

  void add(Urgency urgency, Work work);
  void drop(Urgency urgency);  // work that has not begun

 private:
  static constexpr size_t kUrgencies = 3;

  void run(size_t urgencies);
  std::deque<Work>* next(size_t urgencies);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::array<std::deque<Work>, kUrgencies> waiting_;
  bool is_ending_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace vorel::viewer
