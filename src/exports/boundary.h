// The boundary between C++ and the callers: results become return values, errors are reported the way each export reports
// them, no exception passes, and arithmetic does not depend on the caller.
#pragma once

#include <cstdint>
#include <exception>
#include <type_traits>
#include <utility>

#include "frame/error.h"
#include "frame/thread_context.h"
#include "frame/usual_arithmetic.h"

namespace vorel {

// Most exports: the thread's error code.
struct ThreadCode {
  void report(Error error) const { set_thread_error(error); }
};

// A caller's variable that is 0 unless the operation fails.
class ClearedVariable {
 public:
  explicit ClearedVariable(int32_t* variable) : variable_(variable) { write(Error::kNone); }
  void report(Error error) const {
    if (error != Error::kUnreported) write(error);
  }

 private:
  void write(Error error) const {
    if (variable_ != nullptr) *variable_ = static_cast<int32_t>(error);
  }

  int32_t* variable_;
};

// A caller's variable, of 16 or 32 bits, that only a failure writes to.
template <class Integer>
class FailureVariable {
 public:
  explicit FailureVariable(Integer* variable) : variable_(variable) {}
  void report(Error error) const {
    if (variable_ != nullptr && error != Error::kUnreported) *variable_ = static_cast<Integer>(error);
  }

 private:
  Integer* variable_;
};

// Reports in two ways.
template <class First, class Second>
class Both {
 public:
  Both(First first, Second second) : first_(first), second_(second) {}
  void report(Error error) const {
    first_.report(error);
    second_.report(error);
  }

 private:
  First first_;
  Second second_;
};

// The value of a body that succeeds.
template <class Body>
using BoundaryValue = std::decay_t<decltype(*std::declval<Body>()())>;

// Runs an export's body, which returns a Result, and returns its value or, on failure, zero unless the export has another
// value for it.
//
// Stops only exceptions: the unwinding that ends a thread without a context may pass through here.
template <class Report, class Body>
BoundaryValue<Body> at_boundary(Report how, Body&& body, BoundaryValue<Body> failure = {}) {
  const UsualArithmetic arithmetic;
  Error error = Error::kMemory;
  try {
    auto result = std::forward<Body>(body)();
    if (result) return std::move(*result);
    error = result.error();
  } catch (const std::exception&) {
    // Here the standard library's own types fail only when memory is short.
  }
  how.report(error);
  return failure;
}

// The same for exports without error reports.
template <class Body>
auto at_silent_boundary(Body&& body) {
  struct Nobody {
    void report(Error) const {}
  };
  return at_boundary(Nobody{}, std::forward<Body>(body));
}

// The same for work without a result.
template <class Work>
void quietly(Work work) {
  at_silent_boundary([&]() -> Result<bool> {
    work();
    return true;
  });
}

// Runs an operation that makes a GDI object and hands the object to the caller.
template <class Make>
auto object_for_caller(Make make) {
  using Handle = decltype(make()->get());
  return at_boundary(ThreadCode{}, [&]() -> Result<Handle> {
    auto made = make();
    if (!made) return made.error();
    return made->release();
  });
}

}  // namespace vorel
