// The checks that the operations of this folder make before they start.
#pragma once

#include <initializer_list>

#include "core/header.h"
#include "frame/error.h"

namespace vorel::tone {

// The bits of a width or height that are compared with 0.
enum class SizeBits { kLow16, kAll };

// kNone for an uncompressed picture of one of these depths. Otherwise the first that applies: a header of other than 40 bytes,
// compression, another depth, no width or no height.
Error refusal(const DibHeader& header, std::initializer_list<uint16_t> depths, SizeBits width_bits = SizeBits::kAll,
              SizeBits height_bits = SizeBits::kAll);

}  // namespace vorel::tone
