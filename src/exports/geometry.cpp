// Turning by any angle, skewing, scaling and cutting.
#include <vorel32.h>

#include "exports/boundary.h"
#include "geometry/dib_cut.h"
#include "geometry/dib_rotation.h"
#include "geometry/dib_scaling.h"
#include "geometry/dib_skew.h"
#include "platform/user.h"

using namespace vorel;

namespace {

// Locks a DIB, runs `work` on it and hands the new DIB out.
Result<HGLOBAL> made_from(HGLOBAL dib, Error no_handle, Error no_lock, auto&& work) {
  if (dib == nullptr) return no_handle;
  const LockedDib source = VOREL_TRY(or_error(LockedDib::lock(dib), no_lock));
  const WaitCursor cursor;
  return released(work(source));
}

kernels::Interpolation interpolation_of(int mode) {
  return mode == 0 ? kernels::Interpolation::kLinear : kernels::Interpolation::kCubic;
}

}  // namespace

extern "C" {

HGLOBAL VORELCALL RotateDIB(HGLOBAL dib, int angle, int method, int* status, int* corners) {
  return at_boundary(ClearedVariable(status), [&] {
    return made_from(dib, Error::kTurnParameter, Error::kTurnLock, [&](const LockedDib& source) {
      return geometry::rotated(source, angle, method == 1 ? kernels::Stepping::kInteger : kernels::Stepping::kExact,
                               corners);
    });
  });
}

HGLOBAL VORELCALL SkewDIB(HGLOBAL dib, int direction, int offset, int* error, int* corners) {
  set_thread_error(Error::kNone);
  return at_boundary(Both(ThreadCode{}, FailureVariable(error)), [&] {
    return made_from(dib, Error::kParameter, Error::kLock, [&](const LockedDib& source) {
      const auto moved = direction != 0 ? geometry::SkewDirection::kRows : geometry::SkewDirection::kColumns;
      return geometry::skewed(source, moved, offset, corners);
    });
  });
}

HGLOBAL VORELCALL ScaleDIB(HGLOBAL dib, int mode, unsigned width, unsigned height) {
  return at_boundary(ThreadCode{}, [&] {
    return made_from(dib, Error::kParameter, Error::kMemory, [&](const LockedDib& source) {
      return geometry::scaled(source, interpolation_of(mode), width, height);
    });
  });
}

HGLOBAL VORELCALL ScaleGrayDIB(HGLOBAL dib, int width, int height, int x_factor, int y_factor, int mode) {
  return at_boundary(ThreadCode{}, [&] {
    return made_from(dib, Error::kParameter, Error::kMemory, [&](const LockedDib& source) {
      return geometry::magnified(source, {width, height}, x_factor, y_factor, interpolation_of(mode));
    });
  });
}

BOOL VORELCALL CutDIB(HGLOBAL dib, int line, HGLOBAL* first, HGLOBAL* second) {
  return at_silent_boundary([&]() -> Result<bool> {
    const LockedDib source = VOREL_TRY(or_error(LockedDib::lock(dib), Error::kUnreported));
    if (first == nullptr || second == nullptr) return Error::kUnreported;
    const WaitCursor cursor;
    return geometry::cut(source, line, {first, second});
  });
}

}  // extern "C"
