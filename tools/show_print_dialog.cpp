// Shows one of the library's printing dialogs for a while, then cancels it. usage: show_print_dialog page|cancel|setup [SECONDS]
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <vorel32.h>

namespace {

const char* title = nullptr;

void CALLBACK cancel_dialog(HWND, UINT, UINT_PTR, DWORD) {
  HWND dialog = FindWindowA(nullptr, title);
  if (dialog != nullptr) PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
}

// A job of nothing, so that its dialog stays: the abort procedure lets messages through until it is cancelled.
int show_cancel_dialog() {
  ImgPrintOptions options = {};
  options.copies = options.showPageProgress = 1;
  const int result = PrepareToPrint(nullptr, nullptr, &options, "Order & invoice 2026-11.tif", 12);
  HGLOBAL dib = GlobalAlloc(GHND, 40 + 8 + 4);
  auto* header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
  header->biSize = sizeof *header;
  header->biWidth = header->biHeight = header->biPlanes = header->biBitCount = 1;
  GlobalUnlock(dib);
  PrintDIBPage(dib, nullptr, 0, 6, 0, 0);
  while (result == 0 && PrintAbortProc(nullptr, 0)) Sleep(20);
  EndPrint(nullptr);
  GlobalFree(dib);
  return result;
}

}  // namespace

int main(int count, char** arguments) {
  const char* which = count > 1 ? arguments[1] : "";
  SetTimer(nullptr, 0, 1000 * static_cast<UINT>(count > 2 ? std::atoi(arguments[2]) : 3), cancel_dialog);
  if (std::strcmp(which, "page") == 0) {
    title = "Print";
    return PrepareToPrint(nullptr, nullptr, nullptr, "Order & invoice 2026-11.tif", 1) != IMG_E_NOTHING_TO_DO;
  }
  if (std::strcmp(which, "cancel") == 0) {
    title = "Printing";
    return show_cancel_dialog();
  }
  if (std::strcmp(which, "setup") == 0) {
    title = "Printer Setup";
    return PrinterSetup(nullptr);
  }
  std::fprintf(stderr, "usage: show_print_dialog page|cancel|setup [SECONDS]\n");
  return 2;
}
