#include "kernels/bilevel/functions.h"

namespace vorel::kernels::VOREL_LEVEL {

extern const BilevelTable bilevel_table;
const BilevelTable bilevel_table = {dither, halftone};

}  // namespace vorel::kernels::VOREL_LEVEL
