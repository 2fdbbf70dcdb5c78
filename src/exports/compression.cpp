// Run-length compression of packed DIBs.
#include <vorel32.h>

#include "exports/boundary.h"
#include "formats/dib_compression.h"
#include "frame/thread_context.h"
#include "platform/user.h"

using namespace vorel;

namespace {

HGLOBAL converted_handle(HGLOBAL dib, Result<OwnedDib> (*convert)(const LockedDib&)) {
  return at_boundary(ThreadCode{}, [&]() -> Result<HGLOBAL> {
    const auto source = LockedDib::lock(dib);
    if (!source) return Error::kParameter;
    const WaitCursor cursor;
    OwnedDib result = VOREL_TRY(convert(*source));
    set_thread_error(Error::kNone);  // a quirk that is kept: most exports leave the code alone
    return result.release();
  });
}

}  // namespace

extern "C" {

HGLOBAL VORELCALL CompressDIB(HGLOBAL dib) { return converted_handle(dib, formats::compressed); }
HGLOBAL VORELCALL ExpandCompressedDIB(HGLOBAL dib) { return converted_handle(dib, formats::expanded); }

}  // extern "C"
