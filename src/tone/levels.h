// Maps levels, colour components and colours through tables.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/tone/tables.h"
#include "tone/target.h"

namespace vorel::tone {

// Makes an 8-bit picture grey: each pixel becomes the table's value for the mean of its colour.
Result<HGLOBAL> with_levels(HGLOBAL handle, const LockedDib& source, const kernels::ComponentTable& table, Where where);

// A copy with the colour table, at 4 and 8 bits, or the pixels, at 24, mapped through a table.
Result<OwnedDib> with_components(const LockedDib& source, const kernels::ComponentTable& table);

// A 24-bit copy of an 8-bit picture.
Result<OwnedDib> in_true_color(const LockedDib& source);

}  // namespace vorel::tone
