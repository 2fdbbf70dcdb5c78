// Scaling by area.
#pragma once

#include "common/picture.h"

namespace vorel::programs {

// Of a workable picture. Depth and colour table stay: see Resampling::kArea in operations.h.
Picture scaled_by_area(const Picture& picture, Size size);

}  // namespace vorel::programs
