#include "geometry/device_combine.h"

#include "dib/device_bitmap.h"
#include "dib/packed_dib.h"
#include "platform/user.h"

namespace vorel::geometry {
namespace {

// A bitmap selected into a memory context for a scope.
class Canvas {
 public:
  explicit Canvas(HBITMAP bitmap) : dc_(nullptr), selection_(dc_.get(), bitmap) {}
  HDC get() const { return dc_.get(); }

 private:
  MemoryDc dc_;
  Selection selection_;
};

struct Extent {
  int width, height;
  friend bool operator==(Extent, Extent) = default;
};

Extent extent_of(const BITMAP& facts) { return {facts.bmWidth, facts.bmHeight}; }

// Combines `source`, from its top left corner on, with the target.
bool paint(const Canvas& target, Place at, Extent extent, const Canvas& source, DWORD operation) {
  return BitBlt(target.get(), at.x, at.y, extent.width, extent.height, source.get(), 0, 0, operation) != 0;
}

struct Painting {
  HBITMAP bitmap;
  Extent extent;
};

bool paint_plain(Painting target, Place at, HBITMAP source, bool flag) {
  const Canvas to(target.bitmap), from(source);
  return paint(to, at, target.extent, from, flag ? SRCPAINT : SRCCOPY);
}

bool paint_masked(Painting target, Place at, Painting source, HBITMAP mask, bool flag) {
  constexpr Place kCorner{0, 0};
  const Canvas to(target.bitmap), from(source.bitmap), through(mask);
  const bool is_cut_out = paint(from, kCorner, source.extent, through, SRCAND) &&
                          PatBlt(through.get(), 0, 0, source.extent.width, source.extent.height, DSTINVERT) != 0;
  if (!is_cut_out) return false;
  if (flag) return paint(to, at, target.extent, from, SRCINVERT);
  return paint(to, at, target.extent, through, SRCAND) && paint(to, at, target.extent, from, SRCPAINT);
}

// A copy of a DIB of the length that its header states. A quirk that is kept: a header without an image size gives a copy
// without pixels.
Result<OwnedDib> copied(HGLOBAL source) {
  const auto locked = LockedDib::lock(source);
  if (!locked || !locked->has_header()) return Error::kCombineLock;
  const DibHeader& header = locked->header();
  if (header.compression != Compression::kNone) return Error::kCombineCompressed;
  const uint32_t colors = header.colors_used != 0 ? header.colors_used : implied_colors(header.depth);
  const ByteCount bytes = kHeaderBytes + ByteCount(colors) * sizeof(Rgb) + header.image_bytes;
  auto copy = OwnedDib::allocate(bytes);
  if (!copy) return copy.error() == Error::kLock ? Error::kCombineLock : Error::kCombineMemory;
  const auto available = locked->part(0, bytes);
  std::ranges::copy(available, copy->bytes().begin());
  return copy;
}

Result<OwnedBitmap> bitmap_for(HGLOBAL dib) { return bitmap_of(dib).or_error(Error::kCombineBitmap); }

}  // namespace

Result<bool> combine_bitmaps(Place at, HBITMAP* target, HBITMAP source, HBITMAP mask, bool flag) {
  if (source == nullptr || target == nullptr) return Error::kCombineParameter;
  if (*target == nullptr) {
    auto copy = duplicate(source);
    if (!copy || !*copy) return Error::kCombineCopy;
    *target = copy->release();
    return true;
  }
  const auto target_facts = describe(*target), source_facts = describe(source);
  if (!target_facts || !source_facts) return Error::kUnreported;
  const Painting painted{*target, extent_of(*target_facts)};
  if (mask == nullptr) return paint_plain(painted, at, source, flag);

  const auto mask_facts = describe(mask);
  if (!mask_facts || extent_of(*mask_facts) != extent_of(*source_facts)) return Error::kCombineSizes;
  OwnedBitmap converted;
  if (mask_facts->bmPlanes != 1 || mask_facts->bmBitsPixel != 1) {
    converted = VOREL_TRY(monochrome_copy(mask));
    if (!converted) return Error::kUnreported;
    mask = converted.get();
  }
  return paint_masked(painted, at, {source, extent_of(*source_facts)}, mask, flag);
}

Result<bool> combine_dibs(Place at, HGLOBAL* target, HGLOBAL source, HGLOBAL mask, bool flag) {
  if (source == nullptr || target == nullptr) return Error::kCombineParameter;
  if (*target == nullptr) {
    OwnedDib copy = VOREL_TRY(copied(source));
    *target = copy.release();
    return true;
  }
  const WaitCursor cursor;
  const auto source_bitmap = bitmap_for(source), target_bitmap = bitmap_for(*target);
  if (!source_bitmap || !target_bitmap) return Error::kCombineBitmap;
  OwnedBitmap mask_bitmap;
  if (mask != nullptr) {
    mask_bitmap = VOREL_TRY(bitmap_for(mask));
  }
  const auto locked = LockedDib::lock(*target);
  if (!locked) return Error::kCombineLock;
  // Pixels are read back uncompressed, for which a compressed target has no room.
  if (locked->header().compression != Compression::kNone) return Error::kCombineBitmap;
  HBITMAP painted = target_bitmap->get();
  const auto combined = combine_bitmaps(at, &painted, source_bitmap->get(), mask_bitmap.get(), flag);
  if (combined && *combined && !read_back(painted, *locked)) return Error::kMemory;
  return combined;
}

}  // namespace vorel::geometry
