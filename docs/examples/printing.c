// Printing. Windows only. Every job asks first, in the dialog "PRINTPAGE".
#include "examples.h"

// ---- Someone who answers the dialogs

static const char* expected_title;
static int button;
static HHOOK hook;

static void CALLBACK press_button(HWND window, UINT message, UINT_PTR timer, DWORD time) {
  (void)window, (void)message, (void)time;
  HWND dialog = FindWindowA("#32770", expected_title);
  if (dialog == NULL) return;
  KillTimer(NULL, timer);
  PostMessageA(dialog, WM_COMMAND, (WPARAM)button, 0);
}

static LRESULT CALLBACK notice(int code, WPARAM window, LPARAM details) {
  char title[40] = "";
  if (code == HCBT_ACTIVATE && GetWindowTextA((HWND)window, title, sizeof title) > 0 && strcmp(title, expected_title) == 0) {
    UnhookWindowsHookEx(hook);
    SetTimer(NULL, 0, 1, press_button);
  }
  return CallNextHookEx(hook, code, window, details);
}

// Presses a button of the next dialog with a title.
static void answer(const char* title, int with) {
  expected_title = title;
  button = with;
  hook = SetWindowsHookExA(WH_CBT, notice, NULL, GetCurrentThreadId());
}

// ---- What the default printer printed

// The printers of the tests print PostScript into files; the port is the path.
static void printed_file(char* path, size_t size) {
  char device[300];
  GetProfileStringA("windows", "device", "", device, sizeof device);
  const char* comma = strrchr(device, ',');
  snprintf(path, size, "Z:%s", comma != NULL ? comma + 1 : "");
}

static void empty_tray(void) {
  char path[300];
  printed_file(path, sizeof path);
  DeleteFileA(path);
}

static int pages_printed(void) {
  char path[300], line[1000];
  printed_file(path, sizeof path);
  FILE* file = fopen(path, "r");
  int pages = 0;
  while (file != NULL && fgets(line, sizeof line, file) != NULL) pages += strncmp(line, "%%Page: ", 8) == 0;
  if (file != NULL) fclose(file);
  empty_tray();
  return pages;
}

// ---- Jobs

static int print_letter(HWND owner, HGLOBAL dib) {
  HGLOBAL page[] = {dib, dib};
  //! [PrepareToPrint]
  ImgPrintOptions options = {0};
  options.showDialog = options.copies = options.useImageDpi = options.showPageProgress = 1;  // at true size
  int result = PrepareToPrint(owner, NULL, &options, "Letter", 2);
  for (int i = 0; i < 2 && result == 0; ++i) result = PrintDIBPage(page[i], NULL, 0, i, 0, 0);
  EndPrint(NULL);                                                                          // after a failure too
  if (result != 0 && result != IMG_E_NOTHING_TO_DO) return fail_with("printing", result);  // 30: the dialog was cancelled
  //! [PrepareToPrint]
  return 0;
}

static int prepare(HGLOBAL dib) {
  HWND owner = open_window(DefWindowProcA, 50, 50);
  empty_tray();
  answer("Print", IDCANCEL);
  int failed = print_letter(owner, dib);
  const int cancelled = pages_printed();
  answer("Print", IDOK);
  failed |= print_letter(owner, dib);
  close_window(owner);
  EXPECT(!failed && cancelled == 0 && pages_printed() == 2);
  return 0;
}

// A job of the default printer, after OK in its dialog.
static int begin(HWND owner) {
  empty_tray();
  answer("Print", IDOK);
  return PrepareToPrint(owner, NULL, NULL, "Letter", 1);
}

static int print_page(HGLOBAL dib) {
  HWND owner = open_window(DefWindowProcA, 50, 50);
  EXPECT(begin(owner) == 0);
  //! [PrintDIBPage]
  int dpi[] = {200, 100};  // a fax, whatever its header states
  int result = PrintDIBPage(dib, dpi, 0, 0, 0, 0);
  if (result != 0) return fail_with("PrintDIBPage", result);
  //! [PrintDIBPage]
  EndPrint(NULL);
  close_window(owner);
  EXPECT(pages_printed() == 1);
  return 0;
}

static int continue_page(HGLOBAL dib) {
  HWND owner = open_window(DefWindowProcA, 50, 50);
  EXPECT(begin(owner) == 0);
  //! [PrintPageContinue]
  int result = PrintDIBPage(dib, NULL, 0, 0, 0, 0);
  PrintPageContinue();  // the next picture goes on the same sheet, 1000 printer dots further down
  if (result == 0) result = PrintDIBPage(dib, NULL, 0, 0, 0, 1000);
  if (result != 0) return fail_with("PrintDIBPage", result);
  //! [PrintPageContinue]
  EndPrint(NULL);
  close_window(owner);
  EXPECT(pages_printed() == 1);
  return 0;
}

static int end(HGLOBAL dib) {
  HWND owner = open_window(DefWindowProcA, 50, 50);
  EXPECT(begin(owner) == 0);
  int result = PrintDIBPage(dib, NULL, 0, 0, 0, 0);
  //! [EndPrint]
  int ended = EndPrint(NULL);  // or the printer's DC, if PrepareToPrint was given one: it is deleted
  if (result == 0) result = ended;
  //! [EndPrint]
  close_window(owner);
  EXPECT(result == 0 && pages_printed() == 1);
  return 0;
}

static int print_dib(HGLOBAL dib) {
  HWND owner = open_window(DefWindowProcA, 50, 50);
  empty_tray();
  answer("Print", IDOK);
  //! [PrintDIB]
  // Asks for the printer, prints one page as large as it allows, and ends the job.
  int result = PrintDIB(owner, NULL, dib, "Letter", NULL, NULL, 0);
  if (result != 0 && result != IMG_E_NOTHING_TO_DO) return fail_with("PrintDIB", result);
  //! [PrintDIB]
  close_window(owner);
  EXPECT(result == 0 && pages_printed() == 1);
  return 0;
}

static int print_bitmap(HGLOBAL dib) {
  HWND owner = open_window(DefWindowProcA, 50, 50);
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  empty_tray();
  answer("Print", IDOK);
  //! [PrintImage]
  int dpi[] = {96, 96};  // as large as on the screen
  ImgPrintOptions options = {0};
  options.showDialog = options.copies = options.useImageDpi = 1;
  int result = PrintImage(owner, NULL, bitmap, NULL, "Drawing", dpi, &options, 0);
  if (result != 0 && result != IMG_E_NOTHING_TO_DO) return fail_with("PrintImage", result);
  //! [PrintImage]
  DeleteObject(bitmap);
  close_window(owner);
  EXPECT(result == 0 && pages_printed() == 1);
  return 0;
}

static int pages_until_cancelled(HGLOBAL dib) {
  int printed = 0;
  //! [PrintAbortProc]
  // Between pages: keeps the cancel dialog alive, and tells whether the job was cancelled.
  while (printed < 3 && PrintAbortProc(NULL, 0)) {
    if (PrintDIBPage(dib, NULL, 0, printed, 0, 0) != 0) break;
    ++printed;
  }
  //! [PrintAbortProc]
  return printed;
}

static int abort_procedure(HGLOBAL dib) {
  HWND owner = open_window(DefWindowProcA, 50, 50);
  EXPECT(begin(owner) == 0 && pages_until_cancelled(dib) == 3);
  EndPrint(NULL);
  EXPECT(pages_printed() == 3 && begin(owner) == 0);
  PostMessageA(FindWindowA("#32770", "Printing"), WM_COMMAND, IDCANCEL, 0);
  EXPECT(pages_until_cancelled(dib) == 0);
  EndPrint(NULL);
  empty_tray();
  close_window(owner);
  return 0;
}

// ---- Dialogs. A program with templates of its own gives its own instance in place of the library's.

static int cancel_dialog(HGLOBAL dib) {
  (void)dib;
  HWND owner = open_window(DefWindowProcA, 50, 50);
  char text[40] = "";
  //! [PrintCancelDlgProc]
  HINSTANCE templates = GetModuleHandleA(VOREL_FILE_NAME);
  HWND dialog = CreateDialogParamA(templates, "PRINTCANCELDLGBOX", owner, PrintCancelDlgProc, 0);
  if (dialog == NULL) return fail_with("CreateDialogParam", IMG_E_PARAMETER);
  SendMessageA(dialog, WM_USER + 1000, 0, (LPARAM) "Sheet 1 of 3");  // shown in control 121
  //! [PrintCancelDlgProc]
  GetDlgItemTextA(dialog, 121, text, sizeof text);
  DestroyWindow(dialog);
  close_window(owner);
  EXPECT(strcmp(text, "Sheet 1 of 3") == 0);
  return 0;
}

static int page_dialog(HGLOBAL dib) {
  (void)dib;
  HWND owner = open_window(DefWindowProcA, 50, 50);
  answer("Print", IDOK);
  //! [PrintPageProc]
  HINSTANCE templates = GetModuleHandleA(VOREL_FILE_NAME);
  HDC printer = (HDC)DialogBoxParamA(templates, "PRINTPAGE", owner, PrintPageProc, 0);
  if (printer == NULL) puts("The dialog was cancelled.");
  int dots_per_inch = GetDeviceCaps(printer, LOGPIXELSX);
  DeleteDC(printer);
  //! [PrintPageProc]
  close_window(owner);
  EXPECT(printer != NULL && dots_per_inch >= 150);
  return 0;
}

static int setup(HGLOBAL dib) {
  (void)dib;
  HWND owner = open_window(DefWindowProcA, 50, 50);
  answer("Printer Setup", IDCANCEL);
  //! [PrinterSetup]
  if (PrinterSetup(owner) == 0) puts("The default printer is unchanged.");
  //! [PrinterSetup]
  const int cancelled = expected_title != NULL && FindWindowA("#32770", "Printer Setup") == NULL;
  answer("Printer Setup", IDOK);
  const int accepted = PrinterSetup(owner);
  close_window(owner);
  EXPECT(cancelled && accepted == 1);
  return 0;
}

static int setup_dialog(HGLOBAL dib) {
  (void)dib;
  HWND owner = open_window(DefWindowProcA, 50, 50);
  answer("Printer Setup", IDOK);
  //! [PrinterSetupProc]
  HINSTANCE templates = GetModuleHandleA(VOREL_FILE_NAME);
  INT_PTR chosen = DialogBoxParamA(templates, "PRINTERSETUP", owner, PrinterSetupProc, 0);
  if (chosen != IDOK) puts("The default printer is unchanged.");
  //! [PrinterSetupProc]
  close_window(owner);
  EXPECT(chosen == IDOK);
  return 0;
}

const Example kPrintingExamples[] = {
    {"PrepareToPrint", 24, prepare},
    {"PrintDIBPage", 1, print_page},
    {"PrintPageContinue", 24, continue_page},
    {"EndPrint", 24, end},
    {"PrintDIB", 24, print_dib},
    {"PrintImage", 24, print_bitmap},
    {"PrintAbortProc", 24, abort_procedure},
    {"PrintCancelDlgProc", 24, cancel_dialog},
    {"PrintPageProc", 24, page_dialog},
    {"PrinterSetup", 24, setup},
    {"PrinterSetupProc", 24, setup_dialog},
    {NULL, 0, NULL},
};
