// The module's handle, for its resources.
#pragma once

#include "platform/win32.h"

namespace vorel {

HINSTANCE module_instance();
void set_module_instance(HINSTANCE instance);

}  // namespace vorel
