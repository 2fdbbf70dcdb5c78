#include "dib/device_palette.h"

#include <optional>
#include <utility>

namespace vorel {
namespace {

// A LOGPALETTE with zeroed entries.
class LogicalPalette {
 public:
  // None when memory is short, and for more entries than a palette can have.
  static std::optional<LogicalPalette> with_entries(uint32_t count) {
    if (count > UINT16_MAX) return std::nullopt;
    auto memory = ZeroedBuffer::allocate(ByteCount(count) * sizeof(PALETTEENTRY) + kHeadBytes);
    if (!memory) return std::nullopt;
    return LogicalPalette(std::move(*memory), count);
  }

  PALETTEENTRY* entries() const { return palette()->palPalEntry; }
  OwnedPalette create() const { return OwnedPalette(CreatePalette(palette())); }

 private:
  static constexpr uint32_t kHeadBytes = 8;

  LogicalPalette(ZeroedBuffer memory, uint32_t count) : memory_(std::move(memory)) {
    palette()->palVersion = 0x300;
    palette()->palNumEntries = static_cast<WORD>(count);
  }

  LOGPALETTE* palette() const { return reinterpret_cast<LOGPALETTE*>(memory_.bytes().data()); }

  ZeroedBuffer memory_;
};

int screen_palette_size(HDC screen) { return GetDeviceCaps(screen, SIZEPALETTE); }

}  // namespace

Result<OwnedPalette> palette_of(const LockedDib& dib) {
  const uint32_t count = DIBNumColors(dib.header());
  if (count == 0) return Error::kUnreported;
  const auto logical = LogicalPalette::with_entries(count);
  if (!logical) return Error::kCreatePalette;
  const auto table = dib.complete_colors(count);
  if (!table) return Error::kCreatePalette;
  PALETTEENTRY* entry = logical->entries();
  for (const Rgb& color : colors_in(*table)) *entry++ = {color.red, color.green, color.blue, 0};
  OwnedPalette palette = logical->create();
  if (!palette) return Error::kCreatePalette;
  return palette;
}

Result<OwnedPalette> screen_palette() {
  const ScreenDc screen;
  if (!screen) return Error::kCreateDc;
  int count = screen_palette_size(screen.get());
  if (count == 0) count = GetDeviceCaps(screen.get(), NUMCOLORS);
  if (count < 0) return Error::kCreatePalette;  // a display without a palette reports -1 colours
  const auto logical = LogicalPalette::with_entries(static_cast<uint32_t>(count));
  if (!logical) return Error::kCreatePalette;
  GetSystemPaletteEntries(screen.get(), 0, static_cast<UINT>(count), logical->entries());
  return logical->create();
}

Result<std::vector<Rgb>> screen_colors() {
  const ScreenDc screen;
  if (!screen) return Error::kUnreported;
  const int count = screen_palette_size(screen.get());
  if (count == 0) return Error::kUnreported;
  const OwnedPalette palette = VOREL_TRY(screen_palette());
  if (!palette) return Error::kUnreported;

  const PaletteSelection selection(screen.get(), palette.get());
  std::vector<Rgb> colors;
  for (int i = 0; i < count; ++i) {
    const COLORREF shown = GetNearestColor(screen.get(), PALETTEINDEX(i));
    colors.push_back({GetBValue(shown), GetGValue(shown), GetRValue(shown), 0});
  }
  return colors;
}

}  // namespace vorel
