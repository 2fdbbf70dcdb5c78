// The border of a codec module: plain C outside, exceptions inside.
#pragma once

#include <exception>

#include <vorel32.h>

#ifdef _WIN32
#define CODEC_ENTRY extern "C" __declspec(dllexport)
#else
#define CODEC_ENTRY extern "C" __attribute__((visibility("default")))
#endif

namespace codec {

// Ends the work on one file. What is thrown inside a callback of a codec library must be caught there: such libraries are C.
struct Failure {
  ImgErrorCode status;
};

[[noreturn]] inline void fail(ImgErrorCode status) { throw Failure{status}; }

// Runs an entry point's body, returns what that returns or zero, and tells `status`, which may be null, how it went.
template <class Body>
auto at_entry(int* status, Body&& body) noexcept -> decltype(body()) {
  int outcome = IMG_OK;
  decltype(body()) result{};
  try {
    result = body();
  } catch (const Failure& failure) {
    outcome = failure.status;
  } catch (const std::exception&) {  // running out of memory is all that the standard library's own types fail at here
    outcome = IMG_E_MEMORY;
  }
  if (status != nullptr) *status = outcome;
  return result;
}

}  // namespace codec
