// KALO: saves a picture as a JPEG file.
#include <algorithm>
#include <limits>
#include <type_traits>

#include "common/dib.h"
#include "common/entry.h"
#include "common/file.h"
#include "jpeg/calls.h"

namespace codec::jpeg {
namespace {

struct Density {
  int unit = 0, x = 1, y = 1;  // an aspect ratio only
};

// In dots per inch if that is exact, else per centimetre if that is exact, else the nearest dots per inch.
Density density_of(Resolution resolution) {
  constexpr int kPerInch = 1, kPerCentimetre = 2;
  const auto per_centimetre = [](int per_metre) { return per_metre % 100 == 0 ? per_metre / 100 : 0; };
  const auto fits = [](int value) { return value >= 1 && value <= std::numeric_limits<uint16_t>::max(); };
  const auto [x, y] = resolution;
  const Density choices[] = {{kPerInch, whole_dpi(x), whole_dpi(y)},
                             {kPerCentimetre, per_centimetre(x), per_centimetre(y)},
                             {kPerInch, nearest_dpi(x), nearest_dpi(y)}};
  for (const Density& choice : choices)
    if (fits(choice.x) && fits(choice.y)) return choice;
  return {};
}

// The rows of a DIB as samples for compression: one grey if all colours are grey, else blue, green and red.
class Samples {
 public:
  explicit Samples(const SourceDib& dib) : dib_(dib) {
    is_gray_ = dib.depth() <= 8 && vorel::is_gray(dib.colors());
    if (dib.depth() == 24) return;
    const auto width = static_cast<size_t>(dib.width());
    indices_.resize(width);
    row_.resize(width * (is_gray_ ? 1 : 3));
  }

  bool is_gray() const { return is_gray_; }

  // Valid until the next call. Does not throw.
  const uint8_t* row(int y) {
    if (dib_.depth() == 24) return dib_.row_from_top(y).data();
    unpack_indices(dib_.row_from_top(y), dib_.depth(), indices_);
    uint8_t* sample = row_.data();
    for (const uint8_t index : indices_) {
      const Rgb& c = dib_.colors()[index];
      *sample++ = c.blue;
      if (is_gray_) continue;
      *sample++ = c.green;
      *sample++ = c.red;
    }
    return row_.data();
  }

 private:
  const SourceDib& dib_;
  bool is_gray_ = false;
  std::vector<uint8_t> indices_, row_;  // empty where the DIB's own rows are used
};

struct Form {
  int quality = 75;
  bool is_progressive = false;
};

class Compressor {
 public:
  Compressor() { jpeg_.err = prepare(errors_); }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
  ~Compressor() { jpeg_destroy_compress(&jpeg_); }

  // Returns whether everything was written.
  bool write(std::FILE* file, const SourceDib& dib, Samples& samples, const Form& form) {
    return run_guarded(errors_, [&] {
      jpeg_create_compress(&jpeg_);
      jpeg_stdio_dest(&jpeg_, file);
      describe(dib, samples.is_gray(), form);
      jpeg_start_compress(&jpeg_, TRUE);
      for (int y = 0; y < dib.height(); ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(samples.row(y));  // NOLINT: libjpeg only reads it
        jpeg_write_scanlines(&jpeg_, &row, 1);
      }
      jpeg_finish_compress(&jpeg_);
    });
  }

 private:
  void describe(const SourceDib& dib, bool is_gray, const Form& form) {
    jpeg_.image_width = static_cast<JDIMENSION>(dib.width());
    jpeg_.image_height = static_cast<JDIMENSION>(dib.height());
    jpeg_.input_components = is_gray ? 1 : 3;
    jpeg_.in_color_space = is_gray ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&jpeg_);
    jpeg_set_quality(&jpeg_, form.quality, TRUE);
    if (form.is_progressive) jpeg_simple_progression(&jpeg_);
    const Density density = density_of(dib.resolution());
    jpeg_.density_unit = static_cast<UINT8>(density.unit);
    jpeg_.X_density = static_cast<UINT16>(density.x);
    jpeg_.Y_density = static_cast<UINT16>(density.y);
  }

  jpeg_compress_struct jpeg_{};
  ErrorManager errors_{};
};

BOOL save(const char* path, HGLOBAL handle, Form form) {
  form.quality = std::clamp(form.quality, 1, 100);
  const SourceDib dib(handle);
  if (dib.width() > JPEG_MAX_DIMENSION || dib.height() > JPEG_MAX_DIMENSION) fail(IMG_E_DIB_SIZE);
  Samples samples(dib);
  Compressor jpeg;
  OutputFile file(path);
  if (!jpeg.write(file.get(), dib, samples, form)) fail(IMG_E_FILE_IO);
  file.complete();
  return TRUE;
}

}  // namespace
}  // namespace codec::jpeg

CODEC_ENTRY BOOL VORELCALL SaveDIBInJPEGFile(LPCSTR path, HGLOBAL dib, int quality) {
  return codec::at_entry(nullptr, [&] { return codec::jpeg::save(path, dib, {quality}); });
}

CODEC_ENTRY BOOL VORELCALL SaveDIBInJPEGForm(LPCSTR path, HGLOBAL dib, int quality, int progressive) {
  return codec::at_entry(nullptr, [&] { return codec::jpeg::save(path, dib, {quality, progressive != 0}); });
}

static_assert(std::is_same_v<decltype(&SaveDIBInJPEGFile), ImgSaveJpeg>);
static_assert(std::is_same_v<decltype(&SaveDIBInJPEGForm), ImgSaveJpegForm>);
