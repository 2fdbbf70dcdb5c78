// Exported by every loader of ours.
#include <type_traits>

#include "common/describe.h"
#include "common/entry.h"

CODEC_ENTRY BOOL VORELCALL DescribeOnly(BITMAPINFOHEADER* header) { return codec::describe_only(header) ? TRUE : FALSE; }

static_assert(std::is_same_v<decltype(&DescribeOnly), ImgDescribeOnly>);
