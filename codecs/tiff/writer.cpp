#include "tiff/writer.h"

#include <algorithm>
#include <array>

#include "tiff/directories.h"
#include "tiff/group3.h"
#include "tiff/group4.h"

namespace codec {
namespace {

bool is_black_on_white(const SourceDib& dib) { return same_colors(dib.colors(), {color(255, 255, 255), color(0, 0, 0)}); }

bool suits(const SourceDib& dib, int compression) {
  switch (compression) {
    case COMPRESSION_NONE:
    case COMPRESSION_LZW:
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_PACKBITS: return true;
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4: return dib.depth() == 1;
    case COMPRESSION_JPEG: return dib.depth() == 24 || (dib.depth() == 8 && is_gray_ramp(dib));
    default: return false;
  }
}

uint16_t photometric_for(const SourceDib& dib, int compression) {
  if (dib.depth() == 24) return compression == COMPRESSION_JPEG ? PHOTOMETRIC_YCBCR : PHOTOMETRIC_RGB;
  if (dib.depth() == 1 && (is_gray_ramp(dib) || is_black_on_white(dib))) return PHOTOMETRIC_MINISWHITE;
  return is_gray_ramp(dib) ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_PALETTE;
}

template <class... Values>
void set(const TiffHandle& tiff, uint32_t tag, Values... values) {
  tiff.run([&] { return TIFFSetField(tiff.get(), tag, values...) != 0; });
}

// Fax programs expect a page in one strip. Other readers prefer small strips.
uint32_t rows_per_strip(const SourceDib& dib, int compression) {
  constexpr size_t kStripBytes = size_t{64} << 10;
  constexpr size_t kJpegBlockRows = 16;
  if (compression >= COMPRESSION_CCITTRLE && compression <= COMPRESSION_CCITTFAX4)
    return static_cast<uint32_t>(dib.height());
  const size_t rows = std::max<size_t>(1, kStripBytes / dib.row_from_top(0).size());
  const size_t unit = compression == COMPRESSION_JPEG ? kJpegBlockRows : 1;
  return static_cast<uint32_t>((rows + unit - 1) / unit * unit);
}

void set_resolution(const TiffHandle& tiff, Resolution resolution) {
  const int x = whole_dpi(resolution.x), y = whole_dpi(resolution.y);
  const bool are_whole = (x > 0 || resolution.x <= 0) && (y > 0 || resolution.y <= 0);
  const auto stated = [&](int dpi, int per_metre) { return are_whole ? dpi : per_metre / 100.0; };
  set(tiff, TIFFTAG_RESOLUTIONUNIT, are_whole ? RESUNIT_INCH : RESUNIT_CENTIMETER);
  if (resolution.x > 0) set(tiff, TIFFTAG_XRESOLUTION, stated(x, resolution.x));
  if (resolution.y > 0) set(tiff, TIFFTAG_YRESOLUTION, stated(y, resolution.y));
}

void set_colors(const TiffHandle& tiff, const Colors& colors) {
  std::array<std::vector<uint16_t>, 3> maps;
  const auto widened = [](uint8_t value) { return static_cast<uint16_t>(value * 257); };
  for (const Rgb& color : colors) {
    maps[0].push_back(widened(color.red));
    maps[1].push_back(widened(color.green));
    maps[2].push_back(widened(color.blue));
  }
  set(tiff, TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
  std::array<uint16_t*, 3> copies{};
  TIFFGetField(tiff.get(), TIFFTAG_COLORMAP, &copies[0], &copies[1], &copies[2]);
  if (std::ranges::count(copies, nullptr) != 0) fail(IMG_E_MEMORY);  // the library does not report it
}

// A row as it is encoded: complemented if requested, channels in the file's order.
void encode_row(std::span<const uint8_t> source, const SourceDib& dib, const Encoding& encoding, std::vector<uint8_t>& row) {
  row.assign(source.begin(), source.end());
  if (dib.depth() == 24) swap_red_and_blue(row, dib.width());
  if (encoding.is_complemented)
    for (uint8_t& byte : row) byte = static_cast<uint8_t>(~byte);
}

bool has_long_rows(const SourceDib& dib, const Encoding& encoding) {
  if (encoding.compression != COMPRESSION_CCITTRLE && encoding.compression != COMPRESSION_CCITTFAX3) return false;
  std::vector<uint8_t> row;
  for (int y = 0; y < dib.height(); ++y) {
    encode_row(dib.row_from_top(y), dib, encoding, row);
    if (has_too_many_runs(row, dib.width())) return true;
  }
  return false;
}

// Modified Huffman has no two-dimensional codes. In a tile that is wider than the picture libtiff has room for all runs.
bool needs_tile(const Encoding& encoding) { return encoding.has_long_rows && encoding.compression == COMPRESSION_CCITTRLE; }
constexpr int kTileUnit = 16;

void set_tags(const TiffHandle& tiff, const SourceDib& dib, const Encoding& encoding) {
  const bool is_true_color = dib.depth() == 24;
  set(tiff, TIFFTAG_IMAGEWIDTH, dib.width());
  set(tiff, TIFFTAG_IMAGELENGTH, dib.height());
  set(tiff, TIFFTAG_BITSPERSAMPLE, is_true_color ? 8 : dib.depth());
  set(tiff, TIFFTAG_SAMPLESPERPIXEL, is_true_color ? 3 : 1);
  set(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  set(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  set(tiff, TIFFTAG_COMPRESSION, encoding.compression);
  set(tiff, TIFFTAG_PHOTOMETRIC, encoding.photometric);
  if (needs_tile(encoding)) {
    set(tiff, TIFFTAG_TILEWIDTH, dib.width() + kTileUnit);
    set(tiff, TIFFTAG_TILELENGTH, (dib.height() + kTileUnit - 1) / kTileUnit * kTileUnit);
  } else {
    set(tiff, TIFFTAG_ROWSPERSTRIP, rows_per_strip(dib, encoding.compression));
  }
  if (encoding.has_long_rows && !needs_tile(encoding)) set(tiff, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
  if (encoding.photometric == PHOTOMETRIC_YCBCR) set(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  if (encoding.photometric == PHOTOMETRIC_PALETTE) set_colors(tiff, dib.colors());
  if (encoding.predictor != PREDICTOR_NONE) set(tiff, TIFFTAG_PREDICTOR, encoding.predictor);
  // The encoder that every build of libtiff has, so that all builds write the same bytes.
  if (encoding.compression == COMPRESSION_ADOBE_DEFLATE) set(tiff, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
  set_resolution(tiff, dib.resolution());
}

// The file being written. When a page is added, the only change to existing bytes, the link to the new page, is held back
// until the page is written.
class PageBytes : public Bytes {
 public:
  explicit PageBytes(OutputFile& file) : file_(file), size_(file.found_size()) {}

  size_t read(uint64_t offset, std::span<uint8_t> bytes) noexcept override { return read_at(file_.get(), offset, bytes); }

  size_t write(uint64_t offset, std::span<const uint8_t> bytes) noexcept override {
    try {
      if (offset < file_.found_size()) {
        held_back_.push_back({offset, {bytes.begin(), bytes.end()}});
      } else {
        put(offset, bytes);
        size_ = std::max(size_, offset + bytes.size());
      }
      return bytes.size();
    } catch (...) {
      failed_ = true;
      return 0;
    }
  }

  uint64_t size() const noexcept override { return size_; }
  bool failed() const noexcept override { return failed_ || std::ferror(file_.get()) != 0; }

  void complete() {
    if (std::fflush(file_.get()) != 0 || failed()) fail(IMG_E_FILE_IO);
    for (const Change& change : held_back_) file_.overwrite(change.offset, change.bytes);
    file_.complete();
  }

 private:
  struct Change {
    uint64_t offset;
    std::vector<uint8_t> bytes;
  };

  void put(uint64_t offset, std::span<const uint8_t> bytes) const {
    file_.seek(offset);
    file_.write(bytes);
  }

  OutputFile& file_;
  uint64_t size_;
  std::vector<Change> held_back_;
  bool failed_ = false;
};

// The library fills in these numbers by itself. When memory is short it loses them but still reports them as present.
void check_black_and_white(const TiffHandle& tiff, const Encoding& encoding) {
  const float* levels = nullptr;
  const bool has_levels =
      encoding.photometric == PHOTOMETRIC_YCBCR && TIFFGetField(tiff.get(), TIFFTAG_REFERENCEBLACKWHITE, &levels) != 0;
  if (has_levels && levels == nullptr) fail(IMG_E_MEMORY);
}

// The number of pages in a file that a page can be added to.
size_t pages_in(const char* path) {
  const InputFile file(path);
  FileBytes bytes(file);
  const DirectoryChain chain = follow_directories(bytes);
  if (!chain.ends || chain.pages >= kMostPages) fail(IMG_E_FORMAT);
  return chain.pages;
}

}  // namespace

Encoding encoding_for(const SourceDib& dib, int compression) {
  constexpr int kMostJpegPixels = 65'500;  // in a row
  if (compression == 0) compression = dib.depth() == 1 ? COMPRESSION_CCITTFAX4 : COMPRESSION_ADOBE_DEFLATE;
  if (!suits(dib, compression)) fail(IMG_E_PARAMETER);
  if (compression == COMPRESSION_JPEG && dib.width() > kMostJpegPixels) fail(IMG_E_DIB_SIZE);
  const uint16_t photometric = photometric_for(dib, compression);
  const bool predicts = compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE;
  const bool has_gradients = dib.depth() >= 8 && photometric != PHOTOMETRIC_PALETTE;
  Encoding encoding{.compression = static_cast<uint16_t>(compression),
                    .photometric = photometric,
                    .predictor = static_cast<uint16_t>(predicts && has_gradients ? PREDICTOR_HORIZONTAL : PREDICTOR_NONE),
                    .is_complemented = photometric == PHOTOMETRIC_MINISWHITE && is_gray_ramp(dib)};
  encoding.has_long_rows = has_long_rows(dib, encoding);
  return encoding;
}

std::vector<uint8_t> group4_data(const SourceDib& dib, bool white_bit) {
  Group4Encoder encoder(dib.width(), white_bit);
  for (int y = 0; y < dib.height(); ++y) encoder.add_row(dib.row_from_top(y));
  return encoder.finish();
}

void write_picture(const TiffHandle& tiff, const SourceDib& dib, const Encoding& encoding) {
  set_tags(tiff, dib, encoding);
  if (encoding.compression == COMPRESSION_CCITTFAX4) {
    std::vector<uint8_t> data = group4_data(dib, encoding.is_complemented);
    const auto size = static_cast<tmsize_t>(data.size());
    tiff.check(TIFFWriteRawStrip(tiff.get(), 0, data.data(), size) == size);
    return;
  }
  std::vector<uint8_t> row;  // a copy, since the library changes rows while it encodes them
  std::vector<uint8_t> tile;
  for (int y = 0; y < dib.height(); ++y) {
    encode_row(dib.row_from_top(y), dib, encoding, row);
    if (needs_tile(encoding)) {
      row.resize(static_cast<size_t>(TIFFTileRowSize(tiff.get())));
      tile.insert(tile.end(), row.begin(), row.end());
    } else {
      tiff.check(TIFFWriteScanline(tiff.get(), row.data(), static_cast<uint32_t>(y), 0) > 0);
    }
  }
  if (tile.empty()) return;
  tile.resize(static_cast<size_t>(TIFFTileSize(tiff.get())));
  tiff.check(TIFFWriteTile(tiff.get(), tile.data(), 0, 0, 0, 0) > 0);
}

void save_tiff(const char* path, const SourceDib& dib, int compression, bool adds_page) {
  const Encoding encoding = encoding_for(dib, compression);
  const size_t page = adds_page ? pages_in(path) : 0;
  OutputFile file(path, adds_page ? OutputFile::Mode::kAdd : OutputFile::Mode::kReplace);
  PageBytes bytes(file);
  {
    const TiffHandle tiff(bytes, adds_page ? "a" : "w");
    set(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
    set(tiff, TIFFTAG_PAGENUMBER, static_cast<int>(page), 0);
    write_picture(tiff, dib, encoding);
    check_black_and_white(tiff, encoding);
    tiff.run([&] { return TIFFWriteDirectory(tiff.get()) != 0; });
  }
  bytes.complete();
}

}  // namespace codec
