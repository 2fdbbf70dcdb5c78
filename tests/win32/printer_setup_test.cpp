// The dialog "PRINTERSETUP" over a profile of the test's own, and drivers that are doubles.
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <windows.h>
#include <winspool.h>

#include <vorel32.h>

#include "win32/support/dialog.h"
#include "win32/support/imports.h"
#include "win32/support/message_box.h"
#include "win32/support/printer.h"

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kList = 122, kSetup = 115;

// ---- A profile ----

std::map<std::string, std::string> devices, windows;
std::string written;
DWORD counted_zeros = 0;  // in the length of names that are cut off; systems differ

DWORD copied(const std::string& text, LPSTR out, DWORD size) {
  const auto count = std::min<size_t>(text.size(), size - 1);
  std::copy_n(text.begin(), count, out);
  out[count] = '\0';
  return static_cast<DWORD>(count);
}

DWORD WINAPI profile_text(LPCSTR section, LPCSTR key, LPCSTR, LPSTR out, DWORD size) {
  const auto& values = std::string(section) == "devices" ? devices : windows;
  if (key != nullptr) {
    EXPECT_TRUE(&values == &windows || size == 109);
    return copied(values.contains(key) ? values.at(key) : "", out, size);
  }
  EXPECT_EQ(size, 1090u);
  std::string names;
  for (const auto& [name, value] : values) names += name + '\0';
  std::fill_n(out, size, '\0');
  const auto count = std::min<size_t>(names.size(), size - 2);
  std::copy_n(names.begin(), count, out);
  return static_cast<DWORD>(count) + (count < names.size() ? counted_zeros : 0);
}

BOOL WINAPI profile_write(LPCSTR section, LPCSTR key, LPCSTR value) {
  written += std::string(section) + "." + key + "=" + value;
  return TRUE;
}

class PrinterSetupDialog : public testing::Test {
 protected:
  PrinterSetupDialog() {
    devices = {{"Laser", "HPPCL,LPT1:,FILE:"}, {"Plotter", "plot.dll,None"}};
    windows = {{"device", "Laser,HPPCL,FILE:"}};
    written.clear();
  }
  ~PrinterSetupDialog() override { EXPECT_EQ(windows_of_thread(), windows_); }

  // Runs the dialog and returns what it ends with.
  int run(const std::function<void(HWND)>& action = [](HWND dialog) { press(dialog, IDCANCEL); }) {
    const WithDialog dialog("Printer Setup", action);
    return PrinterSetup(nullptr);
  }

  static std::vector<std::string> entries(HWND dialog) {
    std::vector<std::string> found;
    for (LRESULT i = 0; i < send(dialog, kList, LB_GETCOUNT); ++i) {
      char text[400];
      send(dialog, kList, LB_GETTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text));
      found.push_back(text);
    }
    return found;
  }
  static void select(HWND dialog, int index) { send(dialog, kList, LB_SETCURSEL, static_cast<WPARAM>(index)); }
  static LRESULT selection(HWND dialog) { return send(dialog, kList, LB_GETCURSEL); }

  int windows_ = windows_of_thread();
  const Replacement reading_{"GetProfileStringA", profile_text}, writing_{"WriteProfileStringA", profile_write};
  const MessageBoxes boxes_;
};

TEST_F(PrinterSetupDialog, ListsPortsAndWritesTheDefault) {
  EXPECT_EQ(run([](HWND dialog) {
              EXPECT_THAT(entries(dialog),
                          ElementsAre("Laser on LPT1:\tLaser=HPPCL,LPT1:", "Laser on FILE:\tLaser=HPPCL,FILE:",
                                      "Plotter on None\tPlotter=plot.dll,None"));
              EXPECT_EQ(selection(dialog), 1);
              windows["device"] = "Laser,HPPCL,LPT1:";
              SendMessageA(dialog, WM_USER + 301, 0, 0);
              EXPECT_EQ(selection(dialog), 0);
              windows["device"] = "Laser,HPPCL,LPT";
              SendMessageA(dialog, WM_USER + 301, 0, 0);
              EXPECT_EQ(selection(dialog), LB_ERR);
              press(dialog, IDOK);  // nothing is selected: the dialog stays
              windows["NullPort"] = "none";
              SendMessageA(dialog, WM_USER + 300, 0, 0);
              EXPECT_EQ(entries(dialog).size(), 2u);
              select(dialog, 0);
              SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(kList, LBN_SELCHANGE), 0);
              EXPECT_EQ(written, "");
              SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(kList, LBN_DBLCLK), 0);
            }),
            IDOK);
  EXPECT_EQ(written, "windows.device=Laser,HPPCL,LPT1:");
  EXPECT_THAT(boxes_.seen(), IsEmpty());
  written.clear();
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(written, "");
}

TEST_F(PrinterSetupDialog, TellsOfTooManyPrintersAndOfNone) {
  for (int i = 100; i < 200; ++i) devices["Printer " + std::to_string(i)] = "D,P";
  for (counted_zeros = 0; counted_zeros < 2; ++counted_zeros) {
    size_t listed = 0;
    run([&](HWND dialog) {
      listed = entries(dialog).size();
      press(dialog, IDCANCEL);
    });
    EXPECT_EQ(listed, 2u + 89 + 1) << "1088 bytes hold two names and 89 of 12 bytes; the 90th is cut and no printer";
  }
  devices.clear();
  EXPECT_EQ(run(), 0);
  const std::string too_many = ": Too many printers installed.\tList truncated.";
  EXPECT_THAT(boxes_.seen(), ElementsAre(too_many, too_many, ": No printers installed."));
}

LPVOID WINAPI no_alloc(UINT, SIZE_T) { return nullptr; }
TEST_F(PrinterSetupDialog, NeedsMemory) {
  const Replacement failing("GlobalAlloc", no_alloc);
  EXPECT_EQ(run(), 0);
  EXPECT_THAT(boxes_.seen(), ElementsAre(": Insufficient memory."));
}

// ---- Drivers ----

std::string calls;
HMODULE WINAPI no_library(LPCSTR name) {
  calls += std::string(name) + ";";
  return nullptr;
}

LONG answer = 0;
const char* entry_point = nullptr;
DEVMODEA landscape() {
  DEVMODEA mode = {};
  mode.dmSize = sizeof mode;
  mode.dmSpecVersion = 0x401;
  mode.dmFields = DM_ORIENTATION;
  mode.dmOrientation = DMORIENT_LANDSCAPE;
  return mode;
}
LONG answered(DEVMODEA* mode, DWORD flags) {
  if (flags == 0) return answer < -1 ? answer : LONG{sizeof *mode};
  calls += "asks " + std::to_string(flags) + ";";
  if (answer == IDOK) *mode = landscape();
  return answer;
}
INT WINAPI ext_device_mode(HWND, HANDLE, DEVMODEA* mode, LPSTR name, LPSTR port, DEVMODEA*, LPSTR, DWORD flags) {
  if (flags == 0) calls += std::string(name) + " at " + port + ";";
  return answered(mode, flags);
}
void WINAPI device_mode(HWND, HANDLE, LPSTR name, LPSTR port) { calls += std::string("old ") + name + " at " + port + ";"; }
void* WINAPI chosen_entry(HMODULE, LPCSTR name) {
  if (entry_point == nullptr || std::string(name) != entry_point) return nullptr;
  return std::string(name) == "DeviceMode" ? reinterpret_cast<void*>(device_mode) : reinterpret_cast<void*>(ext_device_mode);
}
LONG WINAPI document_properties(HWND, HANDLE, LPSTR name, PDEVMODEA mode, PDEVMODEA, DWORD flags) {
  if (flags == 0) calls += std::string("spooler's ") + name + ";";
  return answered(mode, flags);
}

TEST_F(PrinterSetupDialog, LooksForDriversByTheirNames) {
  const Replacement loading("LoadLibraryA", no_library);
  calls.clear();
  run([](HWND dialog) {
    for (const int index : {0, 2}) {
      select(dialog, index);
      press(dialog, kSetup);
      EXPECT_EQ(selection(dialog), index) << "the choice stays when the list is filled again";
      EXPECT_EQ(LOWORD(SendMessageA(dialog, DM_GETDEFID, 0, 0)), IDOK);
    }
    press(dialog, IDCANCEL);
  });
  EXPECT_EQ(calls, "HPPCL.DRV;plot.dll;");
  EXPECT_THAT(boxes_.seen(), ElementsAre(": Cannot find printer driver.", ": Cannot find printer driver."));
}

TEST_F(PrinterSetupDialog, OpensWhatTheDriverHas) {
  const Replacement finding("GetProcAddress", chosen_entry), spooling("DocumentPropertiesA", document_properties);
  const std::string known = printer_name(300);
  const struct {
    const char* entry;
    LONG answer;
    std::string printer, calls;
    std::vector<std::string> seen;
  } cases[] = {
      {"ExtDeviceMode", IDCANCEL, "Any", "Any at LPT1:;asks 6;", {}},
      {"ExtDeviceMode", -1, "Any", "Any at LPT1:;asks 6;", {": Invalid printer driver."}},
      {"ExtDeviceMode", -2, "Any", "Any at LPT1:;", {": Invalid printer driver."}},
      {"DeviceMode", 0, "Any", "old Any at LPT1:;", {}},
      {nullptr, IDCANCEL, known, "spooler's " + known + ";asks 6;", {}},
      {nullptr, IDOK, "Unknown", "", {": Invalid printer driver."}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.calls);
    const size_t seen_before = boxes_.seen().size();
    calls.clear();
    entry_point = one.entry;
    answer = one.answer;
    devices = {{one.printer, "winspool,LPT1:"}};
    run([](HWND dialog) {
      select(dialog, 0);
      press(dialog, kSetup);
      press(dialog, IDCANCEL);
    });
    EXPECT_EQ(calls, one.calls);
    EXPECT_EQ(std::vector(boxes_.seen().begin() + static_cast<std::ptrdiff_t>(seen_before), boxes_.seen().end()), one.seen);
  }
}

SIZE page;
int WINAPI measured_document(HDC dc, const DOCINFOA*) {
  page = {GetDeviceCaps(dc, HORZRES), GetDeviceCaps(dc, VERTRES)};
  return -1;
}

// What the driver was told holds for the thread's next job on that printer, and for that one alone.
TEST_F(PrinterSetupDialog, SetsTheNextJobUp) {
  const std::string name = printer_name(300);
  char value[109];
  GetProfileStringA("devices", name.c_str(), "", value, sizeof value);
  devices = {{name, value}};
  windows["device"] = name + "," + value;
  {
    const Replacement spooling("DocumentPropertiesA", document_properties);
    answer = IDOK;
    run([](HWND dialog) {
      press(dialog, kSetup);
      press(dialog, IDCANCEL);
    });
  }
  const auto is_wide = [] {
    page = {};
    const Replacement starting("StartDocA", measured_document);
    ImgPrintOptions options = silent_options();
    EXPECT_EQ(PrepareToPrint(nullptr, nullptr, &options, "", 1), -1);
    EndPrint(nullptr);
    return page.cx > page.cy;
  };
  windows["device"] = printer_name(150) + ",wineps.drv,x";
  EXPECT_FALSE(is_wide());
  windows["device"] = name + "," + value;
  EXPECT_TRUE(is_wide());
  EXPECT_FALSE(is_wide());
}

}  // namespace
