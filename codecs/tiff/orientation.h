// Pictures whose rows do not run from the top left corner of the page.
#pragma once

#include "common/dib.h"

namespace codec {

// A DIB that shows a stored picture upright. `orientation` is by TIFF number; layout is that of the stored picture.
HGLOBAL upright(NewDib& stored, const Layout& layout, int orientation);

}  // namespace codec
