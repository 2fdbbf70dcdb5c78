// Exported by all our loaders.
#include <type_traits>

#include "common/describe.h"
#include "common/entry.h"

CODEC_ENTRY BOOL VORELCALL DescribeOnly(ImgDescription* description) {
  return codec::describe_only(description) ? TRUE : FALSE;
}

static_assert(std::is_same_v<decltype(&DescribeOnly), ImgDescribeOnly>);
