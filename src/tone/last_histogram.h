// What computing a histogram and a lookup table leaves for the thread's next call.
#pragma once

#include <cstdint>

namespace vorel {

struct LastHistogram {
  int32_t histogram_bytes = 0;               // of a histogram block, once one was allocated
  int32_t histogram_x = 0, histogram_y = 0;  // the square that was counted last
  int32_t table_length = 0;                  // of a lookup table, once one was allocated
};

LastHistogram& last_histogram();

}  // namespace vorel
