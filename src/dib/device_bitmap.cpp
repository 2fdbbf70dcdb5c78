#include "dib/device_bitmap.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "dib/device_format.h"
#include "dib/device_palette.h"
#include "dib/open_dib.h"
#include "frame/thread_context.h"
#include "platform/user.h"

namespace vorel {
namespace {

// Bytes behind the rows of a DIB that is made from a bitmap.
constexpr uint32_t kSpareBytes = 10;

// A header with room for the largest colour table that the system may write.
struct DeviceDibInfo {
  DibHeader header;
  Rgb colors[256];

  BITMAPINFO* get() { return reinterpret_cast<BITMAPINFO*>(this); }
};

// Entries of a palette; 0 for an invalid handle.
uint32_t entries_of(HPALETTE palette) {
  WORD count = 0;
  if (GetObjectType(palette) == OBJ_PAL) GetObject(palette, sizeof count, &count);
  return count;
}

// Fills a DIB's table from a palette, or with the default colours if there is no palette or it has more colours than the
// DIB.
void fill_colors(std::span<Rgb> table, uint32_t depth, HPALETTE palette) {
  const uint32_t count = entries_of(palette);
  if (count == 0 || count > table.size()) {
    std::ranges::copy(default_colors(depth), table.begin());
    return;
  }
  PALETTEENTRY entries[256] = {};
  GetPaletteEntries(palette, 0, count, entries);
  std::transform(entries, entries + count, table.begin(), [](const PALETTEENTRY& entry) {
    return Rgb{entry.peBlue, entry.peGreen, entry.peRed, 0};
  });
}

uint32_t row_count(const DibHeader& header) {
  return header.height < 0 ? 0 - static_cast<uint32_t>(header.height) : static_cast<uint32_t>(header.height);
}

// Bytes of a DIB that the system may read when it makes a bitmap of it. The system assumes a full table, three masks for
// masked pixels, all planes, and for a compressed picture the stated length. Asking for more would copy DIBs needlessly.
ByteCount bytes_read_by_device(const DibHeader& header) {
  const bool is_compressed = header.compression != Compression::kNone && header.compression != Compression::kBitFields;
  const uint32_t rows = row_count(header);
  const uint32_t row_bits = uint32_t{std::max<uint16_t>(header.planes, 1)} * header.depth;
  const ByteCount pixels = row_stride(row_bits, std::max(header.width, 0)) * rows;
  const uint32_t masks = header.compression == Compression::kBitFields ? 3 : 0;
  const ByteCount table = (ByteCount(std::max(DIBNumColors(header), implied_colors(header.depth))) + masks) * sizeof(Rgb);
  return header.size + table + (is_compressed ? std::max(pixels, ByteCount(header.image_bytes)) : pixels);
}

// A header that states its number of colours and the size of its rows, with its colours. Metafiles rely on both numbers.
DeviceDibInfo with_stated_sizes(const DibHeader& header, std::span<const uint8_t> colors) {
  DeviceDibInfo info{.header = header, .colors = {}};
  std::memcpy(info.colors, colors.data(), std::min(colors.size(), sizeof info.colors));
  const uint32_t most = implied_colors(header.depth);
  info.header.colors_used = most == 0 ? 0 : std::min(DIBNumColors(header), most);
  const bool is_run_length = header.compression == Compression::kRle8 || header.compression == Compression::kRle4;
  if (!is_run_length) {
    const ByteCount rows = row_stride(header.depth, std::max(header.width, 0)) * row_count(header);
    info.header.image_bytes = static_cast<uint32_t>(rows.value());
  }
  return info;
}

Result<OwnedBitmap> bitmap_of(const LockedDib& dib, HDC dc, HPALETTE palette) {
  const auto whole = DeviceDib::of(dib);
  if (!whole) return Error::kCreateBitmap;
  const PaletteSelection selection(dc, palette);
  const BITMAPINFO* info = whole->info();
  OwnedBitmap bitmap(CreateDIBitmap(dc, &info->bmiHeader, CBM_INIT, whole->pixels(), info, DIB_RGB_COLORS));
  if (!bitmap) return Error::kCreateBitmap;
  return bitmap;
}

}  // namespace

std::optional<BITMAP> describe(HBITMAP bitmap) {
  BITMAP facts{};
  if (GetObjectType(bitmap) != OBJ_BITMAP || GetObject(bitmap, sizeof facts, &facts) == 0) return std::nullopt;
  // DIB sections state the row length in memory; GetBitmapBits returns rows padded to 16 bits.
  facts.bmWidthBytes = static_cast<LONG>((int64_t{facts.bmWidth} * facts.bmBitsPixel + 15) / 16 * 2);
  facts.bmBits = nullptr;
  return facts;
}

bool copy_bits_out(HBITMAP bitmap, std::span<uint8_t> bits) {
  return GetBitmapBits(bitmap, static_cast<LONG>(bits.size()), bits.data()) == static_cast<LONG>(bits.size());
}

Result<OwnedDib> dib_of(HBITMAP bitmap, HPALETTE palette) {
  const auto facts = describe(bitmap);
  if (!facts) return Error::kUnreported;
  const auto header =
      header_for_device_bitmap(facts->bmWidth, facts->bmHeight, uint32_t{facts->bmPlanes} * facts->bmBitsPixel);
  if (!header) return Error::kUnreported;
  NewDib dib = VOREL_TRY(NewDib::make(*header, ByteCount(header->image_bytes) + kSpareBytes).or_error(Error::kUnreported));

  OwnedPalette of_screen;
  if (palette == nullptr && header->depth != 1) {
    auto current = screen_palette();
    if (current) {
      of_screen = std::move(*current);
    } else {
      set_thread_error(current.error());
    }
  }
  HPALETTE colors = palette != nullptr ? palette : of_screen.get();

  const ScreenDc screen;
  if (!screen) return Error::kUnreported;
  const PaletteSelection selection(screen.get(), colors);
  DeviceDibInfo info{.header = *header, .colors = {}};
  const std::span<Rgb> table(info.colors, header->colors_used);
  fill_colors(table, header->depth, colors);
  // The system's own colours replace the table's and are kept; changes that it makes to the header are not.
  GetDIBits(screen.get(), bitmap, 0, static_cast<UINT>(header->height), dib.image().data(), info.get(), DIB_RGB_COLORS);
  std::ranges::copy(table, dib.colors().begin());
  return OwnedDib(std::move(dib));
}

Result<OwnedDib> dib_in_screen_colors(HBITMAP bitmap) {
  const auto palette = screen_palette();
  if (!palette) set_thread_error(palette.error());
  return dib_of(bitmap, palette ? palette->get() : nullptr);
}

OwnedBitmap empty_bitmap(Size size, int planes, int bits_per_pixel) {
  if (size.width <= 0 || size.height <= 0 || planes <= 0 || bits_per_pixel <= 0) return OwnedBitmap();
  const auto bits = static_cast<uint32_t>(planes * bits_per_pixel);
  const ByteCount bytes = row_stride(bits, size.width) * static_cast<uint32_t>(size.height);
  if (!bytes.fits_block()) return OwnedBitmap();
  return OwnedBitmap(
      CreateBitmap(size.width, size.height, static_cast<UINT>(planes), static_cast<UINT>(bits_per_pixel), nullptr));
}

std::optional<DeviceDib> DeviceDib::of(const LockedDib& dib) {
  if (dib.header().size != kHeaderBytes) return std::nullopt;
  auto whole = dib.complete(bytes_read_by_device(dib.header()));
  if (!whole) return std::nullopt;
  return DeviceDib(dib.header(), std::move(*whole));
}

Size DeviceDib::size() const { return {header_.width, static_cast<int>(row_count(header_))}; }

bool DeviceDib::stretch(HDC dc, Rect to, Rect from, DWORD raster_operation) const {
  DeviceDibInfo explicit_info = with_stated_sizes(header_, whole_.bytes().subspan(kHeaderBytes));
  // The system counts the rows of a source from the bottom.
  const int rows_below = size().height - from.y - from.height;
  return StretchDIBits(dc, to.x, to.y, to.width, to.height, from.x, rows_below, from.width, from.height, pixels(),
                       explicit_info.get(), DIB_RGB_COLORS, raster_operation) != 0;
}

Result<OwnedBitmap> bitmap_of(const LockedDib& dib) {
  const DibHeader& header = dib.header();
  if (header.size != kHeaderBytes) return Error::kCreateBitmap;
  const auto palette = palette_of(dib);
  if (!palette) set_thread_error(palette.error());  // the bitmap is still made, without realised colours
  HPALETTE colors = palette ? palette->get() : nullptr;

  // A bitmap made for a memory context is monochrome; all other pictures get the screen's format.
  if (header.depth == 1 && header.planes == 1) {
    const MemoryDc memory(nullptr);
    return memory ? bitmap_of(dib, memory.get(), colors) : Error::kUnreported;
  }
  const ScreenDc screen;
  return screen ? bitmap_of(dib, screen.get(), colors) : Error::kUnreported;
}

Result<OwnedBitmap> bitmap_of(HGLOBAL handle) {
  const auto dib = LockedDib::lock(handle);
  if (!dib) return Error::kUnreported;
  return bitmap_of(*dib);
}

bool read_back(HBITMAP bitmap, const LockedDib& dib) {
  const DibHeader& header = dib.header();
  const auto whole = dib.complete(bytes_read_by_device(header));
  if (!whole) return false;
  // The system may write more colours than the DIB has room for.
  DeviceDibInfo info{.header = header, .colors = {}};
  const auto table = colors_in(*whole).first(std::min<size_t>(std::size(info.colors), DIBNumColors(header)));
  std::ranges::copy(table, info.colors);
  if (const auto shown = screen_colors())
    std::ranges::copy(std::span(*shown).first(std::min(shown->size(), table.size())), info.colors);

  const ScreenDc screen;
  const auto palette = screen_palette();
  if (!palette) set_thread_error(palette.error());
  const PaletteSelection selection(screen.get(), palette ? palette->get() : nullptr);
  uint8_t* const rows = FindDIBBits(whole->bytes().data(), header);
  GetDIBits(screen.get(), bitmap, 0, row_count(header), rows, info.get(), DIB_RGB_COLORS);
  std::ranges::copy(std::span(info.colors).first(table.size()), table.begin());
  whole->write_back();
  return true;
}

Result<OwnedBitmap> monochrome_copy(HBITMAP bitmap) {
  const auto facts = describe(bitmap);
  if (!facts) return Error::kParameter;
  const WaitCursor cursor;
  const auto header = header_for_device_bitmap(facts->bmWidth, facts->bmHeight, 1);
  if (!header) return Error::kMemory;
  const auto lines = ZeroedBuffer::allocate(header->image_bytes);
  if (!lines) return Error::kMemory;

  DeviceDibInfo info{.header = *header, .colors = {}};
  info.header.colors_used = info.header.colors_important = 0;
  fill_colors({info.colors, 2}, 1, nullptr);
  const ScreenDc screen;
  const auto count = static_cast<UINT>(facts->bmHeight);
  GetDIBits(screen.get(), bitmap, 0, count, lines->bytes().data(), info.get(), DIB_RGB_COLORS);
  OwnedBitmap copy(CreateBitmap(facts->bmWidth, facts->bmHeight, 1, 1, nullptr));
  SetDIBits(screen.get(), copy.get(), 0, count, lines->bytes().data(), info.get(), DIB_RGB_COLORS);
  return copy;
}

Result<OwnedBitmap> duplicate(HBITMAP bitmap) {
  const auto facts = describe(bitmap);
  if (!facts) return Error::kCopyBits;
  BITMAP copy = *facts;
  const auto bits = ZeroedBuffer::allocate(ByteCount(copy.bmPlanes) * static_cast<uint32_t>(copy.bmHeight) *
                                           static_cast<uint32_t>(copy.bmWidthBytes));
  if (!bits) return Error::kMemory;
  if (!copy_bits_out(bitmap, bits->bytes())) return Error::kCopyBits;
  copy.bmBits = bits->bytes().data();
  return OwnedBitmap(CreateBitmapIndirect(&copy));
}

}  // namespace vorel
