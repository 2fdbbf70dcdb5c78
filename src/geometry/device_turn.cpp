#include "geometry/device_turn.h"

#include <optional>

#include "dib/device_bitmap.h"
#include "platform/user.h"

namespace vorel::geometry {
namespace {

DeviceBitsFormat format_of(const BITMAP& facts) {
  return {.width = facts.bmWidth,
          .height = facts.bmHeight,
          .width_bytes = facts.bmWidthBytes,
          .planes = facts.bmPlanes,
          .depth = facts.bmBitsPixel};
}

// The bits of a bitmap after a turn.
Result<ZeroedBuffer> turned_bits(HBITMAP bitmap, const DeviceBitsFormat& format, DeviceTurn turn) {
  const auto bits = ZeroedBuffer::allocate(device_bits_size(format));
  if (!bits) return Error::kMemory;
  if (GetBitmapBits(bitmap, static_cast<LONG>(bits->bytes().size()), bits->bytes().data()) == 0) return Error::kCopyBits;
  auto result = ZeroedBuffer::allocate(turned_bits_size(format, turn));
  if (!result) return Error::kMemory;
  turn_device_bits(format, turn, bits->bytes(), result->bytes());
  return std::move(*result);
}

}  // namespace

Result<OwnedBitmap> quarter_turned(HBITMAP bitmap, DeviceTurn turn) {
  const auto facts = describe(bitmap);
  if (!facts) return Error::kBitmapParameters;
  const WaitCursor cursor;
  const DeviceBitsFormat format = format_of(*facts);
  const ZeroedBuffer bits = VOREL_TRY(turned_bits(bitmap, format, turn));
  const DeviceBitsFormat turned = turned_format(format, turn);
  BITMAP result = *facts;
  result.bmWidth = turned.width;
  result.bmHeight = turned.height;
  result.bmWidthBytes = turned.width_bytes;
  result.bmBits = bits.bytes().data();
  OwnedBitmap made(CreateBitmapIndirect(&result));
  if (!made) return Error::kCreateBitmap;
  return made;
}

Result<bool> turn_in_place(HBITMAP bitmap, DeviceTurn turn) {
  const auto facts = describe(bitmap);
  if (!facts) return Error::kBitmapParameters;
  const WaitCursor cursor;
  const ZeroedBuffer bits = VOREL_TRY(turned_bits(bitmap, format_of(*facts), turn));
  SetBitmapBits(bitmap, static_cast<DWORD>(bits.bytes().size()), bits.bytes().data());
  return true;
}

Result<bool> invert_in_place(HBITMAP bitmap) {
  HWND active = GetActiveWindow();
  if (active == nullptr) return Error::kUnreported;
  std::optional<MemoryDc> memory;
  {
    const WindowDc window(active);
    if (!window) return Error::kUnreported;
    memory.emplace(window.get());
  }
  if (!*memory) return Error::kUnreported;
  const BITMAP facts = describe(bitmap).value_or(BITMAP{});
  const Selection selection(memory->get(), bitmap);
  BitBlt(memory->get(), 0, 0, facts.bmWidth, facts.bmHeight, nullptr, 0, 0, DSTINVERT);
  return true;
}

}  // namespace vorel::geometry
