// The images of a GIF file, located without decoding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "common/byte_source.h"

namespace codec::gif {

struct Frame {
  size_t offset = 0;           // of the descriptor's first byte
  int width = 0, height = 0;   // pixels
  int transparent_index = -1;  // none
};

class FrameFinder {
 public:
  // Throws Failure if it is not a GIF file.
  explicit FrameFinder(std::span<const uint8_t> file);

  // The part in front of all images: signature, screen descriptor and global colour table.
  std::span<const uint8_t> head() const { return file_.first(head_bytes_); }

  // The next image; none at the end, with or without a trailer. Throws Failure for an invalid block.
  std::optional<Frame> next();

 private:
  size_t position() const { return file_.size() - source_.rest().size(); }
  void skip_sub_blocks();
  Frame read_descriptor();
  void read_extension();

  std::span<const uint8_t> file_;
  ByteSource source_;
  size_t head_bytes_ = 0;
  int transparent_index_ = -1;  // of the next image
};

}  // namespace codec::gif
