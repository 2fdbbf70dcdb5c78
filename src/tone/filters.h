// Filters pictures with square kernels.
#pragma once

#include "kernels/filter/filter.h"
#include "tone/target.h"

namespace vorel::tone {

// Filters an 8-bit picture, whose pixels count as grey levels whatever their colours.
Result<HGLOBAL> filtered_gray(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel, Where where);

// Filters the intensity of a 24-bit picture and adds its change to every component.
Result<HGLOBAL> filtered_color(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel,
                               kernels::Intensity intensity, Where where);

}  // namespace vorel::tone
