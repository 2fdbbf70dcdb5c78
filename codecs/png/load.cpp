// WERT32: loads PNG files.
#include <algorithm>
#include <cstdio>
#include <limits>
#include <string>
#include <type_traits>
#include <zlib.h>

#include "common/dib.h"
#include "common/entry.h"
#include "common/file.h"
#include "png/calls.h"

namespace codec::png {
namespace {

constexpr Rgb kWhite = color(255, 255, 255);

// Packs bytes into 4 bits per pixel, for 2-bit pictures that libpng expanded to bytes.
void pack_nibbles(png_structp, png_row_infop info, png_bytep row) {
  const std::span pixels(row, info->width);
  pack_indices(pixels, 4, pixels);
}

// Reads the header, then the rows in the form that the DIB needs.
class Reader {
 public:
  explicit Reader(const InputFile& file) : file_(file.get()) {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, leave, take_warning);
    if (png_ == nullptr) fail(IMG_E_MEMORY);
    info_ = png_create_info_struct(png_);
    if (info_ == nullptr) {
      destroy();
      fail(IMG_E_MEMORY);
    }
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { destroy(); }

  void read_header() {
    run([&] {
      limit();
      png_init_io(png_, file_);
      png_read_info(png_, info_);
    });
  }

  int64_t width() const { return png_get_image_width(png_, info_); }
  int64_t height() const { return png_get_image_height(png_, info_); }
  int bits() const { return png_get_bit_depth(png_, info_); }  // of a component
  int channels() const { return png_get_channels(png_, info_); }
  bool has_palette() const { return png_get_color_type(png_, info_) == PNG_COLOR_TYPE_PALETTE; }
  bool is_colored() const { return (png_get_color_type(png_, info_) & PNG_COLOR_MASK_COLOR) != 0; }
  bool has_alpha() const { return (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0; }
  bool has_transparency() const { return png_get_valid(png_, info_, PNG_INFO_tRNS) != 0; }
  // Palettes, and greys without alpha that a DIB's table has room for.
  bool has_table() const { return has_palette() || (channels() == 1 && bits() <= 8); }

  // The DIB's table, blended over white.
  Colors colors() const { return has_palette() ? palette() : has_table() ? grays() : gray_ramp(8); }
  Resolution resolution() const;

  void read_rows(const LoadedDib& dib) {
    run([&] {
      make_rows_fit();
      const int passes = png_set_interlace_handling(png_);
      png_read_update_info(png_, info_);
      for (int pass = 0; pass < passes; ++pass)
        for (int y = 0; y < dib.height(); ++y) png_read_row(png_, dib.row_from_top(y).data(), nullptr);
      png_read_end(png_, nullptr);
    });
  }

 private:
  template <class Calls>
  void run(Calls calls) {
    if (!run_guarded(png_, calls)) fail(std::ferror(file_) != 0 ? IMG_E_FILE_IO : IMG_E_FORMAT);
  }

  // Skips chunks that a DIB cannot hold: profiles and gamma, which are not applied, and texts, which may unpack to any size.
  void limit() {
    constexpr png_uint_32 kMostChunks = 100;
    constexpr png_alloc_size_t kMostChunkBytes = 1 << 20;
    constexpr int kAllOthers = -1;
    allow_any_size(png_);
    png_set_chunk_cache_max(png_, kMostChunks);
    png_set_chunk_malloc_max(png_, kMostChunkBytes);
    png_set_crc_action(png_, PNG_CRC_ERROR_QUIT, PNG_CRC_WARN_DISCARD);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, kAllOthers);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_AS_DEFAULT, reinterpret_cast<png_const_bytep>("pHYs"), 1);
  }

  void make_rows_fit() {
    if (bits() == 16) png_set_strip_16(png_);
    if (bits() == 2) {
      png_set_packing(png_);
      png_set_read_user_transform_fn(png_, pack_nibbles);
      png_set_user_transform_info(png_, nullptr, 4, 1);
    }
    if (has_alpha() || (has_transparency() && !has_table())) {
      const png_color_16 white{0, 255, 255, 255, 255};
      png_set_background(png_, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
    }
    if (is_colored() && !has_palette()) png_set_bgr(png_);
  }

  Colors palette() const;
  Colors grays() const;
  void destroy() { png_destroy_read_struct(&png_, &info_, nullptr); }

  std::FILE* file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

Colors Reader::palette() const {
  png_colorp entries = nullptr;
  png_bytep alphas = nullptr;
  int entry_count = 0, alpha_count = 0;
  png_get_PLTE(png_, info_, &entries, &entry_count);
  png_get_tRNS(png_, info_, &alphas, &alpha_count, nullptr);
  Colors colors;
  for (int i = 0; i < entry_count; ++i) {
    const png_color& c = entries[i];
    const int alpha = i < alpha_count ? alphas[i] : 255;
    colors.push_back(color(over_white(c.red, alpha), over_white(c.green, alpha), over_white(c.blue, alpha)));
  }
  return colors;
}

Colors Reader::grays() const {
  Colors ramp = gray_ramp(bits());
  png_color_16p transparent = nullptr;
  png_get_tRNS(png_, info_, nullptr, nullptr, &transparent);
  if (transparent != nullptr) ramp[transparent->gray % ramp.size()] = kWhite;  // only the bits of a pixel count
  return ramp;
}

Resolution Reader::resolution() const {
  png_uint_32 x = 0, y = 0;
  int unit = PNG_RESOLUTION_UNKNOWN;
  png_get_pHYs(png_, info_, &x, &y, &unit);
  constexpr png_uint_32 kMost = std::numeric_limits<int32_t>::max();
  if (unit != PNG_RESOLUTION_METER || x > kMost || y > kMost) return {};
  return {static_cast<int>(x), static_cast<int>(y)};
}

int depth_of(const Reader& reader) {
  if (!reader.has_table()) return reader.is_colored() ? 24 : 8;
  return reader.bits() == 2 ? 4 : reader.bits();
}

HGLOBAL load(const char* path) {
  const InputFile file(path);
  Reader reader(file);
  reader.read_header();
  const int depth = depth_of(reader);
  check_claim(reader.width(), reader.height(), std::max(depth, reader.channels() * reader.bits()), file.size());
  LoadedDib dib({.width = reader.width(),
                 .height = reader.height(),
                 .depth = depth,
                 .colors = reader.colors(),
                 .resolution = reader.resolution(),
                 .sample_bits = reader.bits(),
                 .has_opacity = reader.has_alpha() || reader.has_transparency()});
  reader.read_rows(dib);
  return dib.release();
}

}  // namespace
}  // namespace codec::png

CODEC_ENTRY HGLOBAL VORELCALL LoadPNGIntoDIB(LPCSTR path, int* status) {
  return codec::at_entry(status, [&] { return codec::png::load(path); });
}

CODEC_ENTRY LPCSTR VORELCALL NameOfLibraries(void) {
  static const std::string name = std::string("libpng ") + png_get_libpng_ver(nullptr) + ", zlib " + zlibVersion();
  return name.c_str();
}

static_assert(std::is_same_v<decltype(&LoadPNGIntoDIB), ImgLoadPicture>);
static_assert(std::is_same_v<decltype(&NameOfLibraries), ImgNameOfLibraries>);
