#include "print/job.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "dib/device_bitmap.h"
#include "dib/device_palette.h"
#include "frame/thread_context.h"
#include "platform/user.h"
#include "platform/windows/instance.h"
#include "print/dialog_ids.h"
#include "print/job_state.h"
#include "print/page_layout.h"
#include "print/printers.h"

namespace vorel::print {
namespace {

constexpr ImgPrintOptions kDefaultOptions = {.showDialog = 1,
                                             .centreVertically = 1,
                                             .centreHorizontally = 1,
                                             .fitProportionally = 1,
                                             .copies = 1,
                                             .useMemoryDC = 0,
                                             .stretchToPage = 0,
                                             .showPageProgress = 1,
                                             .useImageDpi = 1,
                                             .silent = 0};

constexpr int kNoBitmaps = 1, kNoCancelDialog = -5, kNoDocument = -1, kNotEnded = -1;

constexpr int code_of(Error error) { return static_cast<int>(error); }

const PerThread<PrintJob> thread_job;

// ---- Beginning and end ----

void close_cancel_dialog(PrintJob& job) {
  if (HWND dialog = std::exchange(job.cancel_dialog, nullptr)) DestroyWindow(dialog);
}

// Frees the resources that a job made, other than its document.
void release_resources(PrintJob& job) {
  const OwnedDc printer(job.owns_printer_dc ? job.printer_dc : nullptr);
  const OwnedDc memory(job.dc != job.printer_dc ? job.dc : nullptr);
  job.dc = job.printer_dc = nullptr;
  close_cancel_dialog(job);
}

// A job that the thread has never ended is freed first.
PrintJob& begin_job(const JobRequest& request) {
  PrintJob& job = current_job();
  release_resources(job);
  job = PrintJob{};
  if (request.document_name != nullptr) lstrcpynA(job.document, request.document_name, kJobNameBytes);
  job.page_count = request.page_count;
  job.options = request.options != nullptr ? *request.options : kDefaultOptions;
  return job;
}

int obtain_printer(PrintJob& job, const JobRequest& request, DLGPROC dialog) {
  job.printer_dc = request.printer_dc;
  if (job.printer_dc != nullptr) return 0;
  if (job.options.showDialog != 0) {
    const INT_PTR answer = DialogBoxParamA(module_instance(), "PRINTPAGE", request.owner, dialog, 0);
    if (answer == 0) return code_of(Error::kNothingToDo);
    if (answer != -1) job.printer_dc = reinterpret_cast<HDC>(answer);
  } else {
    job.printer_dc = default_printer_dc().release();
  }
  job.owns_printer_dc = true;
  return job.printer_dc != nullptr ? 0 : code_of(Error::kPrinterDc);
}

int refuse_without_bitmaps(PrintJob& job) {
  if ((GetDeviceCaps(job.printer_dc, RASTERCAPS) & RC_BITBLT) != 0) return 0;
  job.deleted_dc = job.printer_dc;
  DeleteDC(job.printer_dc);
  job.printer_dc = nullptr;
  job.owns_printer_dc = false;
  return kNoBitmaps;
}

int choose_job_dc(PrintJob& job) {
  job.bits_per_pixel = GetDeviceCaps(job.printer_dc, BITSPIXEL);
  job.planes = GetDeviceCaps(job.printer_dc, PLANES);
  job.is_monochrome = job.bits_per_pixel == 1 && job.planes == 1;
  const bool in_memory = job.options.useMemoryDC != 0 && !job.is_monochrome;
  job.dc = in_memory ? MemoryDc(job.printer_dc).release() : job.printer_dc;
  if (job.dc != nullptr) return 0;
  release_resources(job);
  return code_of(Error::kPrinterDc);
}

void show_progress(const PrintJob& job, const char* text) {
  SendMessageA(job.cancel_dialog, WM_SHOW_PROGRESS, 0, reinterpret_cast<LPARAM>(text));
}

int open_cancel_dialog(PrintJob& job, HWND owner, const JobProcedures& procedures) {
  if (job.options.silent == 1) return 0;
  HWND dialog = CreateDialogParamA(module_instance(), "PRINTCANCELDLGBOX", owner, procedures.cancel_dialog, 0);
  if (dialog == nullptr) return kNoCancelDialog;
  job.cancel_dialog = dialog;
  UpdateWindow(dialog);
  const int installed = SetAbortProc(job.dc, procedures.abort);
  if (installed < 0) return installed;
  job.has_abort_procedure = true;
  show_progress(job, job.document);
  return 0;
}

int start_document(PrintJob& job) {
  DOCINFOA document = {};
  document.cbSize = sizeof document;
  document.lpszDocName = job.document;
  job.document_is_open = StartDocA(job.dc, &document) >= 0;
  return job.document_is_open ? 0 : kNoDocument;
}

void measure_page(PrintJob& job) {
  const auto capability = [&](int index) { return GetDeviceCaps(job.dc, index); };
  job.x_dots_per_inch = static_cast<float>(capability(LOGPIXELSX));
  job.y_dots_per_inch = static_cast<float>(capability(LOGPIXELSY));
  const PrintablePage page =
      printable_page({capability(HORZRES), capability(VERTRES)}, {job.x_dots_per_inch, job.y_dots_per_inch});
  job.page_width = page.size.width;
  job.page_height = page.size.height;
  SetMapMode(job.dc, MM_TEXT);
}

void end_page(PrintJob& job) {
  if (std::exchange(job.page_is_open, false)) EndPage(job.dc);
}

// ---- A page ----

// The parts of a page.
struct Page {
  PrintJob& job;
  const DeviceDib& dib;
  HPALETTE palette;
  Rect image;    // in dots, before the page is moved
  POINT offset;  // the movement

  Size pixels() const { return {std::max(dib.header().width, 0), std::max(dib.header().height, 0)}; }
};

void draw(const Page& page, Rect dots, Rect pixels) {
  const WaitCursor cursor;
  const PaletteSelection selection(page.job.dc, page.palette);
  page.dib.stretch(page.job.dc, dots, pixels, SRCCOPY);
}

void draw_whole(const Page& page) {
  const auto [width, height] = page.pixels();
  if (width > 0 && height > 0) draw(page, page.image, {0, 0, width, height});
}

void draw_band(const Page& page, const RECT& band) {
  const Rect on_page = {static_cast<int>(band.left - page.offset.x), static_cast<int>(band.top - page.offset.y),
                        static_cast<int>(band.right - band.left), static_cast<int>(band.bottom - band.top)};
  const PlacedPart part = part_in_band(page.image, page.pixels(), on_page);
  if (part.dots.width > 0) draw(page, part.dots, part.pixels);
}

// Returns the device's code for a band that it does not deliver, else 0.
int draw_bands(const Page& page) {
  for (;;) {
    RECT band = {};
    const int given = Escape(page.job.dc, NEXTBAND, 0, nullptr, &band);
    if (given < 0) return given;
    if (IsRectEmpty(&band)) return 0;
    if (page.job.has_abort_procedure) let_messages_through(0);
    if (page.job.is_cancelled) return 0;
    draw_band(page, band);
  }
}

// The page is not ended between copies: the device decides whether each begins a sheet.
int print_copies(const Page& page) {
  PrintJob& job = page.job;
  const bool has_bands = (GetDeviceCaps(job.dc, RASTERCAPS) & RC_BANDING) != 0;
  int result = 0;
  for (int copy = 0; copy < job.options.copies && !job.is_cancelled && result == 0; ++copy) {
    if (StartPage(job.dc) < 1) {
      job.is_cancelled = true;
      break;
    }
    job.page_is_open = true;
    if (has_bands) {
      result = draw_bands(page);
    } else {
      draw_whole(page);
    }
  }
  return result;
}

// The document must still be ended; that call fails, which tells callers.
int abort_document(PrintJob& job) { return std::min(Escape(job.dc, ABORTDOC, 0, nullptr, nullptr), 0); }

void tell_page(const PrintJob& job, int index) {
  if (job.options.showPageProgress == 0 || job.cancel_dialog == nullptr) return;
  char text[kJobNameBytes + 50];
  const auto number = static_cast<int>(static_cast<unsigned>(index) + 1);
  std::snprintf(text, sizeof text, "%s  Page: %d / %d", job.document, number, job.page_count);
  show_progress(job, text);
}

Rect place(PrintJob& job, const DibHeader& header, const int* image_dpi) {
  const PrintablePage page = {{job.x_dots_per_inch, job.y_dots_per_inch}, {job.page_width, job.page_height}};
  const DotDensity resolution = image_resolution(job.options, image_dpi, header, page.resolution);
  const Size pixels = {std::max(header.width, 0), std::max(header.height, 0)};
  const auto [scale, dots] = place_image(job.options, pixels, resolution, page);
  job.x_scale = scale.x;
  job.y_scale = scale.y;
  return dots;
}

LONG negated(LONG value) { return static_cast<LONG>(0 - static_cast<ULONG>(value)); }

}  // namespace

PrintJob& current_job() { return *thread_job; }

int prepare_job(const JobRequest& request, const JobProcedures& procedures) {
  PrintJob& job = begin_job(request);
  if (const int code = obtain_printer(job, request, procedures.page_dialog)) return code;
  if (const int code = refuse_without_bitmaps(job)) return code;
  if (const int code = choose_job_dc(job)) return code;
  if (const int code = open_cancel_dialog(job, request.owner, procedures)) return code;
  if (const int code = start_document(job)) return code;
  measure_page(job);
  if (request.options != nullptr) *request.options = job.options;
  return 0;
}

int print_page(const PageRequest& request) {
  PrintJob& job = current_job();
  if (job.dc == nullptr) return 0;
  const auto locked = LockedDib::lock(request.dib);
  if (!locked) return code_of(Error::kLock);
  if (locked->header().size != kHeaderBytes) return code_of(Error::kFormat);
  const auto dib = DeviceDib::of(*locked);
  if (!dib) return code_of(Error::kMemory);

  if (!std::exchange(job.page_is_continued, false)) end_page(job);
  tell_page(job, request.index);
  SetMapMode(job.dc, MM_TEXT);
  SetWindowOrgEx(job.dc, negated(request.offset.x), negated(request.offset.y), nullptr);
  const auto palette = palette_of(*locked);  // true-colour pictures have none
  const Rect image = place(job, dib->header(), request.image_dpi);
  const int bands = print_copies({job, *dib, palette ? palette->get() : nullptr, image, request.offset});
  const int aborted = job.is_cancelled ? abort_document(job) : 0;
  return aborted < 0 ? aborted : bands;
}

void continue_page() { current_job().page_is_continued = true; }

int end_job(HDC printer_dc) {
  PrintJob& job = current_job();
  end_page(job);
  const bool has_document = std::exchange(job.document_is_open, false);
  const int result = has_document && EndDoc(job.dc) <= 0 ? kNotEnded : 0;

  const OwnedDc given(printer_dc != job.deleted_dc ? printer_dc : nullptr);
  const OwnedDc drawn_on(job.dc != printer_dc ? job.dc : nullptr);
  const bool has_other_printer = job.owns_printer_dc && job.printer_dc != job.dc && job.printer_dc != printer_dc;
  const OwnedDc printer(has_other_printer ? job.printer_dc : nullptr);
  close_cancel_dialog(job);
  HDC deleted = printer_dc != nullptr ? printer_dc : job.deleted_dc;
  job = PrintJob{};
  job.deleted_dc = deleted;
  return result;
}

bool let_messages_through(int spooler_code) {
  PrintJob& job = current_job();
  if (spooler_code != 0) job.is_cancelled = true;
  if (job.is_cancelled) {
    job.spooler_code = spooler_code;
    return false;
  }
  MSG message;
  while (!job.is_cancelled && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {  // for the application's own loop
      PostQuitMessage(static_cast<int>(message.wParam));
      break;
    }
    if (job.cancel_dialog != nullptr && IsDialogMessageA(job.cancel_dialog, &message)) continue;
    TranslateMessage(&message);
    DispatchMessageA(&message);
  }
  return !job.is_cancelled;
}

bool follow_cancel_dialog(HWND dialog, UINT message, LPARAM text) {
  switch (message) {
    case WM_INITDIALOG:
      EnableMenuItem(GetSystemMenu(dialog, FALSE), SC_CLOSE, MF_BYCOMMAND | MF_GRAYED);
      SetFocus(dialog);
      return true;
    case WM_COMMAND: current_job().is_cancelled = true; return true;
    case WM_SHOW_PROGRESS: SetDlgItemTextA(dialog, IDC_DOCUMENT, reinterpret_cast<LPCSTR>(text)); return true;
    default: return false;
  }
}

}  // namespace vorel::print
