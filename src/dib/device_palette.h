// Logical palettes: of a DIB, and of the screen.
#pragma once

#include <vector>

#include "dib/packed_dib.h"
#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel {

// Unreported failure for a DIB without colours.
Result<OwnedPalette> palette_of(const LockedDib& dib);

// The screen's system palette entries.
Result<OwnedPalette> screen_palette();

// The colour that the screen shows for each entry of its system palette.
Result<std::vector<Rgb>> screen_colors();

}  // namespace vorel
