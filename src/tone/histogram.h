// Histograms and lookup tables in the caller's blocks, and the state of each thread for them.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/tone/histogram.h"
#include "kernels/tone/tables.h"

namespace vorel::tone {

// An empty histogram. Resets the square that the thread counted last.
Result<HGLOBAL> new_histogram();

// Counts the square of an 8-bit picture that is nearest to `asked`. Nothing happens if this thread counted that square last,
// whatever the picture and the histogram were: the histogram is not even locked.
Result<HGLOBAL> counted(const LockedDib& source, HGLOBAL histogram, kernels::Corner asked);

// A lookup table that maps each level to itself.
Result<HGLOBAL> new_lookup_table();

// Fills a lookup table. The histogram gives the mean level, which contrast leaves unchanged; without a live one it is the
// middle.
Result<HGLOBAL> filled_lookup_table(HGLOBAL table, HGLOBAL histogram, int contrast, int brightness);

// kLock for an invalid handle. Missing entries are 0.
Result<kernels::ComponentTable> read_lookup_table(HGLOBAL table);

}  // namespace vorel::tone
