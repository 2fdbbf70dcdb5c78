// Turning and mirroring packed DIBs.
#pragma once

#include "dib/packed_dib.h"
#include "frame/error.h"

namespace vorel::geometry {

// Named by their visible effect; rows are stored bottom-up.
enum class DibTurn { kClockwise, kHalf, kCounterClockwise, kTopBottom, kLeftRight };

// A new DIB with the picture turned. Every failure is unreported.
Result<OwnedDib> turned(const LockedDib& source, DibTurn turn);

}  // namespace vorel::geometry
