// Histograms and lookup tables in blocks of the caller's, and what a thread remembers of them.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/tone/histogram.h"
#include "kernels/tone/tables.h"

namespace vorel::tone {

// An empty histogram. The thread forgets the square that it counted last.
Result<HGLOBAL> new_histogram();

// Counts the square of an 8-bit picture that is nearest to `asked`. Nothing happens if this thread counted that square last,
// whatever the picture and the histogram were: the histogram is not even locked.
Result<HGLOBAL> counted(const LockedDib& source, HGLOBAL histogram, kernels::Corner asked);

// A lookup table in which each level stays what it is.
Result<HGLOBAL> new_lookup_table();

// Fills a lookup table. The histogram gives the mean level that contrast turns about; null or dead, it is the middle.
Result<HGLOBAL> filled_lookup_table(HGLOBAL table, HGLOBAL histogram, int contrast, int brightness);

// kLock where it is none. Missing entries are 0.
Result<kernels::ComponentTable> read_lookup_table(HGLOBAL table);

}  // namespace vorel::tone
