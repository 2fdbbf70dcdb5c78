// Loaders that only describe.
#pragma once

#include <vorel32.h>

namespace codec {

// Makes the loaders of this thread describe a picture there instead of loading it; null makes them load again. False if another
// thread has asked for the same and is not done. Thread-local storage would outlive the module on Windows.
bool describe_only(ImgDescription* description);

// Where this thread wants the description; null while it loads.
ImgDescription* wanted_description();

}  // namespace codec
