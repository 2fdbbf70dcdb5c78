// Exported by all our savers.
#include <type_traits>

#include "common/entry.h"

// OutputFile fails for each write that fails, down to closing the file, and savers pass that on.
CODEC_ENTRY BOOL VORELCALL ReportsFailedWrites(void) { return TRUE; }

static_assert(std::is_same_v<decltype(&ReportsFailedWrites), ImgReportsFailedWrites>);
