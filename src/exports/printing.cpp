// Printing, and the choice of a printer.
#include <vorel32.h>

#include "dib/device_bitmap.h"
#include "exports/boundary.h"
#include "print/job.h"
#include "print/page_dialog.h"
#include "print/setup_dialog.h"

using namespace vorel;

namespace {

constexpr int kNotConverted = 1;

// Error codes are returned; none is stored.
template <class Body>
int code_at_boundary(Body body) {
  const auto memory = static_cast<int>(Error::kMemory);
  struct Nobody {
    void report(Error) const {}
  };
  return at_boundary(
      Nobody{}, [&]() -> Result<int> { return int{body()}; }, memory);
}

template <class Body>
BOOL flag_at_boundary(Body body) {
  return at_silent_boundary([&]() -> Result<BOOL> { return BOOL{body()}; });
}

}  // namespace

extern "C" {

int VORELCALL PrepareToPrint(HWND owner, HDC printerDC, ImgPrintOptions* options, LPCSTR documentName, int pageCount) {
  return code_at_boundary([&] {
    return print::prepare_job({owner, printerDC, options, documentName, pageCount},
                              {PrintPageProc, PrintCancelDlgProc, PrintAbortProc});
  });
}

int VORELCALL PrintDIBPage(HGLOBAL dib, int* imageDpi, int, int pageIndex, int xOffset, int yOffset) {
  return code_at_boundary([&] { return print::print_page({dib, imageDpi, pageIndex, {xOffset, yOffset}}); });
}

void VORELCALL PrintPageContinue(void) { print::continue_page(); }

int VORELCALL EndPrint(HDC printerDC) {
  return code_at_boundary([&] { return print::end_job(printerDC); });
}

int VORELCALL PrintDIB(HWND owner, HDC printerDC, HGLOBAL dib, LPCSTR documentName, int* imageDpi, ImgPrintOptions* options,
                       int pageTag) {
  int result = PrepareToPrint(owner, printerDC, options, documentName, 1);
  if (result == 0) result = PrintDIBPage(dib, imageDpi, pageTag, 0, 0, 0);
  const int ended = EndPrint(printerDC);
  return result != 0 ? result : ended;
}

int VORELCALL PrintImage(HWND owner, HDC printerDC, HBITMAP bitmap, HPALETTE palette, LPCSTR documentName, int* imageDpi,
                         ImgPrintOptions* options, int pageTag) {
  return code_at_boundary([&] {
    const OwnedBlock dib(ConvertBitmapToDIB(bitmap, palette));
    return dib.get() == nullptr ? kNotConverted
                                : PrintDIB(owner, printerDC, dib.get(), documentName, imageDpi, options, pageTag);
  });
}

BOOL VORELCALL PrintAbortProc(HDC, int code) {
  return flag_at_boundary([&] { return print::let_messages_through(code); });
}

INT_PTR VORELCALL PrintCancelDlgProc(HWND dialog, UINT message, WPARAM, LPARAM lParam) {
  return flag_at_boundary([&] { return print::follow_cancel_dialog(dialog, message, lParam); });
}

INT_PTR VORELCALL PrintPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
  return flag_at_boundary([&] { return print::follow_page_dialog(dialog, message, wParam); });
}

int VORELCALL PrinterSetup(HWND owner) { return print::run_setup_dialog(owner, PrinterSetupProc); }

INT_PTR VORELCALL PrinterSetupProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
  return flag_at_boundary([&] { return print::follow_setup_dialog(dialog, message, wParam); });
}

}  // extern "C"
