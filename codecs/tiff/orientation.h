// Pictures whose rows do not run from the top left corner of the page.
#pragma once

#include "common/dib.h"

namespace codec {

// A DIB that shows a stored picture upright. `orientation` is the TIFF number; any number but 2 to 8 leaves the picture as it is.
// `description` describes the upright page. Throws Failure.
HGLOBAL upright(LoadedDib stored, const Description& description, int orientation);

// The description of the upright page, from the stored picture's.
Description upright(Description stored, int orientation);

}  // namespace codec
