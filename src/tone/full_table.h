// The layout of operations that read 256 colours from the table's start, even where a shorter table is followed by rows.
#pragma once

#include "core/layout.h"

namespace vorel::tone {

inline constexpr uint32_t kTableColors = 256;
inline constexpr LayoutRule kReadsFullTable = {.least_colors = kTableColors};

}  // namespace vorel::tone
