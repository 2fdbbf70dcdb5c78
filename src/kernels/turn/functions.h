// The functions of the table, compiled for one level.
#pragma once

#include "kernels/turn/turn.h"

namespace vorel::kernels::VOREL_LEVEL {

void quarter_turn(ConstDibView source, DibView result, QuarterTurn turn);
void row_to_column(ConstDibView source, DibView result, int column);
void half_turn(ConstDibView source, DibView result);
void mirror_left_right(ConstDibView source, DibView result);
void mirror_top_bottom(ConstDibView source, DibView result);
void rotate(ConstDibView source, DibView result, const Rotation& rotation, Stepping stepping);
void skew_rows(ConstDibView source, DibView result, int32_t offset);
void skew_columns(ConstDibView source, DibView result, int32_t offset);

}  // namespace vorel::kernels::VOREL_LEVEL
