#pragma once

#include "platform/win32.h"

namespace vorel {

// The module's handle, for its resources.
HINSTANCE module_instance();

}  // namespace vorel
