#include "kernels/scale/functions.h"

namespace vorel::kernels::VOREL_LEVEL {

extern const ScaleTable scale_table;
const ScaleTable scale_table = {scale_colors, scale_levels, scale_nearest};

}  // namespace vorel::kernels::VOREL_LEVEL
