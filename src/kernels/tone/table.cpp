#include "kernels/tone/functions.h"

namespace vorel::kernels::VOREL_LEVEL {

extern const ToneTable tone_table;
const ToneTable tone_table = {map_bytes, look_up_colors, gray_rows, expand_bits, count_square, slide_square};

}  // namespace vorel::kernels::VOREL_LEVEL
