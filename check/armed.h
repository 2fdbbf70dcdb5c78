// The choice of calls that fail, on both systems.
#pragma once

#include <functional>
#include <utility>

#include "check/system.h"

namespace check {

struct Armed {
  unsigned parts = 0;  // 0: no call is counted
  long at = 0, seen = 0;
  bool lasts = false;
  const char* failed = nullptr;
  const std::function<void()>* action = nullptr;  // runs instead of a failure

  // Counts a call and returns whether it fails. While the action runs, no call is counted.
  bool meets(SystemPart part, const char* function) {
    if ((parts & part) == 0) return false;
    ++seen;
    const bool now = at != 0 && (lasts ? seen >= at : seen == at);
    if (now && failed == nullptr) failed = function;
    if (now && action != nullptr) {
      const Armed before = std::exchange(*this, Armed{});
      (*before.action)();
      *this = before;
      return false;
    }
    return now;
  }
};

}  // namespace check
