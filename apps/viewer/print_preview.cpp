#include "viewer/print_preview.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "viewer/dpi.h"
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

void draw_picture(HDC dc, const Rect& box, const ShownPicture& shown) {
  RECT part{}, clip{};
  const RECT whole = rect_of(box);
  GetClipBox(dc, &clip);
  if (!IntersectRect(&part, &whole, &clip)) return;
  const Rect drawn = {static_cast<int>(part.left) - box.x, static_cast<int>(part.top) - box.y,
                      static_cast<int>(part.right - part.left), static_cast<int>(part.bottom - part.top)};
  std::vector<uint32_t> pixels(static_cast<size_t>(drawn.width) * static_cast<size_t>(drawn.height));
  shown.reductions().draw({box.width, box.height}, drawn, pixels);
  put_pixels(dc, {part.left, part.top}, {drawn.width, drawn.height}, pixels);
}

// What the printer does not reach is left out, as it is on paper.
void draw_sheet(HDC dc, const PreviewBoxes& boxes, const std::vector<SharedPicture>& pictures) {
  RECT edge = rect_of(boxes.paper);
  InflateRect(&edge, 1, 1);
  fill(dc, edge, kEdge);
  fill(dc, rect_of(boxes.paper), kUnprintable);
  fill(dc, rect_of(boxes.printable), kWhite);
  const RECT reach = rect_of(boxes.printable);
  const int saved = SaveDC(dc);
  IntersectClipRect(dc, reach.left, reach.top, reach.right, reach.bottom);
  for (size_t i = 0; i < pictures.size(); ++i) draw_picture(dc, boxes.pictures[i], *pictures[i]);
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
      : pages_(pages), settings_(settings), sheet_(settings.printer.sheet()), first_(pages.shown()) {
    show_sheet();
  }

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
      case WM_COMMAND:
        if (LOWORD(wParam) != IDC_PER_SHEET || HIWORD(wParam) == CBN_SELCHANGE) run_command(dialog, LOWORD(wParam));
        return TRUE;
      default: return FALSE;
    }
  }

  BOOL begin(HWND dialog) {
    SendMessageW(dialog, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon_for(dialog, IconSize::kSmall)));
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
      draw_sheet(dc, preview_boxes(sheet_, printed(), window), pictures_);
    });
  }

  void run_command(HWND dialog, WORD id) {
    switch (id) {
      case IDC_PREVIOUS_PAGE: go_to(dialog, first_ - settings_.layout.per_sheet); break;
      case IDC_NEXT_PAGE: go_to(dialog, first_ + settings_.layout.per_sheet); break;
      case IDOK: finish(PreviewEnd::kPrint); break;
      case IDCANCEL: finish(PreviewEnd::kClosed); break;
      default: settings_.layout = chosen_layout(dialog); go_to(dialog, first_);
    }
  }

  void finish(PreviewEnd end) {
    end_ = end;
    is_done_ = true;
  }

  // The pages of the sheet that a page is on.
  void show_sheet() {
    const int per_sheet = settings_.layout.per_sheet, first = (first_ - 1) / per_sheet * per_sheet + 1;
    std::vector<SharedPicture> pictures;
    for (int page = first; page < first + per_sheet && page <= pages_.count(); ++page) pictures.push_back(pages_.page(page));
    pictures_ = std::move(pictures);
    first_ = first;
  }

  // No exception may leave through the system that called the window procedure.
  void go_to(HWND dialog, int page) {
    if (page < 1 || page > pages_.count()) return MessageBeep(MB_OK), void();
    const int before = std::exchange(first_, page);
    try {
      show_sheet();
      update(dialog);
    } catch (const Failure& failure) {
      first_ = before;
      SetDlgItemTextW(dialog, IDC_FACTS, failure.text().c_str());
    } catch (const std::bad_alloc&) {
      first_ = before;
      SetDlgItemTextW(dialog, IDC_FACTS, L"There is not enough memory for the page");
    }
  }

  std::wstring place() const {
    const int per_sheet = settings_.layout.per_sheet, sheets = (pages_.count() + per_sheet - 1) / per_sheet;
    const std::wstring what = per_sheet == 1 ? L"page " : L"sheet ";
    return what + std::to_wstring((first_ - 1) / per_sheet + 1) + L" of " + std::to_wstring(sheets);
  }

  void update(HWND dialog) {
    const std::wstring title =
        L"Print Preview - " + place() + L" - " + layout_text(settings_.layout) + L" - " + settings_.printer.name();
    SetWindowTextW(dialog, title.c_str());
    SetDlgItemTextW(dialog, IDC_FACTS, printed_size_text(printed().front(), sheet_).c_str());
    for (const int id : {IDC_PREVIOUS_PAGE, IDC_NEXT_PAGE})
      EnableWindow(GetDlgItem(dialog, id), pages_.count() > settings_.layout.per_sheet);
    for (const int id : {IDC_TRUE_SIZE, IDC_FIT, IDC_STRETCH, IDC_ACROSS, IDC_DOWN, IDC_BY_RESOLUTION})
      EnableWindow(GetDlgItem(dialog, id), settings_.layout.per_sheet == 1);
    InvalidateRect(GetDlgItem(dialog, IDC_PAGE), nullptr, FALSE);
  }

  std::vector<Rect> printed() const {
    std::vector<DibHeader> headers;
    for (const SharedPicture& picture : pictures_) headers.push_back(picture->picture.header());
    return printed_boxes(settings_.layout, headers, sheet_);
  }

  DocumentPages& pages_;
  PrintSettings& settings_;
  Sheet sheet_;
  int first_;                            // page on the sheet
  std::vector<SharedPicture> pictures_;  // of its pages
  PreviewEnd end_ = PreviewEnd::kClosed;
  bool is_done_ = false;
};

}  // namespace

PreviewEnd show_preview(HWND owner, DocumentPages& pages, PrintSettings& settings) {
  if (settings.printer.name().empty()) settings.printer = Printer::usual();
  return Preview(pages, settings).run(owner);
}

}  // namespace vorel::viewer
