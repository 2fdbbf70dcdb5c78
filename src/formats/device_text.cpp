#include "formats/device_text.h"

#include "dib/device_bitmap.h"
#include "formats/text_image.h"
#include "frame/thread_context.h"
#include "platform/file.h"
#include "platform/memory.h"
#include "platform/user.h"

namespace vorel::formats {
namespace {

constexpr uint32_t kZerosBehindText = 10;
// Ampersands are drawn as text. The line spacing is the measured one.
constexpr UINT kTextFlags = DT_NOPREFIX | DT_EXTERNALLEADING;

FontSize font_of(HDC dc) {
  TEXTMETRICA metrics{};
  GetTextMetricsA(dc, &metrics);
  return {.line_height = metrics.tmAscent + metrics.tmDescent + metrics.tmExternalLeading,
          .average_width = metrics.tmAveCharWidth};
}

// Cuts the text off at its measured end. Returns its bounding rectangle; for a text without characters, the rectangle of one
// character.
RECT fit(HDC dc, std::span<char> text, FontSize font) {
  const TextExtent extent = measure_text({text.data(), text.size()}, font);
  if (extent.is_cut) {
    text[extent.length] = '\0';
    MessageBoxA(GetActiveWindow(), "Lines truncated", "SORRY", MB_ICONEXCLAMATION);
  }
  const RECT measured{0, 0, extent.x + font.average_width, extent.y + font.line_height};
  RECT taken = measured;
  DrawTextA(dc, text.data(), -1, &taken, DT_CALCRECT | kTextFlags);
  return IsRectEmpty(&taken) ? measured : taken;
}

// As high as memory allows: the height is halved repeatedly, down to one line.
OwnedBitmap highest_bitmap(Size size, int line_height) {
  OwnedBitmap bitmap = empty_bitmap(size, 1, 1);
  while (!bitmap && (size.height /= 2) > line_height) bitmap = empty_bitmap(size, 1, 1);
  return bitmap;
}

Result<OwnedBitmap> draw_text(HDC dc, std::span<char> text) {
  const FontSize font = font_of(dc);
  RECT rect = fit(dc, text, font);
  OwnedBitmap bitmap = highest_bitmap({rect.right, rect.bottom}, font.line_height);
  const auto facts = describe(bitmap.get());
  if (!facts) return Error::kMemory;
  const Selection drawn_on(dc, bitmap.get());
  const Selection brush(dc, GetStockObject(WHITE_BRUSH));
  PatBlt(dc, 0, 0, facts->bmWidth, facts->bmHeight, PATCOPY);
  SetMapMode(dc, MM_ANISOTROPIC);
  SetWindowExtEx(dc, rect.right, rect.bottom, nullptr);
  SetViewportExtEx(dc, facts->bmWidth, facts->bmHeight, nullptr);
  DrawTextA(dc, text.data(), -1, &rect, DT_NOCLIP | kTextFlags);
  return bitmap;
}

// Fails with the error for the thread's code.
Result<OwnedBlock> read_text(const char* path) {
  const auto file = OwnedFile::open_for_reading(path);
  if (!file) return Error::kOpenFile;
  const int64_t size = file->size();
  if (size < 0) return Error::kFileIo;
  auto block = OwnedBlock::allocate(ByteCount(static_cast<uint64_t>(size)) + kZerosBehindText);
  if (!block) return Error::kMemory;
  const auto locked = LockedBlock::lock(block->get());
  if (!locked) return Error::kMemory;
  if (file->read(locked->bytes().data(), static_cast<size_t>(size)) != size) return Error::kFileIo;
  return std::move(*block);
}

}  // namespace

Result<OwnedBitmap> draw_text(HGLOBAL text) {
  const auto locked = LockedBlock::lock(text);
  if (!locked || locked->bytes().empty()) return Error::kMemory;
  locked->bytes().back() = 0;
  const WindowDc window(GetActiveWindow());
  const MemoryDc memory(window.get());
  if (!memory) return Error::kCreateDc;
  return draw_text(memory.get(), {reinterpret_cast<char*>(locked->bytes().data()), locked->bytes().size()});
}

Result<OwnedBitmap> load_text(const char* path, TextCodePage code_page) {
  const WaitCursor cursor;
  const OwnedBlock text = VOREL_TRY(read_text(path));
  if (code_page == TextCodePage::kOem) {
    const auto locked = LockedBlock::lock(text.get());
    auto* characters = reinterpret_cast<char*>(locked->bytes().data());
    OemToCharA(characters, characters);
  }
  auto bitmap = draw_text(text.get());
  set_thread_error(Error::kNone);
  if (!bitmap) return Error::kUnreported;
  return bitmap;
}

}  // namespace vorel::formats
