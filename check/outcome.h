// The result of a call, in a form that can be compared with another run of the same call.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

#include "support/dib.h"

namespace check {

inline constexpr int kCodeBefore = 30;     // The thread's error code before each call.
inline constexpr int kUntouched = 0x7777;  // A status variable before each call.

struct Outcome {
  bool gave = false;        // Whether the call returned something other than zero.
  int code = kCodeBefore;   // The thread's error code after it.
  int status = kUntouched;  // The caller's status variable after it.
  test::Digest content;     // Of the result and of all other output.

  friend bool operator==(const Outcome&, const Outcome&) = default;

  void add(std::span<const uint8_t> bytes) { content.add(bytes); }
  template <class Plain>
  void add_value(const Plain& value) {
    uint8_t bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    add(bytes);
  }
};

}  // namespace check
