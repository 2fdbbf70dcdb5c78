// Loaders that only describe.
#pragma once

#include <vorel32.h>

namespace codec {

// Makes the loaders of this thread put the header of a picture there instead of loading it; null makes them load again. False if
// another thread has asked for the same and is not done. Thread-local storage would outlive the module on Windows.
bool describe_only(BITMAPINFOHEADER* header);

// Where this thread wants the header; null while it loads.
BITMAPINFOHEADER* wanted_header();

}  // namespace codec
