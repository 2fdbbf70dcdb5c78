#include "common/picture.h"

#include <algorithm>
#include <climits>

#include "common/problem.h"
#include "core/pixel.h"

namespace vorel::programs {
namespace {

[[noreturn]] void fail_for_memory() {
  throw Problem(Fault::kLimit, "there is not enough memory for the result; close programs or ask for a smaller one");
}

// Why a block is no picture that the programs can hold; null if it is one.
const char* flaw_of(std::span<const uint8_t> block, const DibHeader& header) {
  if (header.size != kHeaderBytes) return "its header is not of 40 bytes";
  if (header.width <= 0 || header.height == 0 || header.height == INT_MIN) return "it has no pixels";
  if (header.planes != 1) return "it counts several colour planes";
  if (!is_stored_depth(header.depth)) return "it has no pixels of this depth";
  const bool is_plain = header.compression == Compression::kNone;
  if (!is_plain && !(header.compression == Compression::kRle8 && header.depth == 8) &&
      !(header.compression == Compression::kRle4 && header.depth == 4))
    return "its compression is unknown";
  const ByteCount needed = bits_offset(header) + (is_plain ? plain_bytes(header) : ByteCount(0));
  return needed > ByteCount(block.size()) ? "it is shorter than its header says" : nullptr;
}

}  // namespace

bool is_stored_depth(int depth) { return is_pixel_depth(depth) || depth == 16 || depth == 32; }

uint64_t row_count(const DibHeader& header) {
  const int64_t height = header.height;
  return static_cast<uint64_t>(height < 0 ? -height : height);
}

ByteCount plain_bytes(const DibHeader& header) { return row_stride(header.depth, header.width) * row_count(header); }

Picture::Picture(HGLOBAL dib) {
  void* const data = dib == nullptr ? nullptr : GlobalLock(dib);
  if (data == nullptr) {
    GlobalFree(dib);
    fail_for_memory();
  }
  block_.reset(dib);
  data_ = static_cast<uint8_t*>(data);
  const char* flaw = "it is shorter than a header";
  if (bytes().size() >= kHeaderBytes) {
    header_ = read_header(bytes());
    flaw = flaw_of(bytes(), header_);
  }
  if (flaw != nullptr)
    throw Problem(Fault::kFormat, std::string("the picture is damaged: ") + flaw + "; get another copy of it");
}

Picture Picture::blank(DibHeader header, std::span<const Rgb> colors) {
  header.compression = Compression::kNone;
  return blank(header, colors, plain_bytes(header));
}

Picture Picture::blank(DibHeader header, std::span<const Rgb> colors, ByteCount bytes) {
  header.size = kHeaderBytes;
  header.planes = 1;
  header.colors_used = static_cast<uint32_t>(colors.size());
  header.colors_important = std::min(header.colors_important, header.colors_used);
  header.image_bytes = static_cast<uint32_t>(bytes.value());
  const ByteCount table = palette_bytes(header), whole = kHeaderBytes + table + bytes;
  const HGLOBAL block = whole.fits_block() ? GlobalAlloc(GHND, static_cast<size_t>(whole.value())) : nullptr;
  if (block == nullptr) fail_for_memory();
  if (void* const data = GlobalLock(block)) {
    vorel::write_header({static_cast<uint8_t*>(data), kHeaderBytes}, header);
    std::ranges::copy(std::as_bytes(colors), static_cast<std::byte*>(data) + kHeaderBytes);
    GlobalUnlock(block);
  }
  return Picture(block);
}

Picture Picture::copy() const {
  const HGLOBAL block = GlobalAlloc(GHND, bytes().size());
  void* const data = block == nullptr ? nullptr : GlobalLock(block);
  if (data == nullptr) {
    GlobalFree(block);
    fail_for_memory();
  }
  std::ranges::copy(bytes(), static_cast<uint8_t*>(data));
  GlobalUnlock(block);
  return Picture(block);
}

Picture Picture::lent() const {
  Picture picture;
  picture.block_ = {block_.get(), UnlockAndFree{.owns = false}};
  picture.data_ = data_;
  picture.header_ = header_;
  return picture;
}

HGLOBAL Picture::release() {
  if (is_lent()) return copy().release();
  GlobalUnlock(block_.get());
  return block_.release();
}

void Picture::write_header() {
  const DibHeader header = header_;
  if (is_lent()) *this = copy();
  header_ = header;
  vorel::write_header(bytes(), header_);
}

void Picture::set_resolution(int x_per_metre, int y_per_metre) {
  header_.x_per_metre = x_per_metre;
  header_.y_per_metre = y_per_metre;
  write_header();
}

void Picture::set_rows_order(bool top_down) {
  header_.height = top_down ? -height() : height();
  write_header();
}

std::span<Rgb> Picture::colors() const {
  return {reinterpret_cast<Rgb*>(data_ + kHeaderBytes), static_cast<size_t>(DIBNumColors(header_))};
}

DibView Picture::pixels() const {
  return {FindDIBBits(data_, header_), static_cast<std::ptrdiff_t>(row_stride(header_.depth, header_.width).value()),
          width(), height(), depth()};
}

std::span<uint8_t> Picture::image_bytes() const {
  return bytes().subspan(static_cast<size_t>(bits_offset(header_).value()));
}

Picture made_own(Picture picture) { return picture.is_lent() ? picture.copy() : std::move(picture); }

Picture blank_like(const Picture& picture, Size size, int depth) {
  DibHeader header = picture.header();
  header.width = size.width;
  header.height = size.height;
  header.depth = static_cast<uint16_t>(depth);
  if (depth > 8) return Picture::blank(header);
  return Picture::blank(header, picture.colors());
}

uint32_t color_of(const Picture& picture, uint32_t pixel) {
  if (picture.depth() > 8) return pixel;
  if (pixel >= picture.colors().size()) return 0;
  const Rgb color = picture.colors()[pixel];
  return color.blue | uint32_t{color.green} << 8 | uint32_t{color.red} << 16;
}

std::span<const Rgb> used_colors(const Picture& picture) {
  return picture.colors().first(std::min(picture.colors().size(), size_t{1} << picture.depth()));
}

}  // namespace vorel::programs
