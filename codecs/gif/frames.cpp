#include "gif/frames.h"

#include <gif_lib.h>
#include <string_view>
#include <utility>

#include "common/entry.h"

namespace codec::gif {
namespace {

constexpr uint8_t kImage = ',', kExtension = '!', kTrailer = ';';

#pragma pack(push, 1)
struct Screen {
  char signature[6];
  uint16_t width, height;
  uint8_t flags, background, aspect_ratio;
};
struct Descriptor {
  uint16_t left, top, width, height;
  uint8_t flags;
};
#pragma pack(pop)

size_t color_table_bytes(uint8_t flags) { return (flags & 0x80) != 0 ? size_t{3} << ((flags & 7) + 1) : 0; }

}  // namespace

FrameFinder::FrameFinder(std::span<const uint8_t> file) : file_(file), source_(file) {
  const auto screen = source_.take_header<Screen>();
  if (!std::string_view(screen.signature, sizeof screen.signature).starts_with("GIF")) fail(IMG_E_FORMAT);
  source_.take(color_table_bytes(screen.flags));
  head_bytes_ = position();
}

std::optional<Frame> FrameFinder::next() {
  while (!source_.rest().empty()) {
    switch (source_.take_byte()) {
      case kImage: return read_descriptor();
      case kExtension: read_extension(); break;
      case kTrailer: return std::nullopt;
      default: fail(IMG_E_FORMAT);
    }
  }
  return std::nullopt;
}

void FrameFinder::skip_sub_blocks() {
  while (const size_t count = source_.take_byte()) source_.take(count);
}

Frame FrameFinder::read_descriptor() {
  Frame frame;
  frame.offset = position() - 1;
  frame.transparent_index = std::exchange(transparent_index_, -1);
  const auto descriptor = source_.take_header<Descriptor>();
  frame.width = descriptor.width;
  frame.height = descriptor.height;
  source_.take(color_table_bytes(descriptor.flags));
  source_.take_byte();  // the size of the initial codes
  skip_sub_blocks();
  return frame;
}

void FrameFinder::read_extension() {
  const uint8_t function = source_.take_byte();
  // A plain text extension consumes the control block in front of it.
  if (function == PLAINTEXT_EXT_FUNC_CODE) transparent_index_ = -1;
  if (function == GRAPHICS_EXT_FUNC_CODE) {
    const auto block = source_.take(source_.take_byte());
    GraphicsControlBlock control{};
    control.TransparentColor = NO_TRANSPARENT_COLOR;
    DGifExtensionToGCB(block.size(), block.data(), &control);
    transparent_index_ = control.TransparentColor;
    if (block.empty()) return;
  }
  skip_sub_blocks();
}

}  // namespace codec::gif
