// Loaders that only describe.
#pragma once

#include <vorel32.h>

namespace codec {

// Makes the loaders of this thread fill in `description` instead of loading a picture; null makes them load again. False while
// another thread does the same: thread-local storage would outlive the module on Windows.
bool describe_only(ImgDescription* description);

// The description to fill in; null if this thread loads.
ImgDescription* wanted_description();

}  // namespace codec
