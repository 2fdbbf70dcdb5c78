// Writes red.wmf and red.emf with a library that writes metafiles: two inches by one, the left half red, the right half blue.
#include <stdlib.h>
#include <uemf.h>
#include <uwmf.h>

static void write_wmf(void) {
  WMFTRACK* track;
  WMFHANDLES* handles;
  if (wmf_start("red.wmf", 1000, 250, &track) != 0 || wmf_htable_create(8, 8, &handles) != 0) exit(1);
  U_PAIRF inches = {2, 1};
  wmf_header_append((U_METARECORD*)U_WMRHEADER_set(&inches, 96), track, U_REC_FREE);
  wmf_append((U_METARECORD*)U_WMRSETWINDOWEXT_set(point16_set(192, 96)), track, U_REC_FREE);
  for (int half = 0; half < 2; ++half) {
    const U_COLORREF color = half == 0 ? U_RGB(255, 0, 0) : U_RGB(0, 0, 255);
    uint32_t brush;
    wmf_append((U_METARECORD*)wcreatebrushindirect_set(&brush, handles, U_WLOGBRUSH_set(U_BS_SOLID, color, 0)), track,
               U_REC_FREE);
    wmf_append((U_METARECORD*)wselectobject_set(brush, handles), track, U_REC_FREE);
    const U_RECT16 rect = {96 * half, 0, 96 * half + 96, 96};
    wmf_append((U_METARECORD*)U_WMRRECTANGLE_set(rect), track, U_REC_FREE);
  }
  wmf_append((U_METARECORD*)U_WMREOF_set(), track, U_REC_FREE);
  if (wmf_finish(track) != 0) exit(1);
  wmf_free(&track);
}

static void write_emf(void) {
  EMFTRACK* track;
  EMFHANDLES* handles;
  if (emf_start("red.emf", 1000, 250, &track) != 0 || emf_htable_create(8, 8, &handles) != 0) exit(1);
  // A device of 4 dots a millimetre.
  U_SIZEL device = {1280, 1024}, millimetres = {320, 256};
  const U_RECTL bounds = {0, 0, 203, 101}, frame = {0, 0, 5080, 2540};
  emf_append((PU_ENHMETARECORD)U_EMRHEADER_set(bounds, frame, NULL, 0, NULL, device, millimetres, 0), track, U_REC_FREE);
  for (int half = 0; half < 2; ++half) {
    const U_COLORREF color = half == 0 ? U_RGB(255, 0, 0) : U_RGB(0, 0, 255);
    uint32_t brush;
    emf_append((PU_ENHMETARECORD)createbrushindirect_set(&brush, handles, logbrush_set(U_BS_SOLID, color, 0)), track,
               U_REC_FREE);
    emf_append((PU_ENHMETARECORD)selectobject_set(brush, handles), track, U_REC_FREE);
    const U_RECTL rect = {102 * half, 0, 102 * half + 102, 102};
    emf_append((PU_ENHMETARECORD)U_EMRRECTANGLE_set(rect), track, U_REC_FREE);
  }
  emf_append((PU_ENHMETARECORD)U_EMREOF_set(0, NULL, track), track, U_REC_FREE);
  if (emf_finish(track, handles) != 0) exit(1);
  emf_free(&track);
}

int main(void) {
  write_wmf();
  write_emf();
  return 0;
}
