// Error diffusion and halftoning.
#include <vorel32.h>

#include "bilevel/dib_bilevel.h"
#include "exports/boundary.h"
#include "platform/user.h"

using namespace vorel;

namespace {

// The errors for two kinds of wrong handle.
struct WrongHandle {
  Error null, dead;
};

constexpr WrongHandle kUsual = {Error::kParameter, Error::kLock}, kOdd = {Error::kLock, Error::kMemory};

HGLOBAL dithered_handle(HGLOBAL dib, int bits, kernels::Dithering method, WrongHandle wrong) {
  return at_boundary(ThreadCode{}, [&]() -> Result<HGLOBAL> {
    const bool makes_indices =
        method == kernels::Dithering::kFloydSteinberg || method == kernels::Dithering::kJarvisJudiceNinke;
    if (bits != 1 && bits != 4 && !(bits == 8 && makes_indices)) return Error::kParameter;
    if (dib == nullptr) return wrong.null;
    auto source = LockedDib::lock(dib);
    if (!source) return wrong.dead;
    const WaitCursor cursor;
    auto result = released(bilevel::dithered(*source, bits, method));
    if (result) set_thread_error(Error::kNone);
    return result;
  });
}

}  // namespace

extern "C" {

HGLOBAL VORELCALL DitherFS4(HGLOBAL dib, int bits) {
  return dithered_handle(dib, bits, kernels::Dithering::kFloydSteinberg, kUsual);
}
HGLOBAL VORELCALL DitherJJN(HGLOBAL dib, int bits) {
  return dithered_handle(dib, bits, kernels::Dithering::kJarvisJudiceNinke, kOdd);
}
HGLOBAL VORELCALL DitherSmooth(HGLOBAL dib, int bits) {
  return dithered_handle(dib, bits, kernels::Dithering::kSmooth, kOdd);
}
HGLOBAL VORELCALL DitherSharp(HGLOBAL dib, int bits) { return dithered_handle(dib, bits, kernels::Dithering::kSharp, kOdd); }

HGLOBAL VORELCALL Halftone(HGLOBAL dib, WORD method, int brightness, WORD* error) {
  return at_boundary(FailureVariable(error), [&]() -> Result<HGLOBAL> {
    constexpr auto kLastMethod = static_cast<WORD>(kernels::HalftoneMethod::kOrdered);
    if (dib == nullptr || method > kLastMethod) return Error::kParameter;
    auto source = LockedDib::lock(dib);
    if (!source) return Error::kMemory;
    const WaitCursor cursor;
    return released(bilevel::halftoned(*source, static_cast<kernels::HalftoneMethod>(method), brightness));
  });
}

}  // extern "C"
