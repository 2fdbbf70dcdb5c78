// What needs a display, the clipboard or a printer.
#include <cstring>
#include <vector>
#include <windows.h>
#include <winspool.h>

#include "selftest/checks.h"

namespace vorel::selftest {
namespace {

// Takes only the type of the declared function: the program is not linked with the library.
#define VOREL_EXPORT(library, name) (library).module.entry<decltype(&::name)>(#name)

template <class Handle>
struct Deleted {
  Handle handle;
  ~Deleted() {
    if (handle != nullptr) DeleteObject(handle);
  }
};

// A picture shown in a window by the library.
class Viewer {
 public:
  Viewer(const Library& library, HGLOBAL picture, int width, int height) : library_(library) {
    WNDCLASSA kind{};
    kind.lpfnWndProc = follow;
    kind.lpszClassName = "VorelSelfTest";
    kind.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    RegisterClassA(&kind);
    window_ = CreateWindowExA(WS_EX_TOPMOST, "VorelSelfTest", "Vorel32 self-test", WS_POPUP, 40, 40, width, height, nullptr,
                              nullptr, nullptr, this);
    VOREL_EXPORT(library_, DisplayDIBStart)
    (window_, picture, nullptr, nullptr, IMG_DISPLAY_NO_HSCROLL | IMG_DISPLAY_NO_VSCROLL, &state_);
    ShowWindow(window_, SW_SHOWNA);
    paint();
  }
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;
  ~Viewer() { DestroyWindow(window_); }

  void paint() {
    InvalidateRect(window_, nullptr, FALSE);
    UpdateWindow(window_);
    for (MSG message; PeekMessageA(&message, window_, 0, 0, PM_REMOVE);) DispatchMessageA(&message);
  }
  void scroll_to(int x, int y) {
    const int position[2] = {x, y};
    VOREL_EXPORT(library_, DisplaySetScrollPos)(window_, &state_, position);
    paint();
  }
  // Where the part of the picture from (left, top) on is not in the window; counted in pixels.
  int differences(HGLOBAL picture, int left, int top, int width, int height) const {
    HDC dc = GetDC(window_);
    int count = 0;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) count += GetPixel(dc, x, y) != pixel_of(picture, left + x, top + y);
    ReleaseDC(window_, dc);
    return count;
  }

 private:
  static LRESULT CALLBACK follow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
      auto* created = static_cast<Viewer*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams);
      SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
    }
    auto* self = reinterpret_cast<Viewer*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (self == nullptr) return DefWindowProcA(window, message, wParam, lParam);
    switch (message) {
      case WM_CREATE: return VOREL_EXPORT(self->library_, DisplayWmCreate)(window, wParam, lParam, &self->state_);
      case WM_PAINT: return VOREL_EXPORT(self->library_, DisplayWmPaint)(window, &self->state_);
      case WM_SIZE: return VOREL_EXPORT(self->library_, DisplayWmSize)(window, wParam, lParam, &self->state_);
      case WM_DESTROY: return VOREL_EXPORT(self->library_, DisplayWmDestroy)(window, wParam, lParam, &self->state_);
      default: return DefWindowProcA(window, message, wParam, lParam);
    }
  }

  const Library& library_;
  ImgDisplayState state_{};
  HWND window_ = nullptr;
};

// The text on the clipboard, put back with its scope.
class KeptText {
 public:
  KeptText() {
    if (!OpenClipboard(nullptr)) return;
    HANDLE block = GetClipboardData(CF_UNICODETEXT);
    if (const auto* text = block == nullptr ? nullptr : static_cast<const wchar_t*>(GlobalLock(block))) {
      text_ = text;
      GlobalUnlock(block);
    }
    CloseClipboard();
  }
  KeptText(const KeptText&) = delete;
  KeptText& operator=(const KeptText&) = delete;
  ~KeptText() {
    if (!OpenClipboard(nullptr)) return;
    EmptyClipboard();
    if (!text_.empty()) {
      const size_t bytes = (text_.size() + 1) * sizeof(wchar_t);
      HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes);
      if (void* data = GlobalLock(block)) std::memcpy(data, text_.c_str(), bytes);
      GlobalUnlock(block);
      SetClipboardData(CF_UNICODETEXT, block);
    }
    CloseClipboard();
  }

 private:
  std::wstring text_;
};

// A metafile picture of 40 x 30 mm, black all over.
bool put_metafile_on_clipboard() {
  HDC dc = CreateMetaFileA(nullptr);
  SetMapMode(dc, MM_ANISOTROPIC);
  SetWindowExtEx(dc, 100, 100, nullptr);
  SelectObject(dc, GetStockObject(BLACK_BRUSH));
  Rectangle(dc, 0, 0, 100, 100);
  HGLOBAL block = GlobalAlloc(GHND, sizeof(METAFILEPICT));
  if (auto* picture = static_cast<METAFILEPICT*>(GlobalLock(block)))
    *picture = {MM_ANISOTROPIC, 4000, 3000, CloseMetaFile(dc)};
  GlobalUnlock(block);
  if (!OpenClipboard(nullptr)) return false;
  EmptyClipboard();
  const bool is_there = SetClipboardData(CF_METAFILEPICT, block) != nullptr;
  CloseClipboard();
  return is_there;
}

std::vector<std::string> printer_names() {
  constexpr DWORD kKinds = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
  DWORD bytes = 0, count = 0;
  EnumPrintersA(kKinds, nullptr, 4, nullptr, 0, &bytes, &count);
  std::vector<uint64_t> room(bytes / sizeof(uint64_t) + 1);
  std::vector<std::string> names;
  auto* const printers = reinterpret_cast<PRINTER_INFO_4A*>(room.data());
  if (EnumPrintersA(kKinds, nullptr, 4, reinterpret_cast<BYTE*>(printers), bytes, &bytes, &count))
    for (DWORD i = 0; i < count; ++i) names.emplace_back(printers[i].pPrinterName);
  return names;
}

std::string facts_of_printer(const std::string& name) {
  HDC dc = CreateDCA("WINSPOOL", name.c_str(), nullptr, nullptr);
  if (dc == nullptr) return "no device context";
  const std::string facts =
      fmt::format("{} x {} dots, {} x {} dpi, {} bits, raster capabilities {:#x}", GetDeviceCaps(dc, HORZRES),
                  GetDeviceCaps(dc, VERTRES), GetDeviceCaps(dc, LOGPIXELSX), GetDeviceCaps(dc, LOGPIXELSY),
                  GetDeviceCaps(dc, BITSPIXEL), GetDeviceCaps(dc, RASTERCAPS));
  DeleteDC(dc);
  return facts;
}

}  // namespace

HGLOBAL test_picture(int width, int height) {
  const int stride = (24 * width + 31) / 32 * 4;
  HGLOBAL dib = GlobalAlloc(GHND, sizeof(BITMAPINFOHEADER) + static_cast<size_t>(stride * height));
  auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
  if (header == nullptr) return dib;
  *header = {sizeof *header, width, height, 1, 24, BI_RGB, static_cast<DWORD>(stride * height), 3937, 3937, 0, 0};
  auto* const rows = reinterpret_cast<uint8_t*>(header + 1);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < 3 * width; ++x) rows[y * stride + x] = static_cast<uint8_t>(x / 3 * 5 + y * 7 + x % 3 * 80);
  GlobalUnlock(dib);
  return dib;
}

COLORREF pixel_of(HGLOBAL dib, int x, int y) {
  const auto* const header = static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
  const int stride = (24 * header->biWidth + 31) / 32 * 4;
  const auto* const pixel = reinterpret_cast<const uint8_t*>(header + 1) + (header->biHeight - 1 - y) * stride + 3 * x;
  const COLORREF color = header->biBitCount == 24 ? RGB(pixel[2], pixel[1], pixel[0]) : CLR_INVALID;
  GlobalUnlock(dib);
  return color;
}

void check_devices(Report& report, const Library& library) {
  report.section("Device bitmaps and palettes");
  HDC screen = GetDC(nullptr);
  const int depth = GetDeviceCaps(screen, BITSPIXEL);
  const bool has_palette = (GetDeviceCaps(screen, RASTERCAPS) & RC_PALETTE) != 0;
  ReleaseDC(nullptr, screen);

  HGLOBAL picture = test_picture(37, 23);
  const Deleted<HBITMAP> bitmap{VOREL_EXPORT(library, ConvertDIBToBitmap)(picture)};
  HGLOBAL back = bitmap.handle == nullptr ? nullptr : VOREL_EXPORT(library, ConvertBitmapToDIB)(bitmap.handle, nullptr);
  int differences = back == nullptr ? -1 : 0;
  for (int i = 0; back != nullptr && i < 37 * 23; ++i)
    differences += pixel_of(picture, i % 37, i / 37) != pixel_of(back, i % 37, i / 37);
  if (depth >= 24)
    report.check("DIB to bitmap and back", differences == 0, fmt::format("{} pixels differ", differences));
  else
    report.check("DIB to bitmap and back", back != nullptr);
  GlobalFree(back);

  HGLOBAL gray = VOREL_EXPORT(library, ConvColorDIBtoGrayscale)(picture, 2, 1);
  const Deleted<HPALETTE> palette{gray == nullptr ? nullptr : VOREL_EXPORT(library, CreateDIBPalette)(gray)};
  PALETTEENTRY entry{};
  const UINT count = palette.handle == nullptr ? 0 : GetPaletteEntries(palette.handle, 200, 1, &entry);
  report.check("palette of a grey DIB",
               count == 1 && entry.peRed == entry.peGreen && entry.peGreen == entry.peBlue && entry.peRed > 0);
  const Deleted<HPALETTE> current{VOREL_EXPORT(library, GetCurrentPalette)()};
  report.check(has_palette ? "palette of the screen" : "no palette on a true-colour screen",
               (current.handle != nullptr) == has_palette);
  GlobalFree(gray);
  GlobalFree(picture);
}

void check_window(Report& report, const Library& library) {
  report.section("Window");
  HDC screen = GetDC(nullptr);
  const int depth = GetDeviceCaps(screen, BITSPIXEL);
  ReleaseDC(nullptr, screen);
  if (depth < 24) return report.fact("not compared", "the screen does not show every colour");
  constexpr int kWidth = 120, kHeight = 90;
  HGLOBAL picture = test_picture(300, 200);
  {
    Viewer viewer(library, picture, kWidth, kHeight);
    const int at_start = viewer.differences(picture, 0, 0, kWidth, kHeight);
    report.check("a picture painted", at_start == 0, fmt::format("{} pixels differ", at_start));
    viewer.scroll_to(50, 40);
    const int scrolled = viewer.differences(picture, 50, 40, kWidth, kHeight);
    report.check("scrolled", scrolled == 0, fmt::format("{} pixels differ", scrolled));
  }
  GlobalFree(picture);
}

void check_clipboard(Report& report, const Library& library) {
  report.section("Clipboard");
  const KeptText kept;
  if (!put_metafile_on_clipboard()) return report.check("a metafile picture", false, "the clipboard does not take one");
  HGLOBAL dib = VOREL_EXPORT(library, PlaceMetaFileIntoDIBFromCLP)(GetDesktopWindow());
  HDC screen = GetDC(nullptr);
  const int width = MulDiv(4000, GetDeviceCaps(screen, LOGPIXELSX), 2450);  // the library's inch on the clipboard: 24.5 mm
  ReleaseDC(nullptr, screen);
  const auto* header = dib == nullptr ? nullptr : static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
  const int found = header == nullptr ? 0 : header->biWidth;
  report.check("a metafile picture", std::abs(found - width) <= 1, fmt::format("{} pixels wide, not {}", found, width));
  if (header != nullptr) GlobalUnlock(dib);
  GlobalFree(dib);
}

void check_printers(Report& report, const Library& library, bool prints) {
  report.section("Printers");
  const std::vector<std::string> names = printer_names();
  if (names.empty()) report.fact("found", "none");
  for (const std::string& name : names) report.fact(name, facts_of_printer(name));
  if (!prints) return report.fact("printed", "nothing (--print prints a page)");
  HGLOBAL picture = test_picture(300, 200);
  ImgPrintOptions options{0, 1, 1, 1, 1, 0, 0, 0, 1, 1};
  const int status = VOREL_EXPORT(library, PrintDIB)(nullptr, nullptr, picture, "Vorel32 self-test", nullptr, &options, 0);
  report.check("a page on the default printer", status == 0, fmt::format("code {}", status));
  GlobalFree(picture);
}

}  // namespace vorel::selftest
