#include "kernels/turn/functions.h"

namespace vorel::kernels::VOREL_LEVEL {

extern const TurnTable turn_table;
const TurnTable turn_table = {quarter_turn,      row_to_column, half_turn, mirror_left_right,
                              mirror_top_bottom, rotate,        skew_rows, skew_columns};

}  // namespace vorel::kernels::VOREL_LEVEL
