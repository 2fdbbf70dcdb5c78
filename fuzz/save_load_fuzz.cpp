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

// What a format keeps: all colours; bits, as black and white; no pixel exactly; or the block as it is, whatever its header says.
enum class Kept { kColors, kBits, kSize, kBlock };

struct Way {
  int format, option, value;
  Kept kept = Kept::kColors;
};

constexpr std::array kWays = std::to_array<Way>({
    {IMG_FORMAT_BITMAP, 0, 0, Kept::kBlock},
    {IMG_FORMAT_TIFF, 0, 1},
    {IMG_FORMAT_TIFF, 0, 2},
    {IMG_FORMAT_TIFF, 0, 3},
    {IMG_FORMAT_TIFF, 0, 4},
    {IMG_FORMAT_TIFF, 0, 5},
    {IMG_FORMAT_TIFF, 0, 8},
    {IMG_FORMAT_TIFF, 0, 32773},
    {IMG_FORMAT_TIFF, 0, 0},
    {IMG_FORMAT_TIFF, 0, 7, Kept::kSize},
    {IMG_FORMAT_PCX, 0, 0},
    {IMG_FORMAT_DCX, 0, 0},
    {IMG_FORMAT_GIF, 0, 0},
    {IMG_FORMAT_GIF, 1, 0},
    {IMG_FORMAT_TGA, 0, 0},
    {IMG_FORMAT_TGA, 0, 1},
    {IMG_FORMAT_CALS, 0, 0, Kept::kBits},
    {IMG_FORMAT_PNG, 0, 0},
    {IMG_FORMAT_JPEG, 0, 0, Kept::kSize},
});

BITMAPINFOHEADER header_of(HGLOBAL dib) { return test::header_of(test::bytes_of(dib)); }

// A header that says nothing unusual.
bool is_plain(const BITMAPINFOHEADER& header) {
  const int depth = header.biBitCount;
  return header.biSize == sizeof header && header.biPlanes == 1 && header.biCompression == BI_RGB && header.biClrUsed == 0 &&
         header.biSizeImage == 0 && header.biWidth > 0 && header.biHeight > 0 &&
         (depth == 1 || depth == 4 || depth == 8 || depth == 24);
}

void require_equal(const test::Bytes& a, const test::Bytes& b) { require(test::largest_difference(a, b) == 0); }

// A full table: colours behind the stated ones are black.
test::Bytes with_all_colors(test::Bytes picture) {
  BITMAPINFOHEADER header = test::header_of(picture);
  const size_t all = header.biBitCount <= 8 ? size_t{1} << header.biBitCount : 0;
  if (header.biClrUsed == 0 || header.biClrUsed >= all) return picture;
  const size_t end = sizeof header + header.biClrUsed * sizeof(RGBQUAD);
  picture.insert(picture.begin() + static_cast<std::ptrdiff_t>(end), (all - header.biClrUsed) * sizeof(RGBQUAD), 0);
  header.biClrUsed = 0;
  std::memcpy(picture.data(), &header, sizeof header);
  return picture;
}

// The same pixels, in black and white or in white and black.
void require_same_bits(const test::Bytes& loaded, test::Bytes picture) {
  std::memset(&picture[sizeof(BITMAPINFOHEADER)], 0, 8);
  const bool first_is_black = test::color_at(loaded, 0, 0).rgbRed == test::pixel(picture, 0, 0) * 255;
  std::memset(&picture[sizeof(BITMAPINFOHEADER) + (first_is_black ? 4 : 0)], 255, 4);
  require_equal(loaded, picture);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Modules modules;
  static const test::TempFolder folder;
  Input input(data, size);
  const Way& way = kWays[input.byte() % kWays.size()];
  // The one format that goes by its name.
  const std::string path = folder.path(way.format == IMG_FORMAT_TGA ? "picture.tga" : "picture");
  const Picture picture(input);
  // Modules save top-down pictures too.
  if (claim_of_rows_either_way(picture.header()) > kMostCompleted) return 0;
  std::filesystem::remove(path);
  const test::Block source = picture.block();
  int status = 0;
  const BOOL is_saved = way.format == IMG_FORMAT_PNG
                            ? modules.save_png(path.c_str(), source.get(), &status)
                            : SaveDIBInImageFormat(path.c_str(), source.get(), way.format, way.option, way.value);
  require(picture.is_unchanged(source.get()));
  if (is_saved == FALSE) return 0;
  const test::Block loaded(LoadImageIntoDIB(path.c_str(), 1, &status));
  if (way.kept == Kept::kBlock && (!loaded || !is_plain(picture.header()))) return 0;
  require(static_cast<bool>(loaded));
  require_whole(loaded.get());
  const BITMAPINFOHEADER header = header_of(loaded.get());
  require(header.biWidth == picture.header().biWidth && header.biHeight == std::abs(picture.header().biHeight));
  if (picture.header().biHeight <= 0) return 0;
  const test::Bytes whole = with_all_colors(test::bytes_of(picture.completed().get())),
                    result = test::bytes_of(loaded.get());
  if (way.kept == Kept::kColors || way.kept == Kept::kBlock) require_equal(result, whole);
  if (way.kept == Kept::kBits) require_same_bits(result, whole);
  return 0;
}
