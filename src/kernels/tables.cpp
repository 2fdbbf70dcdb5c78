// The accessors of each family's table.
#include "kernels/bilevel/bilevel.h"
#include "kernels/filter/filter.h"
#include "kernels/rle/rle.h"
#include "kernels/scale/scale.h"
#include "kernels/tone/tone.h"
#include "kernels/turn/turn.h"

// Declares a family's table of each level and defines the accessor, which chooses among them.
#define VOREL_KERNEL_TABLE(Table, family)                    \
  namespace vorel::kernels {                                 \
  namespace sse2 {                                           \
  extern const Table family##_table;                         \
  }                                                          \
  namespace sse41 {                                          \
  extern const Table family##_table;                         \
  }                                                          \
  namespace avx2 {                                           \
  extern const Table family##_table;                         \
  }                                                          \
  namespace avx512 {                                         \
  extern const Table family##_table;                         \
  }                                                          \
  const Table& family(CpuLevel level) {                      \
    switch (level) {                                         \
      case CpuLevel::kAvx512: return avx512::family##_table; \
      case CpuLevel::kAvx2: return avx2::family##_table;     \
      case CpuLevel::kSse41: return sse41::family##_table;   \
      default: return sse2::family##_table;                  \
    }                                                        \
  }                                                          \
  }

VOREL_KERNEL_TABLE(TurnTable, turn)
VOREL_KERNEL_TABLE(ScaleTable, scale)
VOREL_KERNEL_TABLE(ToneTable, tone)
VOREL_KERNEL_TABLE(FilterTable, filter)
VOREL_KERNEL_TABLE(BilevelTable, bilevel)
VOREL_KERNEL_TABLE(RleTable, rle)
