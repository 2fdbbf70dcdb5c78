// How large a page may be.
#pragma once

#include <cstdint>
#include <limits>

#include "core/header.h"

namespace vorel::cli {

struct Limits {
  uint64_t pixels = std::numeric_limits<uint64_t>::max();  // of a page
  uint64_t bytes = std::numeric_limits<uint64_t>::max();   // of a page and its successor: what a step has in memory

  bool are_set() const { return pixels != Limits().pixels || bytes != Limits().bytes; }

  // Throws programs::Problem, which names limit and need, for a picture of this header.
  void check(const DibHeader& header) const;
};

}  // namespace vorel::cli
