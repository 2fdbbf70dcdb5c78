// Removes specks and fills holes.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/filter/filter.h"

namespace vorel::tone {

// A cleaned copy of a grey picture of 1 or 8 bits, with as many bytes as the source. `level` is from 20 to 100. Every failure is
// kUnreported.
Result<OwnedDib> cleaned(const LockedDib& source, int level, kernels::Reach reach);

}  // namespace vorel::tone
