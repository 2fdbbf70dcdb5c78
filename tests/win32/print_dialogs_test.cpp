// The dialogs "PRINTPAGE" and "PRINTCANCELDLGBOX", failures, cancelling and bands: jobs on printers that are doubles in part.
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
#include <winspool.h>

#include <vorel32.h>

#include "win32/support/dialog.h"
#include "win32/support/imports.h"
#include "win32/support/printer.h"

using namespace test;
using testing::ElementsAre;

namespace {

constexpr int kPrinters = 1000, kDocument = 121, kCopies = 116;

ImgPrintOptions watched() {
  ImgPrintOptions options = silent_options();
  options.silent = 0;
  return options;
}

// An owner for dialogs, that is free again afterwards; nothing else stays either.
class Printing : public testing::Test {
 protected:
  ~Printing() override {
    EXPECT_TRUE(IsWindowEnabled(owner_));
    EXPECT_EQ(windows_of_thread(), windows_);
    DestroyWindow(owner_);
  }

  int prepare(HDC dc, ImgPrintOptions* options) { return PrepareToPrint(owner_, dc, options, "Doc & name", 9); }
  int print(int index = 0) { return PrintDIBPage(dib_.get(), nullptr, 0, index, 0, 0); }

  HWND owner_ = CreateWindowA("STATIC", "owner", WS_POPUP | WS_VISIBLE, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr);
  Block dib_ = block_of(signed_picture(40, 20, 8));
  const int windows_ = windows_of_thread();
};

// ---- "PRINTPAGE" ----

constexpr int kBoxes[] = {500, 120, 119, 117, 118, 122};

std::vector<int> checks_of(HWND dialog) {
  std::vector<int> checks;
  for (const int box : kBoxes) checks.push_back(static_cast<int>(IsDlgButtonChecked(dialog, box)));
  return checks;
}

TEST_F(Printing, DialogShowsTheDefaultsAndInsistsOnCopies) {
  char device[300];
  GetProfileStringA("windows", "device", "", device, sizeof device);
  WithDialog dialog("Print", [&](HWND window) {
    EXPECT_FALSE(IsWindowEnabled(owner_));
    EXPECT_EQ(text_of(window, kDocument), "Doc & name");
    EXPECT_GE(send(window, kPrinters, CB_GETCOUNT), 3);
    EXPECT_EQ(text_of(window, kPrinters), std::string(device).substr(0, std::string(device).find(',')));
    EXPECT_EQ(text_of(window, kCopies), "1");
    EXPECT_THAT(checks_of(window), ElementsAre(1, 1, 1, 1, 0, 1));
    for (const char* copies : {"0", "-1", "two", ""}) {
      SetFocus(GetDlgItem(window, IDOK));
      SetDlgItemTextA(window, kCopies, copies);
      press(window, IDOK);
      EXPECT_EQ(GetFocus(), GetDlgItem(window, kCopies)) << copies;
    }
    SetDlgItemTextA(window, kCopies, "3");
    press(window, IDOK);
  });
  EXPECT_EQ(prepare(nullptr, nullptr), 0);
  EXPECT_TRUE(dialog.was_there());
  EXPECT_EQ(print(), 0);
  EXPECT_EQ(EndPrint(nullptr), 0);
}

TEST_F(Printing, DialogGivesItsChoicesBack) {
  ImgPrintOptions options = watched();
  options.showDialog = options.centreVertically = options.stretchToPage = 1;
  options.copies = 7;
  {
    WithDialog dialog("Print", [](HWND window) {
      EXPECT_THAT(checks_of(window), ElementsAre(0, 1, 0, 0, 1, 1));
      for (const int box : kBoxes) CheckDlgButton(window, box, !IsDlgButtonChecked(window, box));
      const auto name = printer_name(600);
      const LRESULT item = send(window, kPrinters, CB_FINDSTRINGEXACT, 0, reinterpret_cast<LPARAM>(name.c_str()));
      send(window, kPrinters, CB_SETCURSEL, static_cast<WPARAM>(item));
      SetDlgItemTextA(window, kCopies, "2");
      press(window, IDOK);
    });
    EXPECT_EQ(prepare(nullptr, &options), 0);
  }
  const int values[] = {options.useImageDpi,       options.centreVertically, options.centreHorizontally,
                        options.fitProportionally, options.stretchToPage,    options.showPageProgress};
  EXPECT_THAT(values, ElementsAre(1, 0, 1, 1, 0, 0));
  EXPECT_EQ(options.copies, 2);

  // While the job goes on its printer is the only one on offer.
  WithDialog again("Print", [](HWND window) {
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(window, kPrinters)));
    EXPECT_EQ(send(window, kPrinters, CB_GETCOUNT), 1);
    EXPECT_EQ(text_of(window, kPrinters), printer_name(600));
    press(window, IDOK);
  });
  HINSTANCE library = GetModuleHandleA(VOREL_FILE_NAME);
  HDC dc = reinterpret_cast<HDC>(DialogBoxParamA(library, "PRINTPAGE", owner_, PrintPageProc, 0));
  EXPECT_TRUE(again.was_there());
  EXPECT_EQ(GetDeviceCaps(dc, LOGPIXELSX), 600);
  DeleteDC(dc);
  EXPECT_EQ(EndPrint(nullptr), 0);
}

TEST_F(Printing, CancelledDialogLeavesTheOptions) {
  ImgPrintOptions options = watched();
  options.showDialog = 1;
  WithDialog dialog("Print", [](HWND window) {
    CheckDlgButton(window, kBoxes[0], BST_CHECKED);
    press(window, IDCANCEL);
  });
  EXPECT_EQ(prepare(nullptr, &options), IMG_E_NOTHING_TO_DO);
  EXPECT_EQ(options.useImageDpi, 0);
  EXPECT_EQ(print(), 0) << "there is no job";
}

// What the system keeps from its first times does not count.
TEST_F(Printing, DialogsLeaveNothing) {
  size_t objects = 0;
  for (int round = 0; round < 4; ++round) {
    for (const int button : {IDCANCEL, IDOK}) {
      WithDialog dialog("Print", [&](HWND window) {
        SetDlgItemTextA(window, kCopies, "0");
        press(window, IDOK);
        SetDlgItemTextA(window, kCopies, "1");
        press(window, button);
      });
      EXPECT_EQ(PrintDIB(owner_, nullptr, dib_.get(), "Doc", nullptr, nullptr, 0), button == IDOK ? 0 : IMG_E_NOTHING_TO_DO);
    }
    if (round == 1) objects = gdi_objects();
  }
  EXPECT_EQ(gdi_objects(), objects);
}

const char* server_name = nullptr;
BOOL WINAPI one_printer(DWORD flags, LPSTR, DWORD level, LPBYTE data, DWORD size, LPDWORD needed, LPDWORD count) {
  EXPECT_EQ(flags, 6u);
  *needed = sizeof(PRINTER_INFO_2A);
  *count = 0;
  if (size < *needed) return FALSE;
  *count = 1;
  const auto text = [](const char* value) { return const_cast<char*>(value); };
  if (level == 1) {
    *reinterpret_cast<PRINTER_INFO_1A*>(data) = {
        .Flags = 0, .pDescription = nullptr, .pName = text("Shown"), .pComment = nullptr};
  } else {
    PRINTER_INFO_2A record = {};
    record.pServerName = text(server_name);
    record.pPrinterName = text("Plain");
    record.pShareName = text("Shared");
    *reinterpret_cast<PRINTER_INFO_2A*>(data) = record;
  }
  return TRUE;
}
BOOL WINAPI no_printers(DWORD, LPSTR, DWORD, LPBYTE, DWORD, LPDWORD needed, LPDWORD count) {
  *needed = *count = 0;
  return TRUE;
}
std::string asked_for;
HDC WINAPI no_dc(LPCSTR driver, LPCSTR device, LPCSTR, const DEVMODEA*) {
  asked_for = std::string(driver) + ": " + device;
  return nullptr;
}

TEST_F(Printing, DialogKnowsServersAndEmptySystems) {
  const Replacement unmade("CreateDCA", no_dc);
  for (const auto& [server, wanted] : {std::pair{"\\\\server", "WINSPOOL: \\\\server\\Shared"}, {"", "WINSPOOL: Plain"}}) {
    server_name = server;
    const Replacement printers("EnumPrintersA", one_printer);
    WithDialog dialog("Print", [](HWND window) {
      EXPECT_EQ(send(window, kPrinters, CB_GETCURSEL), CB_ERR) << "it is not the default printer";
      send(window, kPrinters, CB_SETCURSEL, 0);
      EXPECT_EQ(text_of(window, kPrinters), "Shown");
      press(window, IDOK);
    });
    EXPECT_EQ(prepare(nullptr, nullptr), IMG_E_NOTHING_TO_DO);
    EXPECT_EQ(asked_for, wanted);
  }
  const Replacement printers("EnumPrintersA", no_printers);
  WithDialog dialog("Print", [](HWND window) {
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(window, IDOK)));
    press(window, IDCANCEL);
  });
  EXPECT_EQ(prepare(nullptr, nullptr), IMG_E_NOTHING_TO_DO);
}

// ---- "PRINTCANCELDLGBOX" ----

HWND cancel_dialog() { return FindWindowA("#32770", "Printing"); }

int starts = 0, escapes = 0;
int WINAPI counted_start(HDC dc) {
  ++starts;
  return StartPage(dc);
}
int WINAPI aborting_escape(HDC, int escape, int, LPCSTR, LPVOID) {
  if (escape == ABORTDOC) ++escapes;
  return escape == ABORTDOC ? -3 : 0;
}

TEST_F(Printing, CancelDialogTellsPagesAndCancels) {
  ImgPrintOptions options = watched();
  options.copies = 2;
  HDC dc = printer_dc(300);
  ASSERT_EQ(prepare(dc, &options), 0);
  HWND dialog = cancel_dialog();
  ASSERT_NE(dialog, nullptr);
  EXPECT_TRUE(IsWindowVisible(dialog) && IsWindowEnabled(owner_));
  EXPECT_EQ(GetWindow(dialog, GW_OWNER), owner_);
  EXPECT_EQ(text_of(dialog, kDocument), "Doc & name");
  EXPECT_TRUE(GetMenuState(GetSystemMenu(dialog, FALSE), SC_CLOSE, MF_BYCOMMAND) & MF_GRAYED);

  const Replacement counting("StartPage", counted_start), escaping("Escape", aborting_escape);
  starts = escapes = 0;
  EXPECT_EQ(print(2), 0);
  EXPECT_EQ(text_of(dialog, kDocument), "Doc & name  Page: 3 / 9");
  EXPECT_EQ(starts, 2);

  PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
  PostQuitMessage(17);
  EXPECT_FALSE(PrintAbortProc(dc, 0));
  EXPECT_EQ(print(3), -3);
  EXPECT_EQ(starts, 2) << "no more pages";
  EXPECT_EQ(escapes, 1);
  EXPECT_EQ(EndPrint(dc), 0);
  EXPECT_EQ(cancel_dialog(), nullptr);
  EXPECT_EQ(EndPrint(dc), 0) << "a second time";
  MSG message = {};
  while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT) {
  }
  EXPECT_EQ(message.wParam, 17u) << "the application's own loop must learn of its end";
}

int messages = 0;
LRESULT CALLBACK counting_window(HWND window, UINT message, WPARAM wide, LPARAM value) {
  messages += message == WM_APP;
  return DefWindowProcA(window, message, wide, value);
}

TEST_F(Printing, AbortProcedureFollowsTheSpooler) {
  ImgPrintOptions options = watched();
  HDC dc = printer_dc(300);
  ASSERT_EQ(prepare(dc, &options), 0);
  SetWindowLongPtrA(owner_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(counting_window));
  messages = 0;
  PostMessageA(owner_, WM_APP, 0, 0);
  PostMessageA(owner_, WM_APP, 0, 0);
  EXPECT_TRUE(PrintAbortProc(dc, 0));
  EXPECT_EQ(messages, 2);
  EXPECT_FALSE(PrintAbortProc(dc, SP_OUTOFDISK));
  EXPECT_FALSE(PrintAbortProc(dc, 0));
  EXPECT_EQ(EndPrint(dc), 0);
}

TEST_F(Printing, SilentJobsHaveNoDialog) {
  ImgPrintOptions options = silent_options();
  HDC dc = printer_dc(300);
  ASSERT_EQ(prepare(dc, &options), 0);
  EXPECT_EQ(cancel_dialog(), nullptr);
  EXPECT_EQ(print(), 0);
  EXPECT_EQ(EndPrint(dc), 0);
}

// ---- Failures ----

int raster_capabilities = 0;
int WINAPI limited_caps(HDC dc, int index) { return index == RASTERCAPS ? raster_capabilities : GetDeviceCaps(dc, index); }
HWND WINAPI no_window(HINSTANCE, LPCSTR, HWND, DLGPROC, LPARAM) { return nullptr; }
INT_PTR WINAPI no_dialog(HINSTANCE, LPCSTR, HWND, DLGPROC, LPARAM) { return -1; }
int WINAPI no_abort_procedure(HDC, ABORTPROC) { return -7; }
int WINAPI no_document(HDC, const DOCINFOA*) { return -4; }
int WINAPI document_unsaid(HDC, const DOCINFOA*) { return 0; }
int WINAPI no_page(HDC) { return 0; }
int WINAPI no_end(HDC) { return -1; }
int WINAPI no_band(HDC, int escape, int, LPCSTR, LPVOID) { return escape == NEXTBAND ? -6 : 0; }
HDC WINAPI no_memory_dc(HDC) { return nullptr; }
HPALETTE WINAPI no_palette(const LOGPALETTE*) { return nullptr; }

template <class Function>
std::pair<const char*, void (*)()> fails(const char* import, Function* function) {
  return {import, reinterpret_cast<void (*)()>(function)};
}

TEST_F(Printing, EveryFailureHasItsCodeAndLeavesNothing) {
  const struct {
    std::pair<const char*, void (*)()> failure;
    int prepared, printed, ended;
    int raster = RC_BITBLT;
  } cases[] = {
      {fails("GetDeviceCaps", limited_caps), 1, 0, 0, RC_STRETCHDIB},
      {fails("CreateDialogParamA", no_window), -5, 0, 0},
      {fails("SetAbortProc", no_abort_procedure), -7, 0, 0},
      {fails("StartDocA", no_document), -1, 0, 0},
      {fails("StartDocA", document_unsaid), 0, 0, -1},
      {fails("StartPage", no_page), 0, 0, 0},
      {fails("EndDoc", no_end), 0, 0, -1},
      {fails("CreatePalette", no_palette), 0, 0, 0},
      {fails("CreateCompatibleDC", no_memory_dc), IMG_E_PRINTER_DC, 0, 0},
  };
  DeleteDC(printer_dc(300));  // whatever the system keeps from the first time
  const size_t objects = gdi_objects();
  for (const auto& [failure, prepared, printed, ended, raster] : cases) {
    SCOPED_TRACE(failure.first);
    raster_capabilities = raster;
    const Replacement failing(failure.first, failure.second);
    ImgPrintOptions options = watched(), before = options;
    options.copies = before.copies = 5;
    options.useMemoryDC = before.useMemoryDC = prepared == IMG_E_PRINTER_DC;
    HDC dc = printer_dc(300);
    EXPECT_EQ(prepare(dc, &options), prepared);
    EXPECT_EQ(prepared == 0 ? print() : printed, printed);
    EXPECT_EQ(EndPrint(dc), ended);
    EXPECT_EQ(EndPrint(dc), 0);
    EXPECT_EQ(GetObjectType(dc), 0u) << "the printer's context is gone";
    EXPECT_EQ(cancel_dialog(), nullptr);
    EXPECT_EQ(gdi_objects(), objects);
    EXPECT_EQ(std::memcmp(&options, &before, sizeof before), 0);

    dc = printer_dc(300);
    EXPECT_EQ(PrintDIB(owner_, dc, dib_.get(), "Doc", nullptr, &options, 0), prepared != 0 ? prepared : ended);
    EXPECT_EQ(gdi_objects(), objects);
  }
  ImgPrintOptions options = silent_options();
  {
    const Replacement failing("CreateDCA", no_dc);
    EXPECT_EQ(prepare(nullptr, &options), IMG_E_PRINTER_DC);
  }
  const Replacement failing("DialogBoxParamA", no_dialog);
  EXPECT_EQ(prepare(nullptr, nullptr), IMG_E_PRINTER_DC);
}

int WINAPI aborted_escape(HDC, int escape, int, LPCSTR, LPVOID) { return escape == ABORTDOC ? 1 : 0; }

// A page that does not start cancels the job.
TEST_F(Printing, ACancelledJobFailsWhereTheDeviceHasDroppedTheDocument) {
  const Replacement starting("StartPage", no_page), escaping("Escape", aborted_escape), ending("EndDoc", no_end);
  ImgPrintOptions options = silent_options();
  EXPECT_EQ(PrintDIB(owner_, printer_dc(300), dib_.get(), "Doc", nullptr, &options, 0), -1);
}

TEST_F(Printing, WhatIsNoDibIsNotPrinted) {
  ImgPrintOptions options = silent_options();
  HDC dc = printer_dc(300);
  ASSERT_EQ(prepare(dc, &options), 0);
  const Replacement counting("StartPage", counted_start);
  starts = 0;
  EXPECT_EQ(PrintDIBPage(nullptr, nullptr, 0, 0, 0, 0), IMG_E_LOCK);
  EXPECT_EQ(PrintDIBPage(dead_handle(), nullptr, 0, 0, 0, 0), IMG_E_LOCK);
  EXPECT_EQ(PrintDIBPage(block_of(Bytes(12)).get(), nullptr, 0, 0, 0, 0), IMG_E_FORMAT);
  EXPECT_EQ(starts, 0);
  EXPECT_EQ(PrintDIBPage(block_of(with_header(header_for(30, 0, 24))).get(), nullptr, 0, 0, 0, 0), 0);
  EXPECT_EQ(PrintDIBPage(block_of(with_header(header_for(30, -20, 8), Bytes(9))).get(), nullptr, 0, 0, INT_MIN, 0), 0);
  EXPECT_EQ(starts, 2) << "pages without an image";
  EXPECT_EQ(EndPrint(dc), 0);
}

// ---- Bands ----

// A printer that is a bitmap in memory: 200 x 300 dots, 100 to the inch, in bands of some rows.
constexpr int kDots[] = {200, 300};
int band_rows = 0, next_band = 0;
int WINAPI memory_caps(HDC, int index) {
  switch (index) {
    case RASTERCAPS: return RC_BITBLT | (band_rows != 0 ? RC_BANDING : 0);
    case LOGPIXELSX:
    case LOGPIXELSY: return 100;
    case HORZRES: return kDots[0];
    case VERTRES: return kDots[1];
    case BITSPIXEL: return 24;
    default: return 1;
  }
}
int WINAPI bands_escape(HDC, int escape, int, LPCSTR, LPVOID out) {
  if (escape != NEXTBAND) return 0;
  auto* band = static_cast<RECT*>(out);
  *band = {0, next_band, kDots[0], std::min<LONG>(next_band + band_rows, kDots[1])};
  if (next_band >= kDots[1]) *band = {};
  next_band += band_rows;
  return 1;
}
int WINAPI succeeds(HDC) { return 1; }
int WINAPI document_starts(HDC, const DOCINFOA*) { return 1; }

class Bands : public Printing {
 protected:
  // The page as it comes out, in bands of so many rows, or whole.
  Bytes page(int rows, const ImgPrintOptions& wanted, int* dpi, POINT offset) {
    band_rows = rows;
    next_band = 0;
    const BITMAPINFOHEADER header = header_for(kDots[0], kDots[1], 24);
    void* bits = nullptr;
    const Object<HBITMAP> bitmap(
        CreateDIBSection(nullptr, reinterpret_cast<const BITMAPINFO*>(&header), DIB_RGB_COLORS, &bits, nullptr, 0));
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ before = SelectObject(dc, bitmap.get());
    PatBlt(dc, 0, 0, kDots[0], kDots[1], WHITENESS);
    ImgPrintOptions options = wanted;
    EXPECT_EQ(prepare(dc, &options), 0);
    EXPECT_EQ(PrintDIBPage(picture_.get(), dpi, 0, 0, offset.x, offset.y), 0);
    SelectObject(dc, before);
    EXPECT_EQ(EndPrint(dc), 0);
    const auto* first = static_cast<const uint8_t*>(bits);
    return Bytes(first, first + stride_of(kDots[0], 24) * static_cast<size_t>(kDots[1]));
  }

  const Replacement caps_{"GetDeviceCaps", memory_caps}, escape_{"Escape", bands_escape}, start_{"StartPage", succeeds},
      end_{"EndPage", succeeds}, document_{"StartDocA", document_starts}, document_end_{"EndDoc", succeeds};
  const Block picture_ = block_of(noise(60, 90, 8));
};

TEST_F(Bands, AddUpToTheUnbandedPage) {
  ImgPrintOptions options = silent_options();
  options.useImageDpi = 1;
  for (const int rows : {2, 30, 100, 1000})
    for (POINT offset : {POINT{0, 0}, {-30, 20}, {150, 260}})
      for (const int enlarged : {1, 2}) {  // so that bands begin with a pixel
        SCOPED_TRACE(testing::Message() << rows << " rows, " << offset.x << ", " << enlarged << " times");
        int dpi[] = {100 / enlarged, 100 / enlarged};
        const Bytes whole = page(0, options, dpi, offset);
        EXPECT_NE(std::count(whole.begin(), whole.end(), 255), std::ssize(whole));
        EXPECT_TRUE(page(rows, options, dpi, offset) == whole);
      }
  options.fitProportionally = options.centreHorizontally = options.centreVertically = 1;
  EXPECT_TRUE(page(10, options, nullptr, {}) == page(0, options, nullptr, {})) << "90 pixels on 300 dots, 10 for 3";
}

// A cancel dialog pressed between two bands, and a device that fails.
int WINAPI cancelling_escape(HDC dc, int escape, int size, LPCSTR in, LPVOID out) {
  if (next_band == 2 * band_rows && cancel_dialog() != nullptr) press(cancel_dialog(), IDCANCEL);
  return bands_escape(dc, escape, size, in, out);
}
TEST_F(Bands, EndWhenTheJobIsCancelledOrTheDeviceFails) {
  {
    const Replacement cancelling("Escape", cancelling_escape);
    page(20, watched(), nullptr, {});
    EXPECT_EQ(next_band, 60) << "the third band is asked for and not drawn";
  }
  const Replacement failing("Escape", no_band);
  band_rows = 10;
  HDC dc = CreateCompatibleDC(nullptr);
  ImgPrintOptions options = silent_options();
  options.copies = 3;
  EXPECT_EQ(PrintDIB(owner_, dc, picture_.get(), "Doc", nullptr, &options, 0), -6);
}

}  // namespace
