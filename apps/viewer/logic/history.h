// Undo and redo.
#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <utility>

namespace vorel::viewer {

// States are cheap to copy: they share large parts.
template <class State>
class History {
 public:
  explicit History(State first = {}, bool is_saved = true) : saved_(is_saved ? 0 : kNever) {
    states_.push_back(std::move(first));
  }

  const State& now() const { return states_[at_]; }

  // Drops the undone states.
  void change(State state) {
    states_.resize(at_ + 1);
    if (saved_ > at_) saved_ = kNever;
    states_.push_back(std::move(state));
    ++at_;
    if (at_ > kMostSteps) drop_first();
  }

  // Replaces the state without a step.
  void amend(State state) { states_[at_] = std::move(state); }

  bool can_undo() const { return at_ > 0; }
  bool can_redo() const { return at_ + 1 < states_.size(); }
  void undo() { --at_; }
  void redo() { ++at_; }

  template <class Is>
  bool any(Is is) const {
    return std::ranges::any_of(states_, is);
  }

  bool is_saved() const { return saved_ == at_; }
  void set_saved() { saved_ = at_; }

 private:
  static constexpr size_t kMostSteps = 20, kNever = static_cast<size_t>(-1);

  void drop_first() {
    states_.pop_front();
    --at_;
    saved_ = saved_ == 0 || saved_ == kNever ? kNever : saved_ - 1;
  }

  std::deque<State> states_;
  size_t at_ = 0, saved_;
};

}  // namespace vorel::viewer
