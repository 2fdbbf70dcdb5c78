// Impossible sizes, counts and offsets in blocks of a few hundred bytes that end before a page without access: nothing outside the
// block is touched, and every call returns.
#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "check/drivers.h"
#include "check/report.h"
#include "check/row.h"
#include "check/system.h"
#ifdef _WIN32
#include "check/device.h"
#endif

namespace check {
namespace {

constexpr int kSizes[] = {0,          1,          2,         -1,         -2,           7,          40,
                          255,        256,        0x7FFF,    0x8000,     0xFFFF,       0x10000,    0x10001,
                          0xFFFFFF,   0x1000000,  0x1000001, 0x1FFFFFFF, 0x20000000,   0x20000001, 0x3FFFFFFF,
                          0x40000000, 0x7FFFFFFE, INT32_MAX, INT32_MIN,  INT32_MIN + 1};

class Draw {
 public:
  explicit Draw(uint64_t seed) : random_(static_cast<std::minstd_rand::result_type>(seed % 2'147'483'646 + 1)) {
    random_.discard(3);
  }

  template <class Value, size_t kCount>
  Value one_of(const Value (&values)[kCount]) {
    return values[random_() % kCount];
  }
  int between(int low, int high) { return low + static_cast<int>(random_() % static_cast<uint64_t>(high - low + 1)); }
  // One of the table, or a usual one.
  int size() { return between(0, 2) == 0 ? between(1, 40) : one_of(kSizes); }

  // A header and bytes behind it.
  test::Bytes picture() {
    constexpr int kDepths[] = {1, 4, 8, 24, 1, 4, 8, 24, 0, 2, 16, 32, 33, 255, 0xFFFF};
    BITMAPINFOHEADER header = test::header_for(size(), size(), one_of(kDepths));
    if (between(0, 3) == 0) header.biClrUsed = static_cast<uint32_t>(size());
    if (between(0, 3) == 0) header.biSizeImage = static_cast<uint32_t>(size());
    if (between(0, 5) == 0) header.biCompression = static_cast<uint32_t>(between(0, 5));
    if (between(0, 9) == 0) header.biXPelsPerMeter = size(), header.biYPelsPerMeter = size();
    if (between(0, 19) == 0) header.biSize = static_cast<uint32_t>(size());
    test::Bytes rest(static_cast<size_t>(between(0, 29)) * 16 + 8);
    for (uint8_t& byte : rest) byte = static_cast<uint8_t>(random_());
    return test::with_header(header, rest);
  }

 private:
  std::minstd_rand random_;
};

// A call of an export with a picture and drawn numbers; results are freed.
struct SizedCall {
  const char* name;
  void (*call)(HGLOBAL dib, Draw& draw);
};

void release(HGLOBAL block, HGLOBAL dib) {
  if (block != nullptr && block != dib) free_guarded(block);
}

template <auto kFunction>
void of_picture(HGLOBAL dib, Draw&) {
  if constexpr (std::is_same_v<decltype(kFunction(dib)), HGLOBAL>)
    release(kFunction(dib), dib);
  else
    kFunction(dib);
}
template <auto kFunction, int... kBits>
void dither(HGLOBAL dib, Draw& draw) {
  constexpr int kChoices[] = {kBits...};
  release(kFunction(dib, draw.one_of(kChoices)), dib);
}

// A bitmap file with a drawn picture in it, and a name for a file to be written.
std::string picture_file(Draw& draw) {
  static const test::TempFolder folder;
  std::string path = folder.path("picture.bmp");
  test::write_file(path, test::file_of(draw.picture()));
  return path;
}
std::string saved_file() {
  static const test::TempFolder folder;
  return folder.path("saved");
}

#ifdef _WIN32
HWND window() {
  static const test::ActiveWindow window;
  return window.get();
}
POINT point(Draw& draw) { return {draw.size(), draw.size()}; }
RECT rectangle(Draw& draw) { return {draw.size(), draw.size(), draw.size(), draw.size()}; }
#endif

const SizedCall kCalls[] = {
    {"SetImgError", [](HGLOBAL, Draw& draw) { SetImgError(draw.size()); }},
    {"ImgErrorString",
     [](HGLOBAL, Draw& draw) {
       char text[IMG_MESSAGE_BYTES];
       ImgErrorString(text, draw.size());
     }},
    {"GetImageVersion",
     [](HGLOBAL, Draw& draw) {
       char text[20];
       GetImageVersion(text, std::min<int>(draw.size(), sizeof text));
     }},
    {"LoadDIBFromFile", [](HGLOBAL dib, Draw& draw) { release(LoadDIBFromFile(picture_file(draw).c_str()), dib); }},
    {"LoadImageIntoDIB",
     [](HGLOBAL dib, Draw& draw) {
       int status = 0;
       release(LoadImageIntoDIB(picture_file(draw).c_str(), draw.size(), &status), dib);
     }},
    {"SaveDIB", [](HGLOBAL dib, Draw&) { SaveDIB(saved_file().c_str(), dib); }},
    {"SaveDIBInImageFormat",
     [](HGLOBAL dib, Draw& draw) {
       constexpr int kFormats[] = {IMG_FORMAT_BITMAP, IMG_FORMAT_TIFF, IMG_FORMAT_PCX,  IMG_FORMAT_DCX,
                                   IMG_FORMAT_GIF,    IMG_FORMAT_TGA,  IMG_FORMAT_CALS, IMG_FORMAT_JPEG};
       SaveDIBInImageFormat(saved_file().c_str(), dib, draw.one_of(kFormats), draw.between(0, 1), draw.size());
     }},
    {"PaletteSize",
     [](HGLOBAL dib, Draw&) {
       PaletteSize(lock_guarded(dib));
       unlock_guarded(dib);
     }},
    {"InvertDIBPalette", of_picture<InvertDIBPalette>},
    {"InvertMonoDIB", of_picture<InvertMonoDIB>},
    {"CompressDIB", of_picture<CompressDIB>},
    {"ExpandCompressedDIB", of_picture<ExpandCompressedDIB>},
    {"RotateDIB90", of_picture<RotateDIB90>},
    {"RotateDIB180", of_picture<RotateDIB180>},
    {"RotateDIB270", of_picture<RotateDIB270>},
    {"FlipDIBVertical", of_picture<FlipDIBVertical>},
    {"FlipDIBHorizontal", of_picture<FlipDIBHorizontal>},
    {"RotateDIB",
     [](HGLOBAL dib, Draw& draw) {
       int status = 0, corners[8];
       release(RotateDIB(dib, draw.size(), draw.between(0, 1), &status, corners), dib);
     }},
    {"SkewDIB",
     [](HGLOBAL dib, Draw& draw) {
       int error = 0, corners[8];
       release(SkewDIB(dib, draw.between(0, 1), draw.size(), &error, corners), dib);
     }},
    {"ScaleDIB",
     [](HGLOBAL dib, Draw& draw) {
       release(ScaleDIB(dib, draw.between(0, 1), static_cast<unsigned>(draw.size()), static_cast<unsigned>(draw.size())),
               dib);
     }},
    {"ScaleGrayDIB",
     [](HGLOBAL dib, Draw& draw) {
       release(ScaleGrayDIB(dib, draw.size(), draw.size(), draw.size(), draw.size(), draw.between(0, 1)), dib);
     }},
    {"CutDIB",
     [](HGLOBAL dib, Draw& draw) {
       HGLOBAL first = nullptr, second = nullptr;
       if (CutDIB(dib, draw.size(), &first, &second)) release(first, dib), release(second, dib);
     }},
    {"ComputeHistogram",
     [](HGLOBAL dib, Draw& draw) {
       const HGLOBAL histogram = ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr);
       const int origin[] = {draw.size(), draw.size()};
       int error = 0;
       ComputeHistogram(dib, IMG_COMPUTE, histogram, origin, &error);
       ComputeHistogram(nullptr, IMG_FREE, histogram, nullptr, &error);
     }},
    {"ComputeLUT",
     [](HGLOBAL dib, Draw& draw) {
       int error = 0;
       const HGLOBAL table = ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, &error);
       ComputeLUT(dib, IMG_COMPUTE, table, draw.size(), draw.size(), &error);
       release(ApplyLUT(dib, table, 1, &error), dib);
       ComputeLUT(nullptr, IMG_FREE, table, 0, 0, &error);
     }},
    {"ApplyLUT",
     [](HGLOBAL dib, Draw& draw) {
       int error = 0;
       release(ApplyLUT(dib, dib, draw.between(0, 1), &error), dib);
     }},
    {"ColorBrightnessContrast",
     [](HGLOBAL dib, Draw& draw) {
       release(ColorBrightnessContrast(dib, static_cast<short>(draw.between(-100, 100)), static_cast<short>(draw.size())),
               dib);
     }},
    {"Convert8to24", of_picture<Convert8to24>},
    {"Convolve",
     [](HGLOBAL dib, Draw& draw) {
       int error = 0;
       release(Convolve(dib, draw.between(0, 1), draw.between(3, 6), draw.between(2, 7), nullptr, nullptr, &error), dib);
     }},
    {"ColorConvolution",
     [](HGLOBAL dib, Draw& draw) {
       int error = 0;
       release(ColorConvolution(dib, draw.between(0, 1), draw.between(0, 2), static_cast<short>(draw.between(3, 6)),
                                draw.size(), nullptr, nullptr, &error),
               dib);
     }},
    {"ConvColorDIBtoGrayscale",
     [](HGLOBAL dib, Draw& draw) { release(ConvColorDIBtoGrayscale(dib, draw.between(0, 2), draw.between(0, 1)), dib); }},
    {"ConvMonoDIBtoGrayscale",
     [](HGLOBAL dib, Draw& draw) { release(ConvMonoDIBtoGrayscale(dib, draw.between(0, 2)), dib); }},
    {"CleanImage",
     [](HGLOBAL dib, Draw& draw) { release(CleanImage(dib, draw.between(20, 100), draw.between(0, 1)), dib); }},
    {"DitherFS4", dither<DitherFS4, 1, 4, 8>},
    {"DitherJJN", dither<DitherJJN, 1, 4, 8>},
    {"DitherSmooth", dither<DitherSmooth, 1, 4>},
    {"DitherSharp", dither<DitherSharp, 1, 4>},
    {"Halftone",
     [](HGLOBAL dib, Draw& draw) {
       WORD error = 0;
       release(Halftone(dib, static_cast<WORD>(draw.between(0, 2)), draw.size(), &error), dib);
     }},
    {"BZoomSetScaleSteps",
     [](HGLOBAL, Draw& draw) {
       std::array<int, IMG_ZOOM_TABLE_ENTRIES> table{};
       for (int& entry : table) entry = draw.size();
       BZoomSetScaleSteps(draw.size(), table.data(), table.data());
     }},
#ifdef _WIN32
    {"CreateDIBPalette", [](HGLOBAL dib, Draw&) { DeleteObject(CreateDIBPalette(dib)); }},
    {"ConvertDIBToBitmap", [](HGLOBAL dib, Draw&) { DeleteObject(ConvertDIBToBitmap(dib)); }},
    {"M_CalcRect",
     [](HGLOBAL, Draw& draw) {
       int zoom[] = {draw.size(), draw.size(), draw.size(), draw.size()};
       RECT rect{};
       M_CalcRect(draw.size(), draw.size(), zoom, &rect);
     }},
    {"DisplayDIBStart",
     [](HGLOBAL dib, Draw& draw) {
       ImgDisplayState state{};
       int view[] = {draw.size(), draw.size(), 0, 0};
       const int zoom[] = {draw.size(), draw.size(), draw.size(), draw.size()}, position[] = {draw.size(), draw.size()};
       DisplayDIBStart(window(), dib, view, zoom, static_cast<UINT>(draw.size()) & 0x16E8, &state);
       DisplaySetScrollPos(window(), &state, position);
       DisplayWmHorzScroll(window(), static_cast<WPARAM>(draw.between(0, 8)), 0, &state);
       DisplayWmVertScroll(window(), static_cast<WPARAM>(draw.between(0, 8)), 0, &state);
       DisplayWmSize(window(), 0, draw.size(), &state);
       InvalidateRect(window(), nullptr, FALSE);
       DisplayWmPaint(window(), &state);
       DisplayWmDestroy(window(), 0, 0, &state);
     }},
    {"DisplayCPPImage",
     [](HGLOBAL dib, Draw& draw) {
       const int zoom[] = {draw.size(), draw.size(), draw.size(), draw.size()};
       int scroll[] = {draw.size(), draw.size(), draw.size(), draw.size()};
       SetLowMemStretch(draw.between(0, 1));
       InvalidateRect(window(), nullptr, FALSE);
       DisplayCPPImage(window(), dib, scroll, zoom, static_cast<WORD>(draw.one_of(kSizes) & 0x28));
       DisplayCPPSize(window(), dib, scroll, zoom, 0);
       DisplayCPPHScroll(window(), static_cast<WPARAM>(draw.between(0, 8)), 0, dib, scroll, zoom, 0);
       DisplayCPPVScroll(window(), static_cast<WPARAM>(draw.between(0, 8)), 0, dib, scroll, zoom, 0);
       DisplayDIBImage(window(), dib, scroll, zoom, 0);
       SetLowMemStretch(0);
     }},
    {"BZoomStep",
     [](HGLOBAL dib, Draw& draw) {
       ImgDisplayState state{};
       ImgZoomTracker tracker{};
       const RECT ratio = rectangle(draw);
       const POINT end = point(draw);
       DisplayDIBStart(window(), dib, nullptr, nullptr, 0, &state);
       BZoomStep(window(), &ratio, 0x20 + draw.between(1, 5), &tracker, &state);
       BZoomEnd(window(), &end, &tracker, &state);
       DisplayWmDestroy(window(), 0, 0, &state);
     }},
    {"BZoomScreenStep",
     [](HGLOBAL, Draw& draw) {
       ImgZoomTracker tracker{};
       ImgScreenZoom state{draw.size(), draw.size(), rectangle(draw), rectangle(draw)};
       const RECT ratio = rectangle(draw);
       const POINT start = point(draw), end = point(draw);
       BZoomScreenStep(window(), &ratio, 0x20 + draw.between(1, 5), &tracker, &state);
       BZoomStart(window(), &start, &ratio, 0x10 + draw.between(1, 5), &tracker, FALSE);
       BZoomUpdate(window(), &end, &tracker);
       BZoomScreenEnd(window(), &end, &tracker, &state);
       ReleaseCapture();
     }},
    {"M_StretchBitmap",
     [](HGLOBAL, Draw& draw) {
       static const auto bitmap = test::counting_bitmap(20, 20, 1);
       M_SetSizes(draw.size(), draw.size());
       M_StartMagnify(window(), nullptr);
       M_StretchBitmap(bitmap.get(), draw.size(), draw.size(), draw.size(), draw.size());
       M_CopyBitmap(window(), draw.size(), draw.size());
       M_StopMagnify();
     }},
    {"CombineBMP",
     [](HGLOBAL, Draw& draw) {
       const auto owned = test::counting_bitmap(20, 20, 1), source = test::counting_bitmap(20, 20, 1);
       HBITMAP target = owned.get();
       CombineBMP(draw.size(), draw.size(), &target, source.get(), nullptr, draw.between(0, 1));
     }},
    {"CombineDIB",
     [](HGLOBAL dib, Draw& draw) {
       const test::Bytes picture = draw.picture();
       HGLOBAL target = new_guarded(picture.data(), picture.size());
       CombineDIB(draw.size(), draw.size(), &target, dib, nullptr, draw.between(0, 1));
       free_guarded(target);
     }},
    {"DrawMetaFileIntoBitmap",
     [](HGLOBAL, Draw& draw) {
       static const HMETAFILE metafile = DeviceInputs::make_metafile();
       DeleteObject(DrawMetaFileIntoBitmap(metafile, draw.size(), draw.size(), FALSE));
     }},
    {"SaveDIBIntoMetaFile", [](HGLOBAL dib, Draw&) { SaveDIBIntoMetaFile(saved_file().c_str(), dib); }},
    {"SaveDIBIntoEnhMetaFile", [](HGLOBAL dib, Draw&) { SaveDIBIntoEnhMetaFile(saved_file().c_str(), dib); }},
    {"LoadASCIIIntoBitmap", [](HGLOBAL dib, Draw&) { DeleteObject(LoadASCIIIntoBitmap(dib)); }},
    {"PrintDIBPage", [](HGLOBAL dib, Draw& draw) { PrintDIBPage(dib, nullptr, 0, draw.size(), draw.size(), draw.size()); }},
#endif
};

}  // namespace

int check_sizes(const Arguments& arguments) {
  const long calls = arguments.number(0, 150'000), seed = arguments.number(1, 1), mib = arguments.number(2, 1),
             from = arguments.number(3, 0);
  Report report;
  keep_jpeg_loaded();
  guard_blocks(static_cast<size_t>(mib) << 20);
  for (long i = from; i < calls; ++i) {
    Draw draw(static_cast<uint64_t>(seed) * 1'000'003 + static_cast<uint64_t>(i));
    const SizedCall& call = kCalls[static_cast<size_t>(i) % std::size(kCalls)];
    at_work(call.name, i);
    const test::Bytes picture = draw.picture();
    const HGLOBAL dib = new_guarded(picture.data(), picture.size());
    call.call(dib, draw);
    free_guarded(dib);
    report.count();
  }
  return report.end();
}

}  // namespace check
