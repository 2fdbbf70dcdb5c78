// The calling thread's zoom steps.
#include <algorithm>

#include <vorel32.h>

#include "display/zoom_ratio.h"

using namespace vorel::display;

namespace {

bool is_missing_or_valid(const int* table, int base) {
  return table == nullptr ||
         is_step_table(std::span<const int, IMG_ZOOM_TABLE_ENTRIES>(table, IMG_ZOOM_TABLE_ENTRIES), base);
}

void copy_table(const int* from, int* to) { std::copy_n(from, IMG_ZOOM_TABLE_ENTRIES, to); }

}  // namespace

extern "C" {

int VORELCALL BZoomSetScaleSteps(int base, const int* enlarge, const int* reduce) {
  constexpr int kMostBase = 1000;
  if (base < 1 || base > kMostBase) return 0;
  if (!is_missing_or_valid(enlarge, base) || !is_missing_or_valid(reduce, base)) return 0;
  ZoomTables& tables = thread_zoom_tables();
  if (enlarge != nullptr) copy_table(enlarge, tables.enlarge);
  if (reduce != nullptr) copy_table(reduce, tables.reduce);
  tables.base = base;
  return 1;
}

int VORELCALL BZoomGetScaleSteps(int* enlarge, int* reduce) {
  const ZoomTables& tables = thread_zoom_tables();
  if (enlarge != nullptr) copy_table(tables.enlarge, enlarge);
  if (reduce != nullptr) copy_table(tables.reduce, reduce);
  return tables.base;
}

}  // extern "C"
