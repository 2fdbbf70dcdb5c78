// KALO32: loads JPEG files.
#include <algorithm>
#include <span>
#include <type_traits>

#include "common/dib.h"
#include "common/entry.h"
#include "common/file.h"
#include "jpeg/calls.h"

namespace codec::jpeg {
namespace {

class Decompressor {
 public:
  Decompressor() {
    jpeg_.err = prepare(errors_);
    limits_.progress_monitor = check_scans;
  }
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;
  ~Decompressor() { jpeg_destroy_decompress(&jpeg_); }

  void open(std::FILE* file) {
    // Enough for the coefficients of the largest pictures of a 32-bit process.
    constexpr long kMostMemory = 1L << 30;
    run([&] {
      jpeg_create_decompress(&jpeg_);
      jpeg_.mem->max_memory_to_use = kMostMemory;
      jpeg_.progress = &limits_;
      jpeg_stdio_src(&jpeg_, file);
      jpeg_read_header(&jpeg_, TRUE);
    });
  }

  const jpeg_decompress_struct& header() const { return jpeg_; }
  bool has_several_scans() { return jpeg_has_multiple_scans(&jpeg_) != FALSE; }

  // Decodes each row to the memory that row(y) returns, then calls done(y).
  template <class Row, class Done>
  void read_rows(J_COLOR_SPACE space, Row row, Done done) {
    run([&] {
      jpeg_.out_color_space = space;
      jpeg_start_decompress(&jpeg_);
      if (errors_.lacks_end_marker && !has_all_coefficients()) jpeg_.err->error_exit(reinterpret_cast<j_common_ptr>(&jpeg_));
      while (jpeg_.output_scanline < jpeg_.output_height) {
        const auto y = static_cast<int>(jpeg_.output_scanline);
        JSAMPROW samples = row(y);
        jpeg_read_scanlines(&jpeg_, &samples, 1);
        done(y);
      }
      jpeg_finish_decompress(&jpeg_);
      // Truncated arithmetic code reads as zeros, so only the end marker shows whether it is complete.
      if (errors_.lacks_end_marker && jpeg_.arith_code != FALSE)
        jpeg_.err->error_exit(reinterpret_cast<j_common_ptr>(&jpeg_));
    });
  }

 private:
  // Whether the scans gave all bits of all coefficients. Known for progressive files only.
  bool has_all_coefficients() const {
    if (jpeg_.coef_bits == nullptr) return false;
    const auto components = std::span(jpeg_.coef_bits, static_cast<size_t>(jpeg_.num_components));
    return std::ranges::all_of(
        components, [](const auto& bits) { return std::ranges::all_of(bits, [](int unknown) { return unknown == 0; }); });
  }

  template <class Calls>
  void run(Calls calls) {
    if (!run_guarded(errors_, calls)) fail(IMG_E_FORMAT);
  }

  // Each scan covers the whole picture, however few bytes it has in the file.
  static void check_scans(j_common_ptr jpeg) {
    constexpr uint64_t kMostPixels = uint64_t{1} << 31;  // in all scans together
    constexpr uint64_t kAlwaysFine = 20, kMostScans = 100;
    const auto& picture = *reinterpret_cast<j_decompress_ptr>(jpeg);
    const uint64_t pixels = uint64_t{picture.image_width} * picture.image_height;
    if (static_cast<uint64_t>(picture.input_scan_number) > std::clamp(kMostPixels / pixels, kAlwaysFine, kMostScans))
      jpeg->err->error_exit(jpeg);
  }

  jpeg_decompress_struct jpeg_{};
  ErrorManager errors_{};
  jpeg_progress_mgr limits_{};
};

Resolution resolution_of(const jpeg_decompress_struct& header) {
  constexpr int kPerInch = 1, kPerCentimetre = 2;
  switch (header.density_unit) {
    case kPerInch: return from_dpi(header.X_density, header.Y_density);
    case kPerCentimetre: return {header.X_density * 100, header.Y_density * 100};
    default: return {};  // an aspect ratio only
  }
}

// The light that four inks reflect. In files with Adobe's marker samples are light, not ink.
void paint_inks(const uint8_t* samples, bool are_light, std::span<uint8_t> row) {
  const auto light = [&](int i) { return are_light ? samples[i] : 255 - samples[i]; };
  for (size_t x = 0; x + 3 <= row.size(); x += 3, samples += 4) {
    row[x] = static_cast<uint8_t>((light(2) * light(3) + 127) / 255);
    row[x + 1] = static_cast<uint8_t>((light(1) * light(3) + 127) / 255);
    row[x + 2] = static_cast<uint8_t>((light(0) * light(3) + 127) / 255);
  }
}

void read_inks(Decompressor& jpeg, const LoadedDib& dib) {
  const auto width = static_cast<size_t>(dib.width());
  std::vector<uint8_t> samples(width * 4);
  const bool are_light = jpeg.header().saw_Adobe_marker != FALSE;
  jpeg.read_rows(
      JCS_CMYK, [&](int) { return samples.data(); },
      [&](int y) { paint_inks(samples.data(), are_light, dib.row_from_top(y).first(width * 3)); });
}

// Bits of libjpeg's memory per pixel until the last scan: a coefficient of each component.
int coefficient_bits(Decompressor& jpeg) { return jpeg.has_several_scans() ? jpeg.header().num_components * 16 : 0; }

HGLOBAL load(const char* path) {
  const InputFile file(path);
  Decompressor jpeg;
  jpeg.open(file.get());
  const jpeg_decompress_struct& header = jpeg.header();
  const bool is_gray = header.jpeg_color_space == JCS_GRAYSCALE;
  const bool has_inks = header.jpeg_color_space == JCS_CMYK || header.jpeg_color_space == JCS_YCCK;
  const int depth = is_gray ? 8 : 24;
  check_claim(header.image_width, header.image_height, depth + coefficient_bits(jpeg), file.size());
  LoadedDib dib({header.image_width, header.image_height, depth, is_gray ? gray_ramp(8) : Colors{}, resolution_of(header)});
  if (has_inks) {
    read_inks(jpeg, dib);
  } else {
    jpeg.read_rows(
        is_gray ? JCS_GRAYSCALE : JCS_EXT_BGR, [&](int y) { return dib.row_from_top(y).data(); }, [](int) {});
  }
  return dib.release();
}

}  // namespace
}  // namespace codec::jpeg

CODEC_ENTRY HGLOBAL VORELCALL LoadJPEGIntoDIB(LPCSTR path) {
  return codec::at_entry(nullptr, [&] { return codec::jpeg::load(path); });
}

CODEC_ENTRY LPCSTR VORELCALL NameOfLibraries(void) { return "libjpeg-turbo " CODEC_TEXT_OF(LIBJPEG_TURBO_VERSION); }

static_assert(std::is_same_v<decltype(&LoadJPEGIntoDIB), ImgLoadFile>);
static_assert(std::is_same_v<decltype(&NameOfLibraries), ImgNameOfLibraries>);
