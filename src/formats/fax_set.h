// Colour fax page sets: a text that lists the files of a page's colour planes.
#pragma once

#include "core/view.h"
#include "frame/error.h"
#include "platform/win32.h"

namespace vorel::formats {

struct LoadRequest;

// Number of pages of a file that does not state it.
inline constexpr int kUnknownPages = -1;

Result<int> pages_in_fax_set(const char* path);

Result<HGLOBAL> load_fax_page(const LoadRequest& request);

// Sets bit 8 >> plane of each 4-bit pixel where the 1-bit picture of the same size has a set bit.
void merge_plane(ConstDibView bits, DibView merged, int plane);

}  // namespace vorel::formats
