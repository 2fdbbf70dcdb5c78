// Saving a picture whose header may lie, in every format, and loading it again: what was saved comes back, pixel by pixel.
#include "calls.h"
#include "input_file.h"
#include "support/module.h"

namespace {

using namespace fuzz;

// Loaded for as long as the program runs.
struct Modules {
  test::Module merv32{"MERV32"}, odal32{"ODAL32"}, sune32{"SUNE32"}, brix32{"BRIX32"}, kalo32{"KALO32"}, wert32{"WERT32"};
  test::Module merv{"MERV"}, odal{"ODAL"}, sune{"SUNE"}, brix{"BRIX"}, kalo{"KALO"}, wert{"WERT"};
  ImgSavePicture save_png = wert.entry<ImgSavePicture>("SaveDIBInPNGFormat");
};

struct Way {
  int format, option, value;
  bool is_lossless = true;
};

constexpr std::array kWays = std::to_array<Way>({
    {IMG_FORMAT_BITMAP, 0, 0},      {IMG_FORMAT_TIFF, 0, 1},        {IMG_FORMAT_TIFF, 0, 2},
    {IMG_FORMAT_TIFF, 0, 3},        {IMG_FORMAT_TIFF, 0, 4},        {IMG_FORMAT_TIFF, 0, 5},
    {IMG_FORMAT_TIFF, 0, 8},        {IMG_FORMAT_TIFF, 0, 32773},    {IMG_FORMAT_TIFF, 0, 0},
    {IMG_FORMAT_TIFF, 0, 7, false}, {IMG_FORMAT_PCX, 0, 0},         {IMG_FORMAT_DCX, 0, 0},
    {IMG_FORMAT_GIF, 0, 0},         {IMG_FORMAT_GIF, 1, 0},         {IMG_FORMAT_TGA, 0, 0},
    {IMG_FORMAT_TGA, 0, 1},         {IMG_FORMAT_CALS, 0, 0, false}, {IMG_FORMAT_PNG, 0, 0},
    {IMG_FORMAT_JPEG, 0, 0, false},
});

BITMAPINFOHEADER header_of(HGLOBAL dib) { return test::header_of(test::bytes_of(dib)); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Modules modules;
  static const test::TempFolder folder;
  Input input(data, size);
  const Way& way = kWays[input.byte() % kWays.size()];
  // The one format that goes by its name.
  const std::string path = folder.path(way.format == IMG_FORMAT_TGA ? "picture.tga" : "picture");
  const Picture picture(input);
  if (picture.claim() > kMostCompleted) return 0;
  std::filesystem::remove(path);
  const test::Block source = picture.block();
  int status = 0;
  const BOOL is_saved = way.format == IMG_FORMAT_PNG
                            ? modules.save_png(path.c_str(), source.get(), &status)
                            : SaveDIBInImageFormat(path.c_str(), source.get(), way.format, way.option, way.value);
  require(picture.is_unchanged(source.get()));
  if (is_saved == FALSE) return 0;
  const test::Block loaded(LoadImageIntoDIB(path.c_str(), 1, &status));
  // A bitmap file is the block as it is, whatever its header says.
  if (way.format == IMG_FORMAT_BITMAP) return 0;
  require(static_cast<bool>(loaded));
  require_whole(loaded.get());
  const BITMAPINFOHEADER header = header_of(loaded.get());
  require(header.biWidth == picture.header().biWidth && header.biHeight == std::abs(picture.header().biHeight));
  const test::Block whole = picture.completed();
  if (way.is_lossless && picture.header().biHeight > 0)
    require(test::largest_difference(test::bytes_of(loaded.get()), test::bytes_of(whole.get())) == 0);
  return 0;
}
