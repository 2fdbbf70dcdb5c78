#include "viewer/print_preview.h"

#include <algorithm>
#include <new>

#include "viewer/failure.h"
#include "viewer/gdi.h"
#include "viewer/layout_controls.h"
#include "viewer/resource.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

// ---- Drawing ----

constexpr COLORREF kDesk = RGB(96, 102, 112), kEdge = RGB(40, 44, 52), kWhite = RGB(255, 255, 255);
constexpr COLORREF kUnprintable = RGB(240, 240, 240);

RECT rect_of(const Rect& box) { return {box.x, box.y, box.x + box.width, box.y + box.height}; }

void fill(HDC dc, const RECT& rect, COLORREF color) {
  SetDCBrushColor(dc, color);
  FillRect(dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void draw_picture(HDC dc, const Rect& box, const programs::Picture& picture) {
  SetStretchBltMode(dc, HALFTONE);
  SetBrushOrgEx(dc, 0, 0, nullptr);
  StretchDIBits(dc, box.x, box.y, box.width, box.height, 0, 0, picture.width(), picture.height(),
                picture.image_bytes().data(), reinterpret_cast<const BITMAPINFO*>(picture.bytes().data()), DIB_RGB_COLORS,
                SRCCOPY);
}

// What the printer does not reach is left out, as it is on paper.
void draw_sheet(HDC dc, const PreviewBoxes& boxes, const programs::Picture& picture) {
  RECT edge = rect_of(boxes.paper);
  InflateRect(&edge, 1, 1);
  fill(dc, edge, kEdge);
  fill(dc, rect_of(boxes.paper), kUnprintable);
  fill(dc, rect_of(boxes.printable), kWhite);
  const RECT reach = rect_of(boxes.printable);
  const int saved = SaveDC(dc);
  IntersectClipRect(dc, reach.left, reach.top, reach.right, reach.bottom);
  draw_picture(dc, boxes.picture, picture);
  RestoreDC(dc, saved);
}

// Draws in memory and shows the whole at once, without flicker.
template <class Draw>
void draw_buffered(HDC dc, const RECT& area, Draw draw) {
  const int width = area.right - area.left, height = area.bottom - area.top;
  const Bitmap bitmap(CreateCompatibleBitmap(dc, width, height));
  const OwnedDc memory(CreateCompatibleDC(dc));
  const HGDIOBJ previous = SelectObject(memory.get(), bitmap.get());
  draw(memory.get(), Size{width, height});
  BitBlt(dc, area.left, area.top, width, height, memory.get(), 0, 0, SRCCOPY);
  SelectObject(memory.get(), previous);
}

// ---- The window ----

class Preview {
 public:
  Preview(DocumentPages& pages, PrintSettings& settings)
      : pages_(pages),
        settings_(settings),
        sheet_(settings.printer.sheet()),
        page_(pages.shown()),
        picture_(&pages.page(page_)) {}

  PreviewEnd run(HWND owner) {
    const HWND dialog =
        CreateDialogParamW(this_program(), MAKEINTRESOURCEW(IDD_PREVIEW), owner, procedure, reinterpret_cast<LPARAM>(this));
    if (dialog == nullptr) throw Failure(L"The preview cannot be shown: there is no room for another window");
    EnableWindow(owner, FALSE);
    ShowWindow(dialog, SW_SHOW);
    run_messages(dialog);
    EnableWindow(owner, TRUE);
    DestroyWindow(dialog);
    return end_;
  }

 private:
  static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    auto* self = reinterpret_cast<Preview*>(GetWindowLongPtrW(dialog, DWLP_USER));
    return self != nullptr ? self->handle(dialog, message, wParam, lParam) : FALSE;
  }

  INT_PTR handle(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
      case WM_INITDIALOG: return begin(dialog);
      case WM_SIZE: lay_out(dialog); return TRUE;
      case WM_DRAWITEM: draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)); return TRUE;
      case WM_COMMAND: run_command(dialog, LOWORD(wParam)); return TRUE;
      default: return FALSE;
    }
  }

  BOOL begin(HWND dialog) {
    SendMessageW(dialog, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(LoadIconW(nullptr, MAKEINTRESOURCEW(32512))));
    show_layout(dialog, settings_.layout);
    lay_out(dialog);
    update(dialog);
    return TRUE;
  }

  // The keys reach the dialog from all of its controls.
  void run_messages(HWND dialog) {
    ACCEL keys[] = {
        {FVIRTKEY, VK_PRIOR, IDC_PREVIOUS_PAGE}, {FVIRTKEY, VK_NEXT, IDC_NEXT_PAGE}, {FVIRTKEY | FCONTROL, 'P', IDOK}};
    const HACCEL accelerators = CreateAcceleratorTableW(keys, static_cast<int>(std::size(keys)));
    MSG message;
    while (!is_done_ && GetMessageW(&message, nullptr, 0, 0) > 0) {
      if (TranslateAcceleratorW(dialog, accelerators, &message) || IsDialogMessageW(dialog, &message)) continue;
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    if (!is_done_) PostQuitMessage(static_cast<int>(message.wParam));  // for the program's own loop
    DestroyAcceleratorTable(accelerators);
  }

  // The page gets what the controls above it leave.
  static void lay_out(HWND dialog) {
    const HWND page = GetDlgItem(dialog, IDC_PAGE);
    RECT client{}, place{};
    GetClientRect(dialog, &client);
    GetWindowRect(page, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    MoveWindow(page, 0, place.top, client.right, std::max(0, static_cast<int>(client.bottom - place.top)), FALSE);
    InvalidateRect(page, nullptr, FALSE);
  }

  void draw(const DRAWITEMSTRUCT& item) const {
    draw_buffered(item.hDC, item.rcItem, [this](HDC dc, Size window) {
      fill(dc, {0, 0, window.width, window.height}, kDesk);
      draw_sheet(dc, preview_boxes(sheet_, printed(), window), *picture_);
    });
  }

  void run_command(HWND dialog, WORD id) {
    switch (id) {
      case IDC_PREVIOUS_PAGE: go_to(dialog, page_ - 1); break;
      case IDC_NEXT_PAGE: go_to(dialog, page_ + 1); break;
      case IDOK: finish(PreviewEnd::kPrint); break;
      case IDCANCEL: finish(PreviewEnd::kClosed); break;
      default: settings_.layout = chosen_layout(dialog); update(dialog);
    }
  }

  void finish(PreviewEnd end) {
    end_ = end;
    is_done_ = true;
  }

  // No exception may leave through the system that called the window procedure.
  void go_to(HWND dialog, int page) {
    if (page < 1 || page > pages_.count()) return MessageBeep(MB_OK), void();
    try {
      picture_ = &pages_.page(page);
      page_ = page;
      update(dialog);
    } catch (const Failure& failure) {
      SetDlgItemTextW(dialog, IDC_FACTS, failure.text().c_str());
    } catch (const std::bad_alloc&) {
      SetDlgItemTextW(dialog, IDC_FACTS, L"There is not enough memory for the page");
    }
  }

  void update(HWND dialog) {
    const std::wstring place = L"page " + std::to_wstring(page_) + L" of " + std::to_wstring(pages_.count());
    const std::wstring title =
        L"Print Preview - " + place + L" - " + layout_text(settings_.layout) + L" - " + settings_.printer.name();
    SetWindowTextW(dialog, title.c_str());
    SetDlgItemTextW(dialog, IDC_FACTS, printed_size_text(printed(), sheet_).c_str());
    EnableWindow(GetDlgItem(dialog, IDC_PREVIOUS_PAGE), pages_.count() > 1);
    EnableWindow(GetDlgItem(dialog, IDC_NEXT_PAGE), pages_.count() > 1);
    InvalidateRect(GetDlgItem(dialog, IDC_PAGE), nullptr, FALSE);
  }

  Rect printed() const { return printed_box(settings_.layout, picture_->header(), sheet_); }

  DocumentPages& pages_;
  PrintSettings& settings_;
  Sheet sheet_;
  int page_;
  const programs::Picture* picture_;  // the page's
  PreviewEnd end_ = PreviewEnd::kClosed;
  bool is_done_ = false;
};

}  // namespace

PreviewEnd show_preview(HWND owner, DocumentPages& pages, PrintSettings& settings) {
  if (settings.printer.name().empty()) settings.printer = Printer::usual();
  return Preview(pages, settings).run(owner);
}

}  // namespace vorel::viewer
