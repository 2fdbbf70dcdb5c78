// The dialog that runs a file of steps over many files.
#pragma once

#include <filesystem>

#include "viewer/system.h"

namespace vorel::viewer {

// Runs "vorel batch", which lies beside the viewer.
//   folder  that is offered
void run_batch(HWND owner, const std::filesystem::path& folder);

}  // namespace vorel::viewer
