// Calls of the exports that need no windowing system.
#include "check/row.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace check {
namespace {

#ifdef _WIN32
HFILE open_to_read(const char* path) { return _lopen(path, OF_READ); }
void close_file(HFILE file) { _lclose(file); }
#else
HFILE open_to_read(const char* path) { return open(path, O_RDONLY | O_CLOEXEC); }
void close_file(HFILE file) { close(file); }
#endif

constexpr HGLOBAL kNone = nullptr;
constexpr int* kNoNumbers = nullptr;

void message(Stage& s) {
  char text[IMG_MESSAGE_BYTES] = "";
  s.take(static_cast<int>(s.call(ImgErrorString, text, 4) == text));
  s.note(text, sizeof text);
}

template <int kLength>
void version(Stage& s) {
  char text[20] = "";
  s.call(GetImageVersion, text, kLength);
  s.note(text, sizeof text);
}

void palette_size(Stage& s) {
  BITMAPINFOHEADER header = test::header_for(30, 20, 8);
  s.take(s.call(PaletteSize, &header));
}

void read_info(Stage& s) {
  const HFILE file = open_to_read(s.file("a.bmp"));
  s.take(s.call(ReadDIBInfo, file));
  close_file(file);
}

template <auto kFunction, int kDepth>
void in_place(Stage& s) {
  HGLOBAL copy = s.fresh(kDepth);
  if constexpr (std::is_void_v<decltype(kFunction(copy))>)
    s.call(kFunction, copy);
  else
    s.take(s.call(kFunction, copy));
  s.note_block(copy);
  GlobalFree(copy);
}

template <bool kIsThere>
void load_bitmap_file(Stage& s) {
  s.take(s.call(LoadDIBFromFile, kIsThere ? s.file("a.bmp") : s.missing()));
}

void save_dib(Stage& s) {
  const std::string path = s.target("saved.bmp");
  s.take(s.call(SaveDIB, path.c_str(), s.dib(8)));
  s.note_file(path);
}
void save_dib_nowhere(Stage& s) { s.take(s.call(SaveDIB, s.in_no_folder(), s.dib(8))); }

void format_of(Stage& s, const char* name) { s.take(s.call(GetImageFormat, s.file(name))); }
void load_image(Stage& s, const char* name) {
  int status = kUntouched;
  s.take(s.call(LoadImageIntoDIB, s.file(name), 1, &status));
  s.status(status);
}
template <int kFormat, int kDepth>
void save_image(Stage& s, const char* name) {
  const std::string path = s.target(name);
  s.take(s.call(SaveDIBInImageFormat, path.c_str(), s.dib(kDepth), kFormat, 0, 0));
  s.note_file(path);
}

template <bool kIsThere>
void load_page(Stage& s) {
  int status = kUntouched;
  s.take(s.call(LoadColorFaxPage, kIsThere ? s.file("a.fax") : s.missing(), 1, &status));
  s.status(status);
}

template <int kDepth>
void rotate(Stage& s) {
  int status = kUntouched;
  int corners[8] = {};
  s.take(s.call(RotateDIB, kDepth == 0 ? nullptr : s.dib(kDepth), 17, 1, &status, corners));
  s.status(status);
  s.note(corners, sizeof corners);
}

// Exact positions, in a picture that is large enough for their rounding to show.
void rotate_exactly(Stage& s) {
  int status = kUntouched;
  s.take(s.call(RotateDIB, s.large_dib(), 33, 0, &status, nullptr));
  s.status(status);
}
void scale_large(Stage& s) { s.take(s.call(ScaleDIB, s.large_dib(), 1, 177u, 111u)); }

template <int kDepth>
void skew(Stage& s) {
  int error = kUntouched;
  int corners[8] = {};
  s.take(s.call(SkewDIB, kDepth == 0 ? nullptr : s.dib(kDepth), 1, 5, &error, corners));
  s.status(error);
  s.note(corners, sizeof corners);
}

template <int kLine>
void cut(Stage& s) {
  HGLOBAL first = nullptr, second = nullptr;
  const BOOL done = s.call(CutDIB, s.dib(8), kLine, &first, &second);
  s.take(done);
  if (done == FALSE) return;
  for (HGLOBAL part : {first, second}) s.note_block(part), GlobalFree(part);
}

void count_pixels(Stage& s) {
  const int origin[] = {0, 0};
  int error = kUntouched;
  GlobalFree(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr));  // forgets the last square
  s.take(static_cast<int>(s.call(ComputeHistogram, s.dib(8), IMG_COMPUTE, s.histogram(), origin, &error) != nullptr));
  s.status(error);
  s.note_block(s.histogram());
}
template <auto kOperation>
void histogram_block(Stage& s) {
  int error = kUntouched;
  s.take(s.call(ComputeHistogram, kNone, kOperation, kNone, kNoNumbers, &error));
  s.status(error);
}

template <int kOperation>
void table_block(Stage& s) {
  int error = kUntouched;
  s.take(s.call(ComputeLUT, kNone, kOperation, kNone, 10, 10, &error));
  s.status(error);
}

template <int kDepth>
void apply(Stage& s) {
  int error = kUntouched;
  s.take(s.call(ApplyLUT, kDepth == 0 ? nullptr : s.dib(kDepth), s.table(), 1, &error));
  s.status(error);
}

template <int kDepth, int kType>
void convolve(Stage& s) {
  int error = kUntouched;
  s.take(s.call(Convolve, kDepth == 0 ? nullptr : s.dib(kDepth), 1, kType, 3, kType == 2 ? s.file("a.kernel") : nullptr,
                kNoNumbers, &error));
  s.status(error);
}

template <int kDepth>
void convolve_color(Stage& s) {
  int error = kUntouched;
  s.take(s.call(ColorConvolution, kDepth == 0 ? nullptr : s.dib(kDepth), 1, 1, 3, 3, nullptr, nullptr, &error));
  s.status(error);
}

template <WORD kMethod, int kDepth>
void halftone(Stage& s) {
  WORD error = kUntouched;
  s.take(s.call(Halftone, kDepth == 0 ? nullptr : s.dib(kDepth), kMethod, 5, &error));
  s.status(error);
}

template <int kBase>
void set_steps(Stage& s) {
  const int enlarge[11] = {3, 10, 20, 40}, reduce[11] = {2, 10, 30};
  s.take(s.call(BZoomSetScaleSteps, kBase, enlarge, reduce));
}
void get_steps(Stage& s) {
  int enlarge[11] = {}, reduce[11] = {};
  const int table[11] = {2, 10, 30};
  BZoomSetScaleSteps(10, table, table);
  s.take(s.call(BZoomGetScaleSteps, enlarge, reduce));
  s.note(enlarge, sizeof enlarge);
  s.note(reduce, sizeof reduce);
}

}  // namespace

std::vector<Row> plain_good_rows() {
  return {
      Row("ImgError", of<ImgError>),
      Row("SetImgError", of<SetImgError, 7>).with_code(7),
      Row("ImgErrorString", message),
      Row("GetImageVersion", version<20>).fails(),
      Row("PaletteSize", palette_size),
      Row("ReadDIBInfo", read_info).leaves({kCodeBefore, IMG_E_FILE_IO}).is(kPartOfFile),
      Row("InvertDIBPalette", in_place<InvertDIBPalette, 8>),
      Row("InvertMonoDIB", in_place<InvertMonoDIB, 1>).fails().is(kMaySucceed),
      Row("LoadDIBFromFile", load_bitmap_file<true>)
          .leaves({kCodeBefore, IMG_E_OPEN_FILE, IMG_E_FILE_IO})
          .is(kSlow | kPartOfFile),
      Row("SaveDIB", save_dib).leaves({IMG_E_MEMORY, IMG_E_LOCK, IMG_E_OPEN_FILE, IMG_E_FILE_IO}).is(kSlow | kPartOfFile),
      Row("GetImageFormat", [](Stage& s) { format_of(s, "a.tif"); }).is(kSlow),
      Row("LoadImageIntoDIB, bitmap file", [](Stage& s) { load_image(s, "a.bmp"); })
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_OPEN_FILE, IMG_E_FILE_IO})
          .writes({kUntouched, 9})
          .is(kSlow | kPartOfFile),
      Row("LoadImageIntoDIB, TIFF", [](Stage& s) { load_image(s, "a.tif"); })
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({kUntouched, 9})
          .is(kSlow | kPartOfFile),
      Row("LoadImageIntoDIB, PCX", [](Stage& s) { load_image(s, "a.pcx"); })
          .with_status(0)
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({1, 3, 4, 9, IMG_E_LOCK, kUntouched})
          .is(kSlow),
      Row("LoadImageIntoDIB, DCX", [](Stage& s) { load_image(s, "a.dcx"); })
          .with_status(0)
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({1, 3, 4, 9, IMG_E_LOCK, kUntouched})
          .is(kSlow),
      Row("LoadImageIntoDIB, GIF", [](Stage& s) { load_image(s, "a.gif"); })
          .with_status(0)
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({1, 3, 4, 9, IMG_E_LOCK, kUntouched})
          .is(kSlow),
      Row("LoadImageIntoDIB, TGA", [](Stage& s) { load_image(s, "a.tga"); })
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({kUntouched, 9})
          .is(kSlow),
      Row("LoadImageIntoDIB, CALS", [](Stage& s) { load_image(s, "a.cal"); })
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({kUntouched, 9})
          .is(kSlow),
      Row("LoadImageIntoDIB, JPEG", [](Stage& s) { load_image(s, "a.jpg"); })
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({kUntouched, 9})
          .is(kSlow),
      Row("LoadImageIntoDIB, PNG", [](Stage& s) { load_image(s, "a.png"); })
          .with_status(0)
          .leaves({kCodeBefore, IMG_E_FORMAT, IMG_E_MEMORY})
          .writes({1, 3, 4, 9, IMG_E_LOCK, kUntouched})
          .is(kSlow),
      Row("SaveDIBInImageFormat, TIFF", [](Stage& s) { save_image<IMG_FORMAT_TIFF, 8>(s, "saved.tif"); })
          .leaves({kCodeBefore, IMG_E_MEMORY})
          .is(kSlow),
      Row("SaveDIBInImageFormat, PCX", [](Stage& s) { save_image<IMG_FORMAT_PCX, 8>(s, "saved.pcx"); })
          .leaves({kCodeBefore, IMG_E_MEMORY})
          .is(kSlow),
      Row("SaveDIBInImageFormat, DCX", [](Stage& s) { save_image<IMG_FORMAT_DCX, 8>(s, "saved.dcx"); })
          .leaves({kCodeBefore, IMG_E_MEMORY})
          .is(kSlow),
      Row("SaveDIBInImageFormat, GIF", [](Stage& s) { save_image<IMG_FORMAT_GIF, 8>(s, "saved.gif"); })
          .leaves({kCodeBefore, IMG_E_MEMORY})
          .is(kSlow),
      Row("SaveDIBInImageFormat, TGA", [](Stage& s) { save_image<IMG_FORMAT_TGA, 24>(s, "saved.tga"); })
          .leaves({kCodeBefore, IMG_E_MEMORY})
          .is(kSlow),
      Row("SaveDIBInImageFormat, CALS", [](Stage& s) { save_image<IMG_FORMAT_CALS, 1>(s, "saved.cal"); })
          .leaves({kCodeBefore, IMG_E_MEMORY})
          .is(kSlow),
      Row("SaveDIBInImageFormat, JPEG", [](Stage& s) { save_image<IMG_FORMAT_JPEG, 24>(s, "saved.jpg"); })
          .leaves({kCodeBefore, IMG_E_MEMORY})
          .is(kSlow),
      Row("CompressDIB", of_dib<CompressDIB, 8>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_PARAMETER}),
      Row("ExpandCompressedDIB", [](Stage& s) { s.take(s.call(ExpandCompressedDIB, s.compressed_dib())); })
          .with_code(0)
          .leaves({IMG_E_MEMORY, IMG_E_PARAMETER}),
      Row("GetNumberOfImagesInFaxFile", [](Stage& s) { s.take(1 + s.call(GetNumberOfImagesInFaxFile, s.file("a.fax"))); })
          .leaves({IMG_E_MEMORY, IMG_E_OPEN_FILE, kCodeBefore})
          .is(kSlow),
      Row("LoadColorFaxPage", load_page<true>)
          .leaves({IMG_E_MEMORY, IMG_E_OPEN_FILE, IMG_E_FILE_IO, IMG_E_FORMAT, kCodeBefore})
          .writes({kUntouched, 3, 9})
          .is(kSlow | kPartOfFile),
      Row("RotateDIB90", of_dib<RotateDIB90, 8>),
      Row("RotateDIB180", of_dib<RotateDIB180, 4>),
      Row("RotateDIB270", of_dib<RotateDIB270, 1>),
      Row("FlipDIBVertical", of_dib<FlipDIBVertical, 24>),
      Row("FlipDIBHorizontal", of_dib<FlipDIBHorizontal, 8>),
      Row("RotateDIB", rotate<8>).with_status(0).writes({503, 505}),
      Row("RotateDIB, exact positions", rotate_exactly).with_status(0).writes({503, 505}).is(kSlow),
      Row("ScaleDIB, cubic", scale_large).leaves({IMG_E_MEMORY}).is(kSlow),
      Row("SkewDIB", skew<8>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_LOCK}).writes({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("ScaleDIB", of_dib<ScaleDIB, 8, 1, 20, 30>).leaves({IMG_E_MEMORY}),
      Row("ScaleDIB, 1 bit", of_dib<ScaleDIB, 1, 1, 20, 30>).leaves({IMG_E_MEMORY, kCodeBefore}),
      Row("ScaleGrayDIB", of_dib<ScaleGrayDIB, 8, 20, 10, 2, 2, 0>).leaves({IMG_E_MEMORY}),
      Row("CutDIB", cut<7>),
      Row("ComputeHistogram", count_pixels).with_status(0).writes({IMG_E_LOCK, IMG_E_MEMORY}),
      Row("ComputeHistogram, new block", histogram_block<IMG_ALLOCATE>).with_status(0).writes({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("ComputeLUT", table_block<IMG_ALLOCATE>).with_status(0).writes({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("ApplyLUT", apply<8>).with_status(0).writes({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("ColorBrightnessContrast", of_dib<ColorBrightnessContrast, 24, 9, 9>)
          .with_code(0)
          .leaves({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("Convert8to24", of_dib<Convert8to24, 8>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("Convolve", convolve<8, 3>).with_status(0).writes({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("Convolve, kernel from a file", convolve<8, 2>)
          .with_status(0)
          .writes({IMG_E_MEMORY, IMG_E_LOCK, IMG_E_PARAMETER})
          .is(kSlow),
      Row("ColorConvolution", convolve_color<24>).with_status(0).writes({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("ConvColorDIBtoGrayscale", of_dib<ConvColorDIBtoGrayscale, 24, 0, 1>)
          .with_code(0)
          .leaves({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("ConvMonoDIBtoGrayscale", of_dib<ConvMonoDIBtoGrayscale, 1, 1>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_LOCK}),
      Row("CleanImage", [](Stage& s) { s.take(s.call(CleanImage, s.gray_dib(), 50, 1)); }),
      Row("DitherFS4", of_dib<DitherFS4, 24, 4>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_LOCK}).is(kLeavesLock),
      Row("DitherJJN", of_dib<DitherJJN, 8, 1>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_LOCK}).is(kLeavesLock),
      Row("DitherSmooth", of_dib<DitherSmooth, 24, 4>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_LOCK}).is(kLeavesLock),
      Row("DitherSharp", of_dib<DitherSharp, 8, 1>).with_code(0).leaves({IMG_E_MEMORY, IMG_E_LOCK}).is(kLeavesLock),
      Row("Halftone", halftone<2, 8>).writes({IMG_E_MEMORY}).is(kLeavesLock),
      Row("BZoomSetScaleSteps", set_steps<10>),
      Row("BZoomGetScaleSteps", get_steps),
  };
}

std::vector<Row> plain_failing_rows() {
  return {
      Row("ImgError", of<ImgError>),  // cannot fail
      Row("SetImgError", of<SetImgError, 32>),
      Row("ImgErrorString",
          [](Stage& s) {
            char text[IMG_MESSAGE_BYTES] = "";
            s.take(static_cast<int>(s.call(ImgErrorString, text, 99) == text));
            s.note(text, sizeof text);
          }),
      Row("GetImageVersion", version<0>).fails(),
      Row("PaletteSize", of<PaletteSize, nullptr>).fails(),
      Row("ReadDIBInfo", of<ReadDIBInfo, HFILE_ERROR>).fails(IMG_E_PARAMETER),
      Row("InvertDIBPalette", of<InvertDIBPalette, kNone>).fails(),
      Row("InvertMonoDIB", of<InvertMonoDIB, kNone>).fails(),
      Row("LoadDIBFromFile", load_bitmap_file<false>).fails(IMG_E_OPEN_FILE).is(kSlow),
      Row("SaveDIB", [](Stage& s) { s.take(s.call(SaveDIB, s.missing(), kNone)); }).fails(IMG_E_PARAMETER),
      Row("SaveDIB, no folder", save_dib_nowhere).fails(IMG_E_OPEN_FILE).is(kSlow),
      Row("GetImageFormat", [](Stage& s) { s.take(s.call(GetImageFormat, s.missing())); }).fails().is(kSlow),
      Row("LoadImageIntoDIB",
          [](Stage& s) {
            int status = kUntouched;
            s.take(s.call(LoadImageIntoDIB, s.missing(), 1, &status));
            s.status(status);
          })
          .fails(IMG_E_FORMAT, 9)
          .is(kSlow),
      Row("LoadImageIntoDIB, text", [](Stage& s) { load_image(s, "a.txt"); }).fails(IMG_E_FORMAT, 9).is(kSlow),
      Row("SaveDIBInImageFormat",
          [](Stage& s) { s.take(s.call(SaveDIBInImageFormat, s.missing(), kNone, IMG_FORMAT_TIFF, 0, 0)); })
          .fails()
          .is(kSlow),
      Row("CompressDIB", of<CompressDIB, kNone>).fails(IMG_E_PARAMETER),
      Row("ExpandCompressedDIB", of_dib<ExpandCompressedDIB, 8>).fails(IMG_E_PARAMETER),
      Row("GetNumberOfImagesInFaxFile", [](Stage& s) { s.take(1 + s.call(GetNumberOfImagesInFaxFile, s.missing())); })
          .fails(IMG_E_OPEN_FILE)
          .is(kSlow),
      Row("LoadColorFaxPage", load_page<false>).fails(IMG_E_OPEN_FILE, 3).is(kSlow),
      Row("RotateDIB90", of<RotateDIB90, kNone>).fails(),
      Row("RotateDIB180", of<RotateDIB180, kNone>).fails(),
      Row("RotateDIB270", of<RotateDIB270, kNone>).fails(),
      Row("FlipDIBVertical", of<FlipDIBVertical, kNone>).fails(),
      Row("FlipDIBHorizontal", of<FlipDIBHorizontal, kNone>).fails(),
      Row("RotateDIB", rotate<0>).fails(kCodeBefore, 506),
      Row("SkewDIB", skew<0>).fails(IMG_E_PARAMETER, IMG_E_PARAMETER),
      Row("ScaleDIB", of_dib<ScaleDIB, 8, 1, 0, 30>).fails(IMG_E_DIB_SIZE),
      Row("ScaleGrayDIB", of_dib<ScaleGrayDIB, 8, 40, 10, 2, 2, 0>).fails(IMG_E_PARAMETER),
      Row("CutDIB", cut<0>).fails(),
      Row("ComputeHistogram", histogram_block<IMG_COMPUTE>).fails(kCodeBefore, IMG_E_PARAMETER),
      Row("ComputeLUT", table_block<IMG_COMPUTE>).fails(kCodeBefore, IMG_E_PARAMETER),
      Row("ApplyLUT", apply<24>).fails(kCodeBefore, IMG_E_PIXEL_BITS),
      Row("ColorBrightnessContrast", of_dib<ColorBrightnessContrast, 24, 101, 0>).fails(IMG_E_PARAMETER),
      Row("Convert8to24", of_dib<Convert8to24, 24>).fails(IMG_E_NOTHING_TO_CONVERT),
      Row("Convolve", convolve<24, 3>).fails(kCodeBefore, IMG_E_PIXEL_BITS),
      Row("ColorConvolution", convolve_color<8>).fails(kCodeBefore, IMG_E_PIXEL_BITS),
      Row("ConvColorDIBtoGrayscale", of<ConvColorDIBtoGrayscale, kNone, 0, 1>).fails(IMG_E_PARAMETER),
      Row("ConvMonoDIBtoGrayscale", of_dib<ConvMonoDIBtoGrayscale, 8, 1>).fails(IMG_E_COMPRESSED),
      Row("CleanImage", of_dib<CleanImage, 24, 50, 1>).fails(),
      Row("DitherFS4", of_dib<DitherFS4, 24, 3>).fails(IMG_E_PARAMETER),
      Row("DitherJJN", of<DitherJJN, kNone, 1>).fails(IMG_E_LOCK),
      Row("DitherSmooth", of<DitherSmooth, kNone, 1>).fails(IMG_E_LOCK),
      Row("DitherSharp", of<DitherSharp, kNone, 1>).fails(IMG_E_LOCK),
      Row("Halftone", halftone<3, 8>).fails(kCodeBefore, IMG_E_PARAMETER),
      Row("BZoomSetScaleSteps", set_steps<0>).fails(),
      Row("BZoomGetScaleSteps", of<BZoomGetScaleSteps, kNoNumbers, kNoNumbers>),
  };
}

}  // namespace check
