// The boundary of a codec module: plain C outside, exceptions inside.
#pragma once

#include <exception>

#include <vorel32.h>

#ifdef _WIN32
#define CODEC_ENTRY extern "C" __declspec(dllexport)
#else
#define CODEC_ENTRY extern "C" __attribute__((visibility("default")))
#endif

// A macro's value as text, for versions that libraries state as numbers.
#define CODEC_TEXT_OF_NUMBER(number) #number
#define CODEC_TEXT_OF(macro) CODEC_TEXT_OF_NUMBER(macro)

namespace codec {

// Aborts the work on one file. Must not pass through a codec library, which is C: callbacks catch their exceptions.
struct Failure {
  ImgErrorCode status;
};

// Ends the work of a loader that only describes (describe.h).
struct Described {};

[[noreturn]] inline void fail(ImgErrorCode status) { throw Failure{status}; }

// Runs an entry point's body. Returns its result, or zero after a failure; the outcome goes to `status`, which may be null.
template <class Body>
auto at_entry(int* status, Body&& body) noexcept -> decltype(body()) {
  int outcome = IMG_OK;
  decltype(body()) result{};
  try {
    result = body();
  } catch (const Failure& failure) {
    outcome = failure.status;
  } catch (const Described&) {
  } catch (const std::exception&) {  // the standard library's types fail here only for lack of memory
    outcome = IMG_E_MEMORY;
  }
  if (status != nullptr) *status = outcome;
  return result;
}

}  // namespace codec
