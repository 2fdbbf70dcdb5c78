#include "kernels/filter/functions.h"

namespace vorel::kernels::VOREL_LEVEL {

extern const FilterTable filter_table;
const FilterTable filter_table = {convolve_gray, convolve_color, clean_bits, take_rank};

}  // namespace vorel::kernels::VOREL_LEVEL
