// The Win32 types and the global memory functions. The public header declares both on either build: on Windows they are the
// system's own, on Linux src/platform/posix implements them.
#pragma once

#include <vorel32.h>
