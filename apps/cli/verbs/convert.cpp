// vorel convert: load and save.
#include "cli/page_work.h"

namespace vorel::cli {
namespace {

Action declare(Arguments& arguments) {
  arguments.explain(
      "The ending of OUT tells its format: .bmp .tif .png .jpg .gif .pcx .dcx .tga .cal .pnm and, on Windows, .wmf\n"
      ".emf .clp. Without one, and on standard output, it is a Windows bitmap. JPEG gets quality 75, and grey pictures\n"
      "stay grey; GIF keeps at most 256 colours; CALS takes 1 bit per pixel. TIFF, DCX and PNM files hold several pages,\n"
      "others one.\n"
      "KIND is for TIFF none, huffman, g3, g4 (these three for 1 bit per pixel), lzw, jpeg (for 24 bits and greys of 8),\n"
      "deflate or packbits, and without it g4 for 1 bit and deflate else; for TGA it is none (the usual one) or rle, which\n"
      "pictures with a colour table do not get.\n\n"
      "Pixels, colours and resolution stay as they are where the format of OUT has room for them. A bitmap made of\n"
      "a bitmap keeps run-length compression, row order and 16 or 32 bits per pixel too; other formats get 24 bits.\n"
      "Transparent pixels of IN become white. Metafiles too large to be drawn come out smaller, at the resolution of\n"
      "that size.",
      "  vorel convert scan.tif scan.png\n"
      "  vorel convert fax.tif page3.bmp --page 3\n"
      "  vorel convert fax.tif page.png --numbered      (makes page-1.png, page-2.png, ...)\n"
      "  vorel convert page.bmp page.tif --compression g4 --dpi 300 --overwrite\n"
      "  vorel convert - - --to png < scan.tif > scan.png");
  const auto work = std::make_shared<PageWork>();
  work->declare_files(arguments);
  work->declare_dpi(arguments);
  work->declare_options(arguments, PageWork::Reports::kNever);
  return [work](const Streams& streams) { return work->run([](Page&) {}, streams); };
}

}  // namespace

const Verb kConvert{"convert", "Write a picture anew, in the same or another format.", declare};

}  // namespace vorel::cli
