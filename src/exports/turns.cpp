// Quarter turns and mirrors of packed DIBs.
#include <vorel32.h>

#include "dib/packed_dib.h"
#include "exports/boundary.h"
#include "geometry/dib_turn.h"
#include "platform/user.h"

using namespace vorel;
using vorel::geometry::DibTurn;

namespace {

HGLOBAL turned_handle(HGLOBAL dib, DibTurn turn) {
  return at_silent_boundary([&]() -> Result<HGLOBAL> {
    const LockedDib source = VOREL_TRY(or_error(LockedDib::lock(dib), Error::kUnreported));
    const WaitCursor cursor;
    return released(geometry::turned(source, turn));
  });
}

}  // namespace

extern "C" {

HGLOBAL VORELCALL RotateDIB90(HGLOBAL dib) { return turned_handle(dib, DibTurn::kClockwise); }
HGLOBAL VORELCALL RotateDIB180(HGLOBAL dib) { return turned_handle(dib, DibTurn::kHalf); }
HGLOBAL VORELCALL RotateDIB270(HGLOBAL dib) { return turned_handle(dib, DibTurn::kCounterClockwise); }
HGLOBAL VORELCALL FlipDIBVertical(HGLOBAL dib) { return turned_handle(dib, DibTurn::kTopBottom); }
HGLOBAL VORELCALL FlipDIBHorizontal(HGLOBAL dib) { return turned_handle(dib, DibTurn::kLeftRight); }

}  // extern "C"
