#include "tiff/reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "tiff/directories.h"
#include "tiff/group3.h"
#include "tiff/lab.h"
#include "tiff/orientation.h"
#include "tiff/page.h"

namespace codec {
namespace {

// When memory is short the library loses the tables but still reports them as present.
void check_jpeg_tables(const TiffHandle& tiff) {
  uint32_t count = 0;
  const void* tables = nullptr;
  const bool has_tables = tiff.tag<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_JPEG &&
                          TIFFGetField(tiff.get(), TIFFTAG_JPEGTABLES, &count, &tables) != 0;
  if (has_tables && count > 0 && tables == nullptr) fail(IMG_E_MEMORY);
}

TiffHandle open_page(Bytes& bytes, int page) {
  if (page < 1 || page > static_cast<int>(kMostPages)) fail(IMG_E_PARAMETER);
  const size_t pages = follow_directories(bytes, static_cast<size_t>(page)).pages;
  if (pages == 0) fail(IMG_E_FORMAT);
  if (pages < static_cast<size_t>(page)) fail(IMG_E_PARAMETER);
  TiffHandle tiff(bytes, "rh");
  tiff.run([&] { return TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(page - 1)) != 0; });
  check_jpeg_tables(tiff);
  return tiff;
}

// ---- Rows that the library decodes in the DIB's own form ----

enum class Finish { kNone, kComplement, kSwapChannels };

// The last step for rows that are decoded directly into the DIB. None if samples must be extracted.
std::optional<Finish> finish_of_plain_rows(const TiffPage& page) {
  const bool is_reversed = page.components[0].values[0] != 0;
  if (page.kind != SampleKind::kCount || page.has_tiles ||
      page.bits * page.samples != static_cast<unsigned>(page.picture.depth))
    return std::nullopt;
  if (page.samples == 1) return is_reversed ? Finish::kComplement : Finish::kNone;
  if (page.has_planes || page.samples != 3 || page.is_lab || page.components[0].action != Action::kChannel)
    return std::nullopt;
  return Finish::kSwapChannels;
}

void finish_row(Finish finish, const Description& picture, std::span<uint8_t> row) {
  const auto used = row.first(static_cast<size_t>((picture.width * picture.depth + 7) / 8));
  if (finish == Finish::kSwapChannels) swap_red_and_blue(row, static_cast<int>(picture.width));
  if (finish == Finish::kComplement)
    for (uint8_t& byte : used) byte = static_cast<uint8_t>(~byte);
  const auto unused_bits = static_cast<unsigned>(used.size() * 8 - static_cast<uint64_t>(picture.width * picture.depth));
  used.back() = static_cast<uint8_t>(used.back() >> unused_bits << unused_bits);
}

void read_plain_rows(const TiffHandle& tiff, const TiffPage& page, Finish finish, const LoadedDib& dib) {
  for (int y = 0; y < dib.height(); ++y) {
    const auto row = dib.row_from_top(y);
    tiff.run([&] { return TIFFReadScanline(tiff.get(), row.data(), static_cast<uint32_t>(y), 0) > 0; });
    finish_row(finish, page.picture, row);
  }
}

// ---- Rows and tiles whose samples are extracted ----

// The destination of decoded rows.
class RowSink {
 public:
  explicit RowSink(const TiffPage& page) : page_(page) {}
  RowSink(const RowSink&) = delete;
  RowSink& operator=(const RowSink&) = delete;
  virtual ~RowSink() = default;

  bool needs_plane(unsigned plane) const {
    return !page_.has_planes || std::ranges::any_of(page_.components, [=](const Component& c) { return c.sample == plane; });
  }

  // Takes `count` pixels of a row of a plane, from (x, y) on.
  void add(unsigned plane, int y, size_t x, size_t count, std::span<const uint8_t> samples) {
    for (const Component& component : page_.components) {
      if (page_.has_planes && component.sample != plane) continue;
      const unsigned sample = page_.has_planes ? 0 : component.sample;
      take(component, y, x, count, samples, {page_.bits, page_.samples_in_plane(), sample, page_.kind});
    }
  }

 protected:
  virtual void take(const Component& component, int y, size_t x, size_t count, std::span<const uint8_t> samples,
                    SampleLayout layout) = 0;

  const TiffPage& page_;
};

// Finds the smallest and the largest number of the colours.
class Measurement : public RowSink {
 public:
  using RowSink::RowSink;

  // Floating-point pages within 0 and 1 range from 0 to 1, all others from their smallest number to their largest.
  Range range() const {
    const bool is_share = page_.kind == SampleKind::kFloat && found_.low >= 0 && found_.high <= 1;
    return is_share ? Range{} : found_;
  }

 private:
  void take(const Component& component, int, size_t, size_t count, std::span<const uint8_t> samples,
            SampleLayout layout) override {
    if (!is_coverage(component)) widen(found_, samples, layout, count);
  }

  Range found_{std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};
};

class Assembly : public RowSink {
 public:
  Assembly(const TiffPage& page, const LoadedDib& dib, Range range)
      : RowSink(page), dib_(dib), range_(range), values_(static_cast<size_t>(page.picture.width)) {}

 private:
  void take(const Component& component, int y, size_t x, size_t count, std::span<const uint8_t> samples,
            SampleLayout layout) override {
    const auto values = std::span(values_).first(count);
    if (!is_coverage(component))
      layout.range = range_;
    else if (layout.kind == SampleKind::kSigned)
      layout.range.high = std::ldexp(1, static_cast<int>(layout.bits) - 1) - 1;
    extract(samples, layout, values);
    apply(component, page_.colors, values, dib_.row_from_top(y), page_.picture.depth, x);
  }

  const LoadedDib& dib_;
  Range range_;
  std::vector<uint8_t> values_;
};

// A buffer for `pixels` pixels of a plane's row, of the size that the library states.
std::vector<uint8_t> sample_buffer(const TiffPage& page, int64_t pixels, tmsize_t row_bytes, tmsize_t bytes) {
  const uint64_t needed = (static_cast<uint64_t>(pixels) * page.bits * page.samples_in_plane() + 7) / 8;
  if (row_bytes <= 0 || bytes < row_bytes || static_cast<uint64_t>(row_bytes) < needed) fail(IMG_E_FORMAT);
  return std::vector<uint8_t>(static_cast<size_t>(bytes));
}

void read_rows(const TiffHandle& tiff, const TiffPage& page, RowSink& sink) {
  const tmsize_t row_bytes = TIFFScanlineSize(tiff.get());
  auto samples = sample_buffer(page, page.picture.width, row_bytes, row_bytes);
  for (unsigned plane = 0; plane < page.planes(); ++plane) {
    if (!sink.needs_plane(plane)) continue;
    for (int y = 0; y < page.picture.height; ++y) {
      tiff.run([&] {
        return TIFFReadScanline(tiff.get(), samples.data(), static_cast<uint32_t>(y), static_cast<uint16_t>(plane)) > 0;
      });
      sink.add(plane, y, 0, static_cast<size_t>(page.picture.width), samples);
    }
  }
}

void read_tiles(const TiffHandle& tiff, const TiffPage& page, RowSink& sink) {
  const tmsize_t row_bytes = TIFFTileRowSize(tiff.get());
  auto samples = sample_buffer(page, page.tile_width, row_bytes, TIFFTileSize(tiff.get()));
  const auto width = static_cast<uint32_t>(page.picture.width), height = static_cast<uint32_t>(page.picture.height);
  for (unsigned plane = 0; plane < page.planes(); ++plane) {
    if (!sink.needs_plane(plane)) continue;
    for (uint64_t top = 0; top < height; top += page.tile_height)
      for (uint64_t left = 0; left < width; left += page.tile_width) {
        tiff.run([&] {
          return TIFFReadTile(tiff.get(), samples.data(), static_cast<uint32_t>(left), static_cast<uint32_t>(top), 0,
                              static_cast<uint16_t>(plane)) > 0;
        });
        const uint64_t count = std::min<uint64_t>(page.tile_width, width - left);
        const uint64_t rows = std::min<uint64_t>(page.tile_height, height - top);
        for (size_t i = 0; i < rows; ++i)
          sink.add(plane, static_cast<int>(top + i), static_cast<size_t>(left), static_cast<size_t>(count),
                   std::span(samples).subspan(i * static_cast<size_t>(row_bytes)));
      }
  }
}

void read_samples(const TiffHandle& tiff, const TiffPage& page, RowSink& sink) {
  page.has_tiles ? read_tiles(tiff, page, sink) : read_rows(tiff, page, sink);
}

// A range that the page does not state is measured in a pass over its pixels.
Range range_of(const TiffHandle& tiff, const TiffPage& page) {
  if (page.kind == SampleKind::kCount) return {};
  if (page.range) return *page.range;
  Measurement measurement(page);
  read_samples(tiff, page, measurement);
  return measurement.range();
}

// ---- Colours that the library converts ----

class Conversion {
 public:
  explicit Conversion(const TiffHandle& tiff) : tiff_(tiff) {
    std::array<char, 1024> message{};
    tiff_.check(TIFFRGBAImageOK(tiff_.get(), message.data()) != 0);
    tiff_.check(TIFFRGBAImageBegin(&image_, tiff_.get(), 1, message.data()) != 0);
    image_.req_orientation = image_.orientation;
  }
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;
  ~Conversion() { TIFFRGBAImageEnd(&image_); }

  void rows(int first, uint32_t count, std::span<uint32_t> raster) {
    image_.row_offset = first;
    tiff_.run([&] { return TIFFRGBAImageGet(&image_, raster.data(), image_.width, count) != 0; });
  }

 private:
  const TiffHandle& tiff_;
  TIFFRGBAImage image_{};
};

// Whole strips or tiles, so that nothing is decoded twice.
uint32_t rows_at_once(const TiffHandle& tiff, const TiffPage& page) {
  constexpr uint32_t kFewRows = 64;
  const auto height = static_cast<uint32_t>(page.picture.height);
  const uint32_t unit = page.has_tiles ? page.tile_height : tiff.tag<uint32_t>(TIFFTAG_ROWSPERSTRIP, height);
  if (unit == 0) fail(IMG_E_FORMAT);
  return unit >= height ? height : std::min(height, unit * std::max(1u, kFewRows / unit));
}

void read_converted(const TiffHandle& tiff, const TiffPage& page, const LoadedDib& dib) {
  Conversion conversion(tiff);
  const uint32_t band = rows_at_once(tiff, page);
  const auto width = static_cast<size_t>(dib.width());
  std::vector<uint32_t> raster(width * band);
  for (int64_t top = 0; top < dib.height(); top += band) {
    const auto count = static_cast<uint32_t>(std::min<int64_t>(band, dib.height() - top));
    conversion.rows(static_cast<int>(top), count, raster);
    for (size_t i = 0; i < width * count; ++i) {
      uint8_t* pixel = dib.row_from_top(static_cast<int>(top + static_cast<int64_t>(i / width))).data() + i % width * 3;
      pixel[0] = static_cast<uint8_t>(TIFFGetB(raster[i]));
      pixel[1] = static_cast<uint8_t>(TIFFGetG(raster[i]));
      pixel[2] = static_cast<uint8_t>(TIFFGetR(raster[i]));
    }
  }
}

void read_pixels(const TiffHandle& tiff, const TiffPage& page, const LoadedDib& dib) {
  if (page.components.empty()) return read_converted(tiff, page, dib);
  const auto finish = finish_of_plain_rows(page);
  const auto row_bytes = static_cast<uint64_t>(TIFFScanlineSize(tiff.get()));
  if (finish && row_bytes == static_cast<uint64_t>(page.picture.width * page.picture.depth + 7) / 8)
    return read_plain_rows(tiff, page, *finish, dib);
  Assembly assembly(page, dib, range_of(tiff, page));
  read_samples(tiff, page, assembly);
}

// Group 3 rows that have too many runs are read from a copy that the library has room for.
void read_all_pixels(const TiffHandle& tiff, const TiffPage& page, const LoadedDib& dib) {
  try {
    return read_pixels(tiff, page, dib);
  } catch (const Failure&) {
    if (!tiff.ran_out_of_runs() || !is_one_dimensional_group3(tiff)) throw;
  }
  MemoryBytes copy;
  make_two_dimensional(tiff, copy);
  read_pixels(TiffHandle(copy, "r"), page, dib);
}

}  // namespace

HGLOBAL read_tiff(Bytes& bytes, int page_number) {
  const TiffHandle tiff = open_page(bytes, page_number);
  const TiffPage page = read_tags(tiff, bytes.size());
  const Description described = upright(page.picture, page.orientation);
  offer(described);
  LoadedDib stored(page.picture);
  read_all_pixels(tiff, page, stored);
  if (page.is_lab)
    for (int y = 0; y < stored.height(); ++y)
      lab_to_true_color(stored.row_from_top(y).first(static_cast<size_t>(stored.width()) * 3));
  return upright(std::move(stored), described, page.orientation);
}

int read_tiff_compression(Bytes& bytes, int page_number) {
  return open_page(bytes, page_number).tag<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
}

}  // namespace codec
