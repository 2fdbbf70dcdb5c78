// A participant: a process that performs one operation after the other for the driver. worker.cpp has main(); each participant
// defines `prepare`.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "peers/picture.h"

namespace peers {

// Does the operation once, making and freeing its result, and returns whether it succeeded.
using Work = std::function<bool()>;

// Converts the picture to the participant's own form; not timed. Empty if there is no comparable operation. `scratch`
// names a bitmap file that kLoad finds and kSave may write.
Work prepare(const Workload& workload, const Picture& picture, const std::string& scratch);

// Owns what a C library returned.
template <class Object, class Free>
std::shared_ptr<Object> own(Object* object, Free free) {
  return {object, free};
}

}  // namespace peers
