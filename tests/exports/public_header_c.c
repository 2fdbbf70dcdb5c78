/* The public header as a C99 program sees it. */
#include <vorel32.h>

int palette_bytes_seen_from_c(void);

int palette_bytes_seen_from_c(void) {
  BITMAPINFOHEADER header = {0};
  header.biSize = sizeof header;
  header.biBitCount = 4;
  return (int)PaletteSize(&header);
}
