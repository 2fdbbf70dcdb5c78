// Calls of the exports that need windows, device contexts, palettes or printers.
#include "check/device.h"
#include "check/row.h"

namespace check {
namespace {

constexpr HGLOBAL kNone = nullptr;
constexpr UINT kBars = IMG_DISPLAY_NO_HSCROLL | IMG_DISPLAY_NO_VSCROLL;

// ---- bitmaps

// Calls with the stage's bitmap; the result is a new one.
template <auto kFunction, bool kMono>
void of_bitmap(Stage& s) {
  s.take(s.call(kFunction, kMono ? s.device().mono.get() : s.device().color.get()));
}
// Calls that change a bitmap.
template <auto kFunction>
void change_bitmap(Stage& s) {
  s.device().window();  // one of them needs an active window
  const auto copy = test::counting_bitmap(20, 20, 1);
  s.take(s.call(kFunction, copy.get()));
  s.note(test::bits_of(copy.get()).data(), test::bits_of(copy.get()).size());
}
void bitmap_to_dib(Stage& s) { s.take(s.call(ConvertBitmapToDIB, s.device().mono.get(), s.device().palette.get())); }
void system_palette(Stage& s) {
  RGBQUAD colors[256] = {};
  s.take(s.call(GetSystemPalette, colors));
}
void save_bitmap(Stage& s) {
  const std::string path = s.target("saved.bmp");
  s.take(s.call(SaveBitmap, path.c_str(), s.device().mono.get(), s.device().palette.get()));
  s.note_file(path);
}
void combine_bitmaps(Stage& s) {
  const auto owned = test::counting_bitmap(20, 20, 1);
  HBITMAP target = owned.get();
  s.take(s.call(CombineBMP, 3, 4, &target, s.device().mono.get(), nullptr, 1));
  s.note(test::bits_of(target).data(), test::bits_of(target).size());
}
void combine_dibs(Stage& s) {
  HGLOBAL target = s.fresh(24);
  s.take(s.call(CombineDIB, 3, 4, &target, s.dib(8), nullptr, 0));
  s.note_block(target);
  GlobalFree(target);
}
void combine_no_bitmaps(Stage& s) {
  HBITMAP target = nullptr;
  s.take(s.call(CombineBMP, 0, 0, &target, nullptr, nullptr, 0));
}
void combine_no_dibs(Stage& s) {
  HGLOBAL target = nullptr;
  s.take(s.call(CombineDIB, 0, 0, &target, nullptr, nullptr, 0));
}

// ---- files

void load_clipboard(Stage& s) { s.take(static_cast<HBITMAP>(s.call(LoadClipboardFormat, s.file("a.clp"), WORD{CF_DIB}))); }
void load_text_block(Stage& s) {
  const test::Bytes text = {'a', ' ', 't', 'e', 'x', 't', '\r', '\n', 'b', 0};
  const test::Block block = test::block_of(text);
  s.take(s.call(LoadASCIIIntoBitmap, block.get()));
}
template <auto kFunction, bool kDib>
void save_metafile(Stage& s) {
  const std::string path = s.target("saved.wmf");
  if constexpr (kDib)
    s.take(s.call(kFunction, path.c_str(), s.dib(8)));
  else
    s.take(s.call(kFunction, path.c_str(), s.device().mono.get()));
  s.note_file_there(path);
}
void draw_metafile(Stage& s) { s.take(s.call(DrawMetaFileIntoBitmap, s.device().metafile, 40, 30, FALSE)); }

// A metafile picture on the clipboard, for a call.
template <auto kFunction>
void from_clipboard(Stage& s) {
  OpenClipboard(s.device().window());
  EmptyClipboard();
  HGLOBAL block = GlobalAlloc(GHND, sizeof(METAFILEPICT));
  auto* picture = static_cast<METAFILEPICT*>(GlobalLock(block));
  *picture = {MM_ANISOTROPIC, 1000, 1000, DeviceInputs::make_metafile()};
  GlobalUnlock(block);
  SetClipboardData(CF_METAFILEPICT, block);
  CloseClipboard();
  s.take(s.call(kFunction, s.device().window()));
  OpenClipboard(s.device().window());
  EmptyClipboard();
  CloseClipboard();
}

// ---- display

// A display that shows a DIB or a bitmap.
struct Shown {
  explicit Shown(Stage& stage, bool of_bitmap = false) : s(stage) {
    DisplayWmCreate(window(), 0, 0, &state);
    if (of_bitmap)
      DisplayStart(window(), s.device().mono.get(), nullptr, nullptr, nullptr, nullptr, kBars, &state);
    else
      DisplayDIBStart(window(), s.dib(8), nullptr, nullptr, kBars, &state);
  }
  ~Shown() {
    s.note(&state.layout, sizeof state.layout);
    DisplayWmDestroy(window(), 0, 0, &state);
  }
  HWND window() const { return s.device().window(); }

  Stage& s;
  ImgDisplayState state{};
};

void display_create(Stage& s) {
  ImgDisplayState state;
  s.take(static_cast<int>(s.call(DisplayWmCreate, s.device().window(), WPARAM{0}, LPARAM{0}, &state)));
  s.note(&state, 142);
}
template <bool kBitmap>
void display_start(Stage& s) {
  ImgDisplayState state{};
  HWND window = s.device().window();
  if constexpr (kBitmap)
    s.take(static_cast<int>(
        s.call(DisplayStart, window, s.device().mono.get(), nullptr, nullptr, nullptr, nullptr, kBars, &state)));
  else
    s.take(static_cast<int>(
        s.call(DisplayDIBStart, window, s.dib(8), nullptr, nullptr, kBars | IMG_DISPLAY_AS_BITMAP, &state)));
  s.note(&state.layout, sizeof state.layout);
  DisplayWmDestroy(window, 0, 0, &state);
}
template <auto kFunction>
void display_message(Stage& s) {
  Shown shown(s);
  s.take(static_cast<int>(s.call(kFunction, shown.window(), WPARAM{SB_LINEDOWN}, LPARAM{0}, &shown.state)));
}
void display_position(Stage& s) {
  Shown shown(s);
  const int position[] = {1, 1};
  s.take(static_cast<int>(s.call(DisplaySetScrollPos, shown.window(), &shown.state, position)));
}
void display_paint(Stage& s) {
  Shown shown(s);
  InvalidateRect(shown.window(), nullptr, FALSE);
  s.take(static_cast<int>(s.call(DisplayWmPaint, shown.window(), &shown.state)));
}
template <auto kFunction, bool kBitmap>
void display_on_dc(Stage& s) {
  Shown shown(s, kBitmap);
  const int saved = SaveDC(s.device().dc);
  if constexpr (std::is_void_v<decltype(kFunction(s.device().dc, &shown.state))>)
    s.call(kFunction, s.device().dc, &shown.state);
  else
    s.take(static_cast<int>(s.call(kFunction, s.device().dc, &shown.state)));
  RestoreDC(s.device().dc, saved);
}
void low_memory(Stage& s) {
  s.take(s.call(SetLowMemStretch, 1));
  SetLowMemStretch(0);
}
template <auto kFunction>
void paint_dib(Stage& s) {
  InvalidateRect(s.device().window(), nullptr, FALSE);
  int scroll[4] = {};
  s.call(kFunction, s.device().window(), s.dib(8), scroll, nullptr, WORD{0});
  s.note(scroll, sizeof scroll);
}
void paint_bitmap(Stage& s) {
  InvalidateRect(s.device().window(), nullptr, FALSE);
  s.call(DisplayImage, s.device().window(), s.device().mono.get(), nullptr, nullptr, nullptr, WORD{0});
}
template <auto kFunction>
void scroll_dib(Stage& s) {
  int scroll[4] = {5, 5, 0, 0};
  s.call(kFunction, s.device().window(), WPARAM{SB_LINEDOWN}, LPARAM{0}, s.dib(8), scroll, nullptr, WORD{0});
  s.note(scroll, sizeof scroll);
}

// ---- zooming and lens

constexpr POINT kStart{10, 10}, kEnd{40, 40};
constexpr RECT kRatio{10, 10, 10, 10};

void zoom_start(Stage& s) {
  ImgZoomTracker tracker{};
  s.call(BZoomStart, s.device().window(), &kStart, &kRatio, 0x12, &tracker, FALSE);
  ReleaseCapture();
  s.note(&tracker, sizeof tracker);
}
void zoom_update(Stage& s) {
  ImgZoomTracker tracker{};
  BZoomStart(s.device().window(), &kStart, &kRatio, 0x12, &tracker, FALSE);
  s.call(BZoomUpdate, s.device().window(), &kEnd, &tracker);
  ReleaseCapture();
  s.note(&tracker, sizeof tracker);
}
void zoom_end(Stage& s) {
  Shown shown(s);
  ImgZoomTracker tracker{};
  BZoomStart(shown.window(), &kStart, &kRatio, 0x12, &tracker, FALSE);
  s.call(BZoomEnd, shown.window(), &kEnd, &tracker, &shown.state);
  s.note(&tracker, sizeof tracker);
}
void zoom_step(Stage& s) {
  Shown shown(s);
  ImgZoomTracker tracker{};
  s.call(BZoomStep, shown.window(), &kRatio, 0x22, &tracker, &shown.state);
  s.note(&tracker, sizeof tracker);
}
template <bool kStep>
void screen_zoom(Stage& s) {
  ImgZoomTracker tracker{};
  ImgScreenZoom state{96, 96, {0, 0, 50, 50}, {0, 0, 30, 20}};
  if constexpr (kStep) {
    s.call(BZoomScreenStep, s.device().window(), &kRatio, 0x22, &tracker, &state);
  } else {
    BZoomStart(s.device().window(), &kStart, &kRatio, 0x12, &tracker, FALSE);
    s.call(BZoomScreenEnd, s.device().window(), &kEnd, &tracker, &state);
  }
  s.note(&tracker, sizeof tracker);
  s.note(&state, sizeof state);
}
void old_zoom(Stage& s) {
  HWND window = s.device().window();
  PostMessage(window, WM_MOUSEMOVE, 0, MAKELPARAM(40, 40));
  PostMessage(window, WM_LBUTTONUP, 0, MAKELPARAM(40, 40));
  int zoom[4] = {1, 1, 1, 1};
  s.call(Zoom, window, MAKELPARAM(10, 10), zoom);
  s.note(zoom, sizeof zoom);
}
void old_zoom_outside(Stage& s) {
  int zoom[4] = {3, 1, 3, 1};
  s.call(Zoom, s.device().window(), MAKELPARAM(200, 10), zoom);
  s.note(zoom, sizeof zoom);
}

struct Lens {
  explicit Lens(Stage& s) { M_SetSizes(40, 30), M_StartMagnify(s.device().window(), nullptr); }
  ~Lens() { M_StopMagnify(); }
};
void lens_start(Stage& s) {
  s.take(s.call(M_StartMagnify, s.device().window(), nullptr));
  M_StopMagnify();
}
void lens_stop(Stage& s) {
  M_StartMagnify(s.device().window(), nullptr);
  s.take(s.call(M_StopMagnify));
}
void lens_rectangle(Stage& s) {
  int zoom[] = {20, 10, 20, 10};
  RECT source{};
  s.take(s.call(M_CalcRect, 20, 20, zoom, &source));
  s.note(&source, sizeof source);
}
void lens_stretch(Stage& s) {
  const Lens lens(s);
  s.call(M_StretchBitmap, s.device().mono.get(), 2, 2, 8, 8);
}
void lens_copy(Stage& s) {
  const Lens lens(s);
  s.call(M_CopyBitmap, s.device().window(), 5, 5);
}

// ---- printing

struct Job {
  explicit Job(bool begins = true) {
    if (begins) begun = PrepareToPrint(nullptr, dc, &options, "job", 1);
  }
  ~Job() {
    if (dc != nullptr) EndPrint(dc);
  }
  HDC dc = test::printer_dc(150);
  ImgPrintOptions options = test::silent_options();
  int begun = 0;
};
void print_prepare(Stage& s) {
  Job job(false);
  s.take(s.call(PrepareToPrint, nullptr, job.dc, &job.options, "job", 1));
}
void print_page(Stage& s) {
  const Job job;
  s.take(s.call(PrintDIBPage, s.dib(8), nullptr, 0, 0, 0, 0));
}
void print_continue(Stage& s) {
  const Job job;
  s.call(PrintPageContinue);
}
void print_end(Stage& s) {
  Job job;
  s.take(s.call(EndPrint, std::exchange(job.dc, nullptr)));
}
void print_dib(Stage& s) {
  Job job(false);
  s.take(s.call(PrintDIB, nullptr, job.dc, s.dib(8), "job", nullptr, &job.options, 0));
  job.dc = nullptr;
}
void print_image(Stage& s) {
  Job job(false);
  s.take(
      s.call(PrintImage, nullptr, job.dc, s.device().mono.get(), s.device().palette.get(), "job", nullptr, &job.options, 0));
  DeleteDC(std::exchange(job.dc, nullptr));  // still there if no job was begun
}
void print_cancelled(Stage& s) {
  const test::WithDialog dialog("Print", [](HWND window) { test::press(window, IDCANCEL); });
  ImgPrintOptions options = test::silent_options();
  options.showDialog = 1;
  s.take(s.call(PrepareToPrint, s.device().window(), nullptr, &options, "job", 1));
  EndPrint(nullptr);
}
void printer_setup(Stage& s) {
  const test::WithDialog dialog("Printer Setup", [](HWND window) { test::press(window, IDCANCEL); });
  s.take(s.call(PrinterSetup, s.device().window()));
}
template <auto kFunction>
void dialog_message(Stage& s) {
  s.take(s.call(kFunction, s.device().window(), UINT{WM_NULL}, WPARAM{0}, LPARAM{0}));
}

}  // namespace

std::vector<Row> device_good_rows() {
  return {
      Row("CreateDIBPalette", of_dib<CreateDIBPalette, 8>).leaves({kCodeBefore, IMG_E_CREATE_PALETTE}),
      // This screen has no palette.
      Row("GetCurrentPalette", of<GetCurrentPalette>)
          .fails(IMG_E_CREATE_PALETTE)
          .leaves({IMG_E_CREATE_DC, IMG_E_CREATE_PALETTE}),
      Row("GetSystemPalette", system_palette).fails(),
      Row("ConvertBitmapToDIB", bitmap_to_dib).leaves({kCodeBefore, IMG_E_CREATE_PALETTE, IMG_E_CREATE_DC}).is(kMaySucceed),
      Row("ConvertDIBToBitmap", of_dib<ConvertDIBToBitmap, 8>)
          .leaves({kCodeBefore, IMG_E_CREATE_BITMAP, IMG_E_CREATE_PALETTE})
          .is(kMaySucceed),
      Row("ConvertToMonochromeBitmap", of_bitmap<ConvertToMonochromeBitmap, false>)
          .leaves({IMG_E_MEMORY, IMG_E_PARAMETER, kCodeBefore})
          .is(kMaySucceed),
      Row("DuplicateBitmap", of_bitmap<DuplicateBitmap, true>).leaves({IMG_E_MEMORY, IMG_E_COPY_BITS, kCodeBefore}),
      Row("LoadBitmapFromFile", [](Stage& s) { s.take(s.call(LoadBitmapFromFile, s.file("a.bmp"))); })
          .leaves({kCodeBefore, IMG_E_OPEN_FILE, IMG_E_FILE_IO, IMG_E_CREATE_BITMAP, IMG_E_CREATE_PALETTE})
          .is(kSlow | kMaySucceed | kPartOfFile),
      Row("SaveBitmap", save_bitmap)
          .leaves({kCodeBefore, IMG_E_LOCK, IMG_E_OPEN_FILE, IMG_E_FILE_IO, IMG_E_PARAMETER, IMG_E_MEMORY})
          .is(kMaySucceed | kSlow | kPartOfFile),
      Row("LoadASCIIFile", [](Stage& s) { s.take(s.call(LoadASCIIFile, s.file("a.txt"), FALSE)); })
          .with_code(0)
          .leaves({0, IMG_E_OPEN_FILE, IMG_E_MEMORY, IMG_E_FILE_IO, IMG_E_CREATE_DC})
          .is(kSlow | kMaySucceed),
      Row("LoadASCIIIntoBitmap", load_text_block).leaves({IMG_E_MEMORY, IMG_E_CREATE_DC}).is(kMaySucceed),
      Row("LoadClipboardFormat", load_clipboard)
          .leaves({IMG_E_CREATE_PALETTE, kCodeBefore, IMG_E_OPEN_FILE, IMG_E_FORMAT, IMG_E_FILE_IO, IMG_E_MEMORY,
                   IMG_E_CREATE_BITMAP, IMG_E_CLIPBOARD_FORMAT})
          .is(kSlow | kMaySucceed),
      Row("SaveClipboardFormat",
          [](Stage& s) {
            const std::string path = s.target("saved.clp");
            s.take(s.call(SaveClipboardFormat, path.c_str(), s.device().mono.get()));
            s.note_file(path);
          })
          .leaves({kCodeBefore, IMG_E_OPEN_FILE, IMG_E_FILE_IO, IMG_E_MEMORY, IMG_E_CREATE_DC, IMG_E_LOCK})
          .is(kMaySucceed | kSlow),
      Row("RotateBitmap90", of_bitmap<RotateBitmap90, true>)
          .leaves({IMG_E_MEMORY, IMG_E_COPY_BITS, IMG_E_CREATE_BITMAP, IMG_E_BITMAP_PARAMETERS}),
      Row("RotateBitmap180", change_bitmap<RotateBitmap180>)
          .leaves({IMG_E_MEMORY, IMG_E_COPY_BITS, IMG_E_BITMAP_PARAMETERS})
          .is(kMaySucceed),
      Row("RotateBitmap270", of_bitmap<RotateBitmap270, true>)
          .leaves({IMG_E_MEMORY, IMG_E_COPY_BITS, IMG_E_CREATE_BITMAP, IMG_E_BITMAP_PARAMETERS}),
      Row("FlipBitmapVertical", change_bitmap<FlipBitmapVertical>)
          .leaves({IMG_E_MEMORY, IMG_E_COPY_BITS, IMG_E_BITMAP_PARAMETERS})
          .is(kMaySucceed),
      Row("FlipBitmapHorizontal", change_bitmap<FlipBitmapHorizontal>)
          .leaves({IMG_E_MEMORY, IMG_E_COPY_BITS, IMG_E_BITMAP_PARAMETERS})
          .is(kMaySucceed),
      Row("InvertBitmap", change_bitmap<InvertBitmap>).is(kOneThread | kMaySucceed),
      Row("Zoom", old_zoom).fails().is(kOneThread | kSlow | kMaySucceed),
      Row("CombineBMP", combine_bitmaps).leaves({kCodeBefore, 501, 506, 507, IMG_E_MEMORY, IMG_E_PARAMETER}).is(kMaySucceed),
      Row("CombineDIB", combine_dibs)
          .with_code(IMG_E_CREATE_PALETTE)
          .leaves({IMG_E_CREATE_DC, kCodeBefore, 504, 505, 510, IMG_E_MEMORY, IMG_E_CREATE_PALETTE})
          .is(kMaySucceed),
      Row("DisplayWmCreate", display_create).fails().is(kOneThread),
      Row("DisplayStart", display_start<true>).is(kOneThread | kMaySucceed),
      Row("DisplayDIBStart", display_start<false>)
          .leaves({kCodeBefore, IMG_E_CREATE_BITMAP, IMG_E_CREATE_PALETTE})
          .is(kOneThread | kMaySucceed),
      Row("DisplayWmSize", display_message<DisplayWmSize>).fails().is(kOneThread | kMaySucceed),
      Row("DisplayWmHorzScroll", display_message<DisplayWmHorzScroll>).fails().is(kOneThread | kMaySucceed),
      Row("DisplayWmVertScroll", display_message<DisplayWmVertScroll>).fails().is(kOneThread | kMaySucceed),
      Row("DisplaySetScrollPos", display_position).fails().is(kOneThread | kMaySucceed),
      Row("DisplayWmPaint", display_paint).fails().is(kOneThread | kMaySucceed),
      Row("DisplayWmDestroy", display_message<DisplayWmDestroy>).fails().is(kOneThread),
      Row("DisplayImageDC", display_on_dc<DisplayImageDC, true>).is(kOneThread | kMaySucceed),
      Row("DisplayDIBImageDC", display_on_dc<DisplayDIBImageDC, false>).is(kOneThread | kMaySucceed),
      Row("MapDisplayDC", display_on_dc<MapDisplayDC, false>).fails().is(kOneThread | kMaySucceed),
      Row("GetLowMemStretch", of<GetLowMemStretch>).fails().is(kOneThread),
      Row("SetLowMemStretch", low_memory).fails().is(kOneThread),
      Row("DisplayImage", paint_bitmap).fails().is(kOneThread | kMaySucceed),
      Row("DisplayDIBImage", paint_dib<DisplayDIBImage>).fails().is(kOneThread | kMaySucceed),
      Row("DisplayCPPImage", paint_dib<DisplayCPPImage>).fails().is(kOneThread | kMaySucceed),
      Row("DisplayCPPSize", paint_dib<DisplayCPPSize>).fails().is(kOneThread | kMaySucceed),
      Row("DisplayCPPHScroll", scroll_dib<DisplayCPPHScroll>).fails().is(kOneThread | kMaySucceed),
      Row("DisplayCPPVScroll", scroll_dib<DisplayCPPVScroll>).fails().is(kOneThread | kMaySucceed),
      Row("BZoomStart", zoom_start).fails().is(kOneThread | kMaySucceed),
      Row("BZoomUpdate", zoom_update).fails().is(kOneThread | kMaySucceed),
      Row("BZoomEnd", zoom_end).fails().is(kOneThread | kMaySucceed),
      Row("BZoomStep", zoom_step).fails().is(kOneThread | kMaySucceed),
      Row("BZoomScreenEnd", screen_zoom<false>).fails().is(kOneThread | kMaySucceed),
      Row("BZoomScreenStep", screen_zoom<true>).fails().is(kOneThread | kMaySucceed),
      Row("M_SetSizes", of<M_SetSizes, 40, 30>).is(kOneThread),
      Row("M_GetWidth", [](Stage& s) { M_SetSizes(40, 30), s.take(s.call(M_GetWidth)); }).is(kOneThread),
      Row("M_GetHeight", [](Stage& s) { M_SetSizes(40, 30), s.take(s.call(M_GetHeight)); }).is(kOneThread),
      Row("M_StartMagnify", lens_start).is(kOneThread),
      Row("M_StopMagnify", lens_stop).is(kOneThread),
      Row("M_CalcRect", lens_rectangle).is(kOneThread),
      Row("M_StretchBitmap", lens_stretch).fails().is(kOneThread | kMaySucceed),
      Row("M_CopyBitmap", lens_copy).fails().is(kOneThread | kMaySucceed),
      Row("DrawMetaFileIntoBitmap", draw_metafile).leaves({IMG_E_MEMORY}).is(kMaySucceed),
      Row("LoadMetaFileIntoBitmap", [](Stage& s) { s.take(s.call(LoadMetaFileIntoBitmap, s.file("a.wmf"))); })
          .leaves({kCodeBefore, IMG_E_FILE_IO, IMG_E_MEMORY, IMG_E_CREATE_METAFILE})
          .is(kSlow | kMaySucceed),
      Row("SaveDIBIntoMetaFile", save_metafile<SaveDIBIntoMetaFile, true>)
          .leaves({kCodeBefore, IMG_E_CREATE_PALETTE})
          .is(kSlow | kMaySucceed),
      Row("SaveDIBIntoEnhMetaFile", save_metafile<SaveDIBIntoEnhMetaFile, true>)
          .leaves({kCodeBefore, IMG_E_CREATE_PALETTE})
          .is(kSlow | kMaySucceed),
      Row("SaveBitmapIntoMetaFile", save_metafile<SaveBitmapIntoMetaFile, false>)
          .leaves({kCodeBefore, IMG_E_CREATE_PALETTE})
          .is(kSlow | kMaySucceed),
      Row("SaveBitmapIntoEnhMetaFile", save_metafile<SaveBitmapIntoEnhMetaFile, false>)
          .leaves({kCodeBefore, IMG_E_CREATE_PALETTE})
          .is(kSlow | kMaySucceed),
      Row("PlaceMetaFileIntoBMPFromCLP", from_clipboard<PlaceMetaFileIntoBMPFromCLP>)
          .leaves({kCodeBefore, IMG_E_MEMORY, IMG_E_CLIPBOARD})
          .is(kSystemKeeps | kOneThread | kSlow | kMaySucceed),
      Row("PlaceMetaFileIntoDIBFromCLP", from_clipboard<PlaceMetaFileIntoDIBFromCLP>)
          .with_code(IMG_E_CREATE_PALETTE)
          .leaves({IMG_E_CREATE_DC, kCodeBefore, IMG_E_MEMORY, IMG_E_CLIPBOARD, IMG_E_CREATE_PALETTE})
          .is(kSystemKeeps | kOneThread | kSlow | kMaySucceed),
      Row("PrepareToPrint", print_prepare).fails().is(kOneThread | kSlow | kMaySucceed),
      Row("PrintDIBPage", print_page).fails().is(kOneThread | kSlow | kMaySucceed),
      Row("PrintPageContinue", print_continue).fails().is(kOneThread | kSlow | kMaySucceed),
      Row("EndPrint", print_end).fails().is(kOneThread | kSlow | kMaySucceed),
      Row("PrintDIB", print_dib).fails().is(kOneThread | kSlow | kMaySucceed),
      Row("PrintImage", print_image).fails().is(kOneThread | kSlow | kMaySucceed),
      Row("PrintAbortProc", of<PrintAbortProc, nullptr, 0>).is(kOneThread),
      Row("PrintCancelDlgProc", dialog_message<PrintCancelDlgProc>).fails().is(kOneThread),
      Row("PrintPageProc", dialog_message<PrintPageProc>).fails().is(kOneThread),
      Row("PrinterSetup", printer_setup).fails().is(kSystemKeeps | kOneThread | kSlow | kMaySucceed),
      Row("PrinterSetupProc", dialog_message<PrinterSetupProc>).fails().is(kOneThread),
  };
}

std::vector<Row> device_failing_rows() {
  return {
      Row("CreateDIBPalette", of<CreateDIBPalette, kNone>).fails(),
      Row("GetCurrentPalette", of<GetCurrentPalette>).fails(IMG_E_CREATE_PALETTE),
      Row("GetSystemPalette", of<GetSystemPalette, nullptr>).fails(),
      Row("ConvertBitmapToDIB", of<ConvertBitmapToDIB, nullptr, nullptr>).fails(),
      Row("ConvertDIBToBitmap", of<ConvertDIBToBitmap, kNone>).fails(),
      Row("ConvertToMonochromeBitmap", of<ConvertToMonochromeBitmap, nullptr>).fails(IMG_E_PARAMETER),
      Row("DuplicateBitmap", of<DuplicateBitmap, nullptr>).fails(IMG_E_COPY_BITS),
      Row("LoadBitmapFromFile", [](Stage& s) { s.take(s.call(LoadBitmapFromFile, s.missing())); })
          .fails(IMG_E_OPEN_FILE)
          .is(kSlow),
      Row("SaveBitmap", [](Stage& s) { s.take(s.call(SaveBitmap, s.missing(), nullptr, nullptr)); }).fails(),
      Row("LoadASCIIFile", [](Stage& s) { s.take(s.call(LoadASCIIFile, s.missing(), FALSE)); })
          .fails(IMG_E_OPEN_FILE)
          .is(kSlow),
      Row("LoadASCIIIntoBitmap", of<LoadASCIIIntoBitmap, kNone>).fails(IMG_E_MEMORY),
      Row("LoadClipboardFormat", [](Stage& s) { s.take(s.call(LoadClipboardFormat, s.missing(), WORD{CF_DIB})); })
          .fails(IMG_E_OPEN_FILE)
          .is(kSlow),
      Row("SaveClipboardFormat",
          [](Stage& s) { s.take(s.call(SaveClipboardFormat, s.in_no_folder(), s.device().mono.get())); })
          .fails(IMG_E_OPEN_FILE)
          .is(kSlow),
      Row("RotateBitmap90", of<RotateBitmap90, nullptr>).fails(IMG_E_BITMAP_PARAMETERS),
      Row("RotateBitmap180", of<RotateBitmap180, nullptr>).fails(IMG_E_BITMAP_PARAMETERS),
      Row("RotateBitmap270", of<RotateBitmap270, nullptr>).fails(IMG_E_BITMAP_PARAMETERS),
      Row("FlipBitmapVertical", of<FlipBitmapVertical, nullptr>).fails(IMG_E_BITMAP_PARAMETERS),
      Row("FlipBitmapHorizontal", of<FlipBitmapHorizontal, nullptr>).fails(IMG_E_BITMAP_PARAMETERS),
      Row("InvertBitmap", [](Stage& s) { s.device().window(), s.take(s.call(InvertBitmap, nullptr)); }).is(kOneThread),
      Row("Zoom", old_zoom_outside).fails().is(kOneThread | kSlow),
      Row("CombineBMP", combine_no_bitmaps).fails(506),
      Row("CombineDIB", combine_no_dibs).fails(506),
      Row("DisplayWmCreate", of<DisplayWmCreate, nullptr, 0, 0, nullptr>).fails().is(kOneThread),
      Row("DisplayStart", of<DisplayStart, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 8u, nullptr>)
          .fails()
          .is(kOneThread),
      Row("DisplayDIBStart", of<DisplayDIBStart, nullptr, kNone, nullptr, nullptr, 8u, nullptr>).fails().is(kOneThread),
      Row("DisplayWmSize", of<DisplayWmSize, nullptr, 0, 0, nullptr>).is(kOneThread),
      Row("DisplayWmHorzScroll", of<DisplayWmHorzScroll, nullptr, 0, 0, nullptr>).is(kOneThread),
      Row("DisplayWmVertScroll", of<DisplayWmVertScroll, nullptr, 0, 0, nullptr>).is(kOneThread),
      Row("DisplaySetScrollPos", of<DisplaySetScrollPos, nullptr, nullptr, nullptr>).is(kOneThread),
      Row("DisplayWmPaint", of<DisplayWmPaint, nullptr, nullptr>).fails().is(kOneThread),
      Row("DisplayWmDestroy", of<DisplayWmDestroy, nullptr, 0, 0, nullptr>).fails().is(kOneThread),
      Row("DisplayImageDC", of<DisplayImageDC, nullptr, nullptr>).fails().is(kOneThread),
      Row("DisplayDIBImageDC", of<DisplayDIBImageDC, nullptr, nullptr>).fails().is(kOneThread),
      Row("MapDisplayDC", of<MapDisplayDC, nullptr, nullptr>).fails().is(kOneThread),
      Row("GetLowMemStretch", of<GetLowMemStretch>).fails().is(kOneThread),
      Row("SetLowMemStretch", of<SetLowMemStretch, 0>).fails().is(kOneThread),
      Row("DisplayImage", of<DisplayImage, nullptr, nullptr, nullptr, nullptr, nullptr, 0>).fails().is(kOneThread),
      Row("DisplayDIBImage", of<DisplayDIBImage, nullptr, kNone, nullptr, nullptr, 0>).fails().is(kOneThread),
      Row("DisplayCPPImage", of<DisplayCPPImage, nullptr, kNone, nullptr, nullptr, 0>).fails().is(kOneThread),
      Row("DisplayCPPSize", of<DisplayCPPSize, nullptr, kNone, nullptr, nullptr, 0>).fails().is(kOneThread),
      Row("DisplayCPPHScroll", of<DisplayCPPHScroll, nullptr, 0, 0, kNone, nullptr, nullptr, 0>).fails().is(kOneThread),
      Row("DisplayCPPVScroll", of<DisplayCPPVScroll, nullptr, 0, 0, kNone, nullptr, nullptr, 0>).fails().is(kOneThread),
      Row("BZoomStart", of<BZoomStart, nullptr, nullptr, nullptr, 0x22, nullptr, 0>).fails().is(kOneThread),
      Row("BZoomUpdate", of<BZoomUpdate, nullptr, nullptr, nullptr>).fails().is(kOneThread),
      Row("BZoomEnd", of<BZoomEnd, nullptr, nullptr, nullptr, nullptr>).fails().is(kOneThread),
      Row("BZoomStep", of<BZoomStep, nullptr, nullptr, 0x22, nullptr, nullptr>).fails().is(kOneThread),
      Row("BZoomScreenEnd", of<BZoomScreenEnd, nullptr, nullptr, nullptr, nullptr>).fails().is(kOneThread),
      Row("BZoomScreenStep", of<BZoomScreenStep, nullptr, nullptr, 0x22, nullptr, nullptr>).fails().is(kOneThread),
      Row("M_SetSizes", of<M_SetSizes, -1, 0>).is(kOneThread),
      Row("M_GetWidth", [](Stage& s) { M_SetSizes(0, 0), s.take(s.call(M_GetWidth)); }).fails().is(kOneThread),
      Row("M_GetHeight", [](Stage& s) { M_SetSizes(0, 0), s.take(s.call(M_GetHeight)); }).fails().is(kOneThread),
      Row("M_StartMagnify", of<M_StartMagnify, nullptr, nullptr>).is(kOneThread),
      Row("M_StopMagnify", of<M_StopMagnify>).is(kOneThread),
      Row("M_CalcRect", of<M_CalcRect, 1, 1, nullptr, nullptr>).fails().is(kOneThread),
      Row("M_StretchBitmap", of<M_StretchBitmap, nullptr, 0, 0, 1, 1>).fails().is(kOneThread),
      Row("M_CopyBitmap", of<M_CopyBitmap, nullptr, 0, 0>).fails().is(kOneThread),
      Row("DrawMetaFileIntoBitmap", of<DrawMetaFileIntoBitmap, kNone, 20, 20, FALSE>),
      Row("LoadMetaFileIntoBitmap", [](Stage& s) { s.take(s.call(LoadMetaFileIntoBitmap, s.missing())); }).fails().is(kSlow),
      Row("SaveDIBIntoMetaFile", of<SaveDIBIntoMetaFile, nullptr, kNone>),
      Row("SaveDIBIntoEnhMetaFile", of<SaveDIBIntoEnhMetaFile, nullptr, kNone>),
      Row("SaveBitmapIntoMetaFile", of<SaveBitmapIntoMetaFile, nullptr, nullptr>),
      Row("SaveBitmapIntoEnhMetaFile", of<SaveBitmapIntoEnhMetaFile, nullptr, nullptr>),
      Row("PlaceMetaFileIntoBMPFromCLP",
          [](Stage& s) { s.take(s.call(PlaceMetaFileIntoBMPFromCLP, reinterpret_cast<HWND>(3))); })
          .fails()
          .is(kOneThread),
      Row("PlaceMetaFileIntoDIBFromCLP",
          [](Stage& s) { s.take(s.call(PlaceMetaFileIntoDIBFromCLP, reinterpret_cast<HWND>(3))); })
          .fails()
          .is(kOneThread),
      Row("PrepareToPrint", print_cancelled).is(kOneThread | kSlow),
      Row("PrintDIBPage", of<PrintDIBPage, kNone, nullptr, 0, 0, 0, 0>).fails().is(kOneThread),
      Row("PrintPageContinue", of<PrintPageContinue>).fails().is(kOneThread),
      Row("EndPrint", of<EndPrint, nullptr>).fails().is(kOneThread),
      Row("PrintDIB",
          [](Stage& s) {
            Job job(false);
            s.take(s.call(PrintDIB, nullptr, std::exchange(job.dc, nullptr), kNone, "job", nullptr, &job.options, 0));
          })
          .is(kOneThread | kSlow),
      Row("PrintImage",
          [](Stage& s) {
            Job job(false);
            s.take(s.call(PrintImage, nullptr, job.dc, nullptr, nullptr, "job", nullptr, &job.options, 0));
            DeleteDC(std::exchange(job.dc, nullptr));  // nothing was begun
          })
          .is(kOneThread | kSlow),
      Row("PrintAbortProc", of<PrintAbortProc, nullptr, 0>).is(kOneThread),
      Row("PrintCancelDlgProc", dialog_message<PrintCancelDlgProc>).fails().is(kOneThread),
      Row("PrintPageProc", of<PrintPageProc, nullptr, 0u, 0, 0>).fails().is(kOneThread),
      Row("PrinterSetup", printer_setup).fails().is(kSystemKeeps | kOneThread | kSlow),
      Row("PrinterSetupProc", of<PrinterSetupProc, nullptr, 0u, 0, 0>).fails().is(kOneThread),
  };
}

}  // namespace check
