// Jobs on real printers, whose PostScript is kept with a list of where its images should lie (print_edges_test looks there).
#include <array>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "win32/support/printer.h"

using namespace test;
namespace fs = std::filesystem;

namespace {

ImgPrintOptions at_image_size() {
  ImgPrintOptions options = silent_options();
  options.useImageDpi = 1;
  return options;
}

struct Box {
  double left, top, right, bottom;  // in dots of the printable page
};

void keep_printed(int dpi) {
  static int number = 100;
  const std::string printer = std::to_string(dpi);
  fs::rename(printed_folder() / (printer + ".ps"), printed_folder() / (printer + "-" + std::to_string(number++) + ".ps"));
}

// Prints the whole printable page black, by the system's means alone: its edges tell where the page's dots begin.
void print_black_page(int dpi) {
  HDC dc = printer_dc(dpi);
  DOCINFOA document = {};
  document.cbSize = sizeof document;
  StartDocA(dc, &document);
  StartPage(dc);
  PatBlt(dc, 0, 0, GetDeviceCaps(dc, HORZRES), GetDeviceCaps(dc, VERTRES), BLACKNESS);
  EndPage(dc);
  EndDoc(dc);
  DeleteDC(dc);
  keep_printed(dpi);
}

// A job on a printer; the printed file is kept, numbered, and its pages are listed.
class Job {
 public:
  Job(int dpi, ImgPrintOptions options, const char* name = "job") : dpi_(dpi), dc_(printer_dc(dpi)), options_(options) {
    const auto capability = [&](int index) { return GetDeviceCaps(dc_, index); };
    page_ = {capability(HORZRES), capability(VERTRES)};
    EXPECT_EQ(capability(LOGPIXELSX), dpi);
    EXPECT_EQ(PrepareToPrint(nullptr, dc_, &options_, name, 9), 0);
  }
  ~Job() {
    EXPECT_EQ(EndPrint(dc_), 0);
    keep_printed(dpi_);
    std::ofstream list(printed_folder() / (std::to_string(dpi_) + ".expected"), std::ios::app);
    for (const Box& box : boxes_) list << box.left << ' ' << box.top << ' ' << box.right << ' ' << box.bottom << '\n';
  }

  void print(const Bytes& dib, int* image_dpi, POINT offset = {}) {
    EXPECT_EQ(PrintDIBPage(block_of(dib).get(), image_dpi, 0, 0, offset.x, offset.y), 0);
  }
  void expect(const Box& box) { boxes_.push_back(box); }

  std::array<int, 2> page() const { return page_; }

 private:
  int dpi_;
  HDC dc_;
  ImgPrintOptions options_;
  std::array<int, 2> page_;
  std::vector<Box> boxes_;
};

constexpr int kWidth = 200, kHeight = 120;

// Where an image of this size lies, worked out once more and without rounding.
Box box_of(const ImgPrintOptions& options, std::array<double, 2> image_dpi, int dpi, std::array<int, 2> page) {
  double size[] = {kWidth / image_dpi[0] * dpi, kHeight / image_dpi[1] * dpi}, edge[] = {0, 0};
  const double fit = std::min(page[0] / size[0], page[1] / size[1]);
  const bool centers[] = {options.centreHorizontally != 0, options.centreVertically != 0};
  for (int axis : {0, 1}) {
    if (options.fitProportionally) {
      size[axis] *= fit;
    } else if (options.stretchToPage) {
      size[axis] = page[static_cast<size_t>(axis)];
    }
    if (centers[axis]) edge[axis] = (page[static_cast<size_t>(axis)] - size[axis]) / 2;
  }
  return {edge[0], edge[1], edge[0] + size[0], edge[1] + size[1]};
}

void print_layout(int dpi, const ImgPrintOptions& options, int first_kind) {
  Job job(dpi, options);
  int given[] = {144, 72};
  for (int i = 0; const int depth : {1, 8, 24}) {
    switch ((first_kind + i++) % 3) {
      case 0:  // the caller's resolution
        job.print(signed_picture(kWidth, kHeight, depth, 11811), given);
        job.expect(box_of(options, {144, 72}, dpi, job.page()));
        break;
      case 1:  // the header's
        job.print(signed_picture(kWidth, kHeight, depth, 3937), nullptr);
        job.expect(box_of(options, {100, 100}, dpi, job.page()));
        break;
      default:  // none: a pixel is a dot
        job.print(signed_picture(kWidth, kHeight, depth), nullptr);
        job.expect(box_of(options, {double(dpi), double(dpi)}, dpi, job.page()));
    }
  }
}

class Jobs : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const auto& entry : fs::directory_iterator(printed_folder())) fs::remove(entry);
    for (const int dpi : kPrinterResolutions) print_black_page(dpi);
  }
};

TEST_F(Jobs, PrintEveryLayout) {
  for (const int dpi : kPrinterResolutions)
    for (int layout = 0; layout < 12; ++layout) {
      ImgPrintOptions options = at_image_size();
      options.fitProportionally = layout % 3 == 1;
      options.stretchToPage = layout % 3 == 2;
      options.centreHorizontally = layout / 3 % 2;
      options.centreVertically = layout / 6;
      print_layout(dpi, options, layout / 3);
    }
}

TEST_F(Jobs, MoveContinueAndCopyPages) {
  const Bytes dib = signed_picture(80, 40, 24);
  ImgPrintOptions options = at_image_size();
  options.copies = 2;  // on the same sheet: this printer takes the beginning of a page that is open for nothing
  Job job(300, options, "A name & more");
  job.print(dib, nullptr, {500, 700});
  job.expect({500, 700, 580, 740});
  job.print(dib, nullptr, {10, -20});  // partly off the printable page, which this printer does not mind
  job.expect({10, -20, 90, 20});
  job.print(dib, nullptr);
  PrintPageContinue();
  job.print(dib, nullptr, {300, 400});
  job.expect({0, 0, 380, 440});
  job.print(dib, nullptr, {1, 1});
  job.expect({1, 1, 81, 41});
}

TEST_F(Jobs, OfOneCallGoToTheDefaultPrinter) {
  char before[300];
  GetProfileStringA("windows", "device", "", before, sizeof before);
  char driver_and_port[300];
  GetProfileStringA("devices", printer_name(150).c_str(), "", driver_and_port, sizeof driver_and_port);
  WriteProfileStringA("windows", "device", (printer_name(150) + "," + driver_and_port).c_str());
  ImgPrintOptions options = at_image_size();
  int dpi[] = {100, 100};
  const Block dib = block_of(signed_picture(200, 120, 8));
  EXPECT_EQ(PrintDIB(nullptr, nullptr, dib.get(), "Silent", dpi, &options, 7), 0);
  EXPECT_THAT(text_of_job(150), testing::HasSubstr("%%Title: Silent"));
  WriteProfileStringA("windows", "device", "nowhere,wineps.drv,x");
  EXPECT_EQ(PrintDIB(nullptr, nullptr, dib.get(), "Silent", dpi, &options, 7), IMG_E_PRINTER_DC);
  WriteProfileStringA("windows", "device", before);

  HBITMAP bitmap = ConvertDIBToBitmap(dib.get());
  EXPECT_EQ(PrintImage(nullptr, printer_dc(150), bitmap, nullptr, "Image", dpi, &options, 0), 0);
  EXPECT_THAT(text_of_job(150), testing::HasSubstr("%%Title: Image"));
  EXPECT_EQ(PrintImage(nullptr, nullptr, nullptr, nullptr, "None", dpi, &options, 0), 1);
  DeleteObject(bitmap);
}

}  // namespace
