// Adds a PostScript printer to the Wine prefix it runs in, whose jobs land in a file: each replaces the one before. The printer
// becomes the default one. usage: make_printer NAME UNIX_FILE [DPI]
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <windows.h>
#include <winspool.h>

namespace {

// A printer of A4 sheets that leaves a quarter of an inch free at each edge.
std::string description(const std::string& dpi) {
  return R"ppd(*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1.0"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "TOFILE.PPD"
*Manufacturer: "None"
*Product: "(To file)"
*PSVersion: "(3010.000) 0"
*ModelName: "To file"
*ShortNickName: "To file"
*NickName: "To file"
*LanguageLevel: "3"
*ColorDevice: True
*DefaultColorSpace: RGB
*FileSystem: False
*TTRasterizer: Type42
*DefaultResolution: )ppd" +
         dpi + R"ppd(dpi
*OpenUI *PageSize: PickOne
*DefaultPageSize: A4
*PageSize A4/A4: "<</PageSize[595 842]/ImagingBBox null>>setpagedevice"
*CloseUI: *PageSize
*OpenUI *PageRegion: PickOne
*DefaultPageRegion: A4
*PageRegion A4/A4: "<</PageSize[595 842]/ImagingBBox null>>setpagedevice"
*CloseUI: *PageRegion
*DefaultImageableArea: A4
*ImageableArea A4/A4: "18 18 577 824"
*DefaultPaperDimension: A4
*PaperDimension A4/A4: "595 842"
*DefaultFont: Courier
*Font Courier: Standard "(002.004S)" Standard ROM
)ppd";
}

int failed(const char* what) {
  std::fprintf(stderr, "make_printer: %s failed (%lu)\n", what, GetLastError());
  return 1;
}

void remove_printer(std::string name) {
  PRINTER_DEFAULTSA access = {nullptr, nullptr, PRINTER_ALL_ACCESS};
  HANDLE printer = nullptr;
  if (!OpenPrinterA(name.data(), &printer, &access)) return;
  DeletePrinter(printer);
  ClosePrinter(printer);
}

int make_printer(std::string name, std::string file, const std::string& dpi) {
  std::string driver = "PostScript to file " + dpi, module = "wineps.drv", format = "RAW", processor = "WinPrint";
  std::string ppd = "C:\\tofile" + dpi + ".ppd";
  std::ofstream(ppd, std::ios::binary) << description(dpi);

  DRIVER_INFO_3A driver_info = {};
  driver_info.cVersion = 3;
  driver_info.pName = driver.data();
  driver_info.pDriverPath = driver_info.pConfigFile = module.data();
  driver_info.pDataFile = ppd.data();
  driver_info.pDefaultDataType = format.data();
  const bool added = AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&driver_info),
                                         APD_COPY_NEW_FILES | APD_COPY_FROM_DIRECTORY) != FALSE;
  if (!added && GetLastError() != ERROR_PRINTER_DRIVER_ALREADY_INSTALLED) return failed("AddPrinterDriverEx");

  remove_printer(name);
  PRINTER_INFO_2A printer_info = {};
  printer_info.pPrinterName = name.data();
  printer_info.pPortName = file.data();
  printer_info.pDriverName = driver.data();
  printer_info.pPrintProcessor = processor.data();
  printer_info.pDatatype = format.data();
  HANDLE printer = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&printer_info));
  if (printer == nullptr) return failed("AddPrinter");
  ClosePrinter(printer);
  const std::string device = name + "," + module + "," + file;
  if (!WriteProfileStringA("windows", "device", device.c_str())) return failed("WriteProfileString");
  std::printf("%s prints at %s dpi into %s\n", name.c_str(), dpi.c_str(), file.c_str());
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3 || count > 4) {
    std::fprintf(stderr, "usage: make_printer NAME UNIX_FILE [DPI]\n");
    return 2;
  }
  const std::string dpi = count == 4 ? arguments[3] : "300";
  if (std::atoi(dpi.c_str()) <= 0) {
    std::fprintf(stderr, "make_printer: %s is no resolution\n", dpi.c_str());
    return 2;
  }
  return make_printer(arguments[1], arguments[2], dpi);
}
