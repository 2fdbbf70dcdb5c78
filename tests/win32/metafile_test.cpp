#include <gtest/gtest.h>
#include <vorel32.h>
#include "support/heap.h"
#include "win32/support/gdi.h"
#include "win32/support/imports.h"
#include "win32/support/message_box.h"
using namespace test;
namespace {
TEST(X, Y) {
  setvbuf(stdout, 0, _IONBF, 0);
  const ActiveWindow window;
  TempFolder folder;
  for (int i = 1; i < 2; ++i)
  for (int depth : {1,24, 4,8}) for (int e : {0,1}) {
    const Bytes pic = noise(48, 24, depth);
    const Block dib = block_of(pic);
    std::string path = folder.path("a.wmf");
    if (e) SaveDIBIntoEnhMetaFile(path.c_str(), dib.get()); else SaveDIBIntoMetaFile(path.c_str(), dib.get());
    HBITMAP b = LoadMetaFileIntoBitmap(path.c_str());
    Bytes back = bytes_of(Block(ConvertBitmapToDIB(b, nullptr)).get());
    std::printf("depth %d e %d: diff %d\n", depth, e, largest_difference(back, pic));
    int bad = 0;
    for (int y = 0; y < 24; ++y) for (int x = 0; x < 48; ++x) { auto a = color_at(back, x, y), c = color_at(pic, x, y); if (memcmp(&a,&c,3) && bad++ < 5) std::printf("(%d,%d) %02x%02x%02x for %02x%02x%02x\n", x, y, a.rgbRed, a.rgbGreen, a.rgbBlue, c.rgbRed, c.rgbGreen, c.rgbBlue); }
    std::printf("bad %d\n", bad);
    Bytes f = read_file(path); if (i == 0) for (size_t k = 0; k < 200; ++k) std::printf("%02x%c", f[k], k % 32 == 31 ? '\n' : ' ');
    DeleteObject(b);
  }
}
}
