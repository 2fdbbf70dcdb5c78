#include "gif/frames.h"

#include <algorithm>
#include <gif_lib.h>
#include <string_view>
#include <utility>

#include "common/entry.h"

namespace codec::gif {
namespace {

constexpr uint8_t kImage = ',', kExtension = '!', kTrailer = ';';
constexpr size_t kScreenFlags = 10, kScreenEnd = 13;

}  // namespace

FrameFinder::FrameFinder(std::span<const uint8_t> file) : file_(file) {
  constexpr std::string_view kSignature = "GIF";
  if (file.size() < kScreenEnd || !std::ranges::equal(file.first(kSignature.size()), kSignature)) fail(IMG_E_FORMAT);
  at_ = kScreenEnd;
  skip_color_table(file[kScreenFlags]);
  head_bytes_ = at_;
}

std::optional<Frame> FrameFinder::next() {
  while (at_ < file_.size()) {
    switch (byte()) {
      case kImage: return read_descriptor();
      case kExtension: read_extension(); break;
      case kTrailer: at_ = file_.size(); break;
      default: fail(IMG_E_FORMAT);
    }
  }
  return std::nullopt;
}

uint8_t FrameFinder::byte() {
  if (at_ == file_.size()) fail(IMG_E_FORMAT);
  return file_[at_++];
}

int FrameFinder::word() {
  const int low = byte();
  return low | byte() << 8;
}

void FrameFinder::skip(size_t count) {
  if (count > file_.size() - at_) fail(IMG_E_FORMAT);
  at_ += count;
}

void FrameFinder::skip_sub_blocks() {
  while (const size_t count = byte()) skip(count);
}

void FrameFinder::skip_color_table(uint8_t flags) {
  if ((flags & 0x80) != 0) skip(size_t{3} << ((flags & 7) + 1));
}

Frame FrameFinder::read_descriptor() {
  Frame frame;
  frame.offset = at_ - 1;
  frame.transparent_index = std::exchange(transparent_index_, -1);
  skip(4);  // where it lies on the screen
  frame.width = word();
  frame.height = word();
  skip_color_table(byte());
  skip(1);  // the size of the first codes
  skip_sub_blocks();
  return frame;
}

void FrameFinder::read_extension() {
  const uint8_t function = byte();
  // A text in between takes what was meant for the next picture to be drawn.
  if (function == PLAINTEXT_EXT_FUNC_CODE) transparent_index_ = -1;
  if (function == GRAPHICS_EXT_FUNC_CODE) {
    const size_t begin = at_ + 1, count = byte();
    skip(count);
    GraphicsControlBlock control{};
    control.TransparentColor = NO_TRANSPARENT_COLOR;
    DGifExtensionToGCB(count, file_.data() + begin, &control);
    transparent_index_ = control.TransparentColor;
    if (count == 0) return;
  }
  skip_sub_blocks();
}

}  // namespace codec::gif
