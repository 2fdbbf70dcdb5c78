// What the viewer remembers from one run to the next.
#pragma once

#include "viewer/logic/recent_files.h"

namespace vorel::viewer {

// Kept in the user's own folder. What cannot be read is empty; what cannot be written is lost.
RecentFiles load_recent_files();
void save_recent_files(const RecentFiles& files);

}  // namespace vorel::viewer
