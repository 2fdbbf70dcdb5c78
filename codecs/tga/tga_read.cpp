#include <algorithm>

#include "common/byte_source.h"
#include "common/entry.h"
#include "tga/tga.h"

namespace codec {
namespace {

size_t bytes_for(int bits) { return static_cast<size_t>(bits + 7) / 8; }

bool is_color_depth(int depth) { return depth == 15 || depth == 16 || depth == 24 || depth == 32; }
bool is_index_depth(int depth) { return depth == 8 || depth == 16; }

bool has_known_pixels(const TgaHeader& header) {
  switch (header.base_kind()) {
    case TgaHeader::kIndexed: return header.has_map == 1 && header.map_count > 0 && is_index_depth(header.depth);
    case TgaHeader::kColor: return is_color_depth(header.depth);
    case TgaHeader::kGray: return is_index_depth(header.depth);
    default: return false;
  }
}

bool is_sound(const TgaHeader& header) {
  return header.width != 0 && header.height != 0 && has_known_pixels(header) &&
         (header.has_map == 0 || (header.has_map == 1 && is_color_depth(header.map_depth))) &&
         (header.descriptor & TgaHeader::kInterleaved) == 0 && (header.descriptor & TgaHeader::kAlphaBits) <= 8;
}

// Bits that the descriptor does not call alpha say nothing.
bool has_alpha(const TgaHeader& header) { return (header.descriptor & TgaHeader::kAlphaBits) != 0; }

RGBQUAD color_over_white(const RGBQUAD& entry, int alpha) {
  return color(over_white(entry.rgbRed, alpha), over_white(entry.rgbGreen, alpha), over_white(entry.rgbBlue, alpha));
}

// A colour of a map or a pixel: blue, green, red and alpha, or five bits of each and perhaps one of alpha.
RGBQUAD color_at(const uint8_t* bytes, int depth, bool with_alpha) {
  if (depth >= 24) {
    const RGBQUAD opaque = color(bytes[2], bytes[1], bytes[0]);
    return depth == 32 && with_alpha ? color_over_white(opaque, bytes[3]) : opaque;
  }
  const int word = bytes[0] | bytes[1] << 8;
  const bool is_transparent = depth == 16 && with_alpha && (word & 0x8000) == 0;
  if (is_transparent) return color(255, 255, 255);
  const auto component = [&](int shift) { return ((word >> shift & 31) * 255 + 15) / 31; };
  return color(component(10), component(5), component(0));
}

// Pixels one after another. Packets may go on from one line to the next.
class PixelBytes {
 public:
  PixelBytes(ByteSource source, size_t pixel_bytes, bool is_compressed)
      : source_(source), pixel_bytes_(pixel_bytes), is_compressed_(is_compressed) {}

  bool can_give(uint64_t pixels) const {
    const uint64_t stored = source_.rest().size();
    return pixels <= (is_compressed_ ? stored / (1 + pixel_bytes_) * kTgaLongestPacket : stored / pixel_bytes_);
  }

  void read(std::span<uint8_t> line) {
    while (!line.empty()) {
      if (left_ == 0) next_packet(line.size());
      const size_t bytes = std::min(left_, line.size());
      if (is_run_) {
        for (size_t at = 0; at < bytes; at += pixel_bytes_) std::ranges::copy(pixel_, &line[at]);
      } else {
        std::ranges::copy(source_.take(bytes), line.begin());
      }
      line = line.subspan(bytes);
      left_ -= bytes;
    }
  }

 private:
  void next_packet(size_t line_bytes) {
    if (!is_compressed_) {
      left_ = line_bytes;
      return;
    }
    const uint8_t head = source_.take_byte();
    left_ = ((head & ~kTgaRunMark) + size_t{1}) * pixel_bytes_;
    is_run_ = (head & kTgaRunMark) != 0;
    if (is_run_) pixel_ = source_.take(pixel_bytes_);
  }

  ByteSource source_;
  std::span<const uint8_t> pixel_;  // of the packet, if it is a run
  size_t pixel_bytes_, left_ = 0;   // bytes of the packet still to give
  bool is_compressed_, is_run_ = false;
};

struct Picture {
  TgaHeader header;
  Colors map;  // from index 0 on
  std::span<const uint8_t> pixels;

  size_t pixel_bytes() const { return bytes_for(header.depth); }
  PixelBytes reader() const { return {ByteSource(pixels), pixel_bytes(), header.is_compressed()}; }
  std::vector<uint8_t> empty_line() const { return std::vector<uint8_t>(header.width * pixel_bytes()); }
};

Colors read_map(const TgaHeader& header, std::span<const uint8_t> bytes) {
  Colors map(header.map_first);
  const size_t entry_bytes = bytes_for(header.map_depth);
  for (size_t at = 0; at < bytes.size(); at += entry_bytes)
    map.push_back(color_at(&bytes[at], header.map_depth, has_alpha(header)));
  return map;
}

// The format has no signature: a header that fits together, and enough bytes, are all there is to know it by.
Picture parse(std::span<const uint8_t> file) {
  ByteSource source(file);
  const auto header = source.take_header<TgaHeader>();
  if (!is_sound(header)) fail(IMG_E_FORMAT);
  source.take(header.name_bytes);
  const auto map = source.take(header.has_map == 1 ? header.map_count * bytes_for(header.map_depth) : 0);
  Picture picture{header, {}, source.rest()};
  if (!picture.reader().can_give(uint64_t{header.width} * header.height)) fail(IMG_E_FORMAT);
  if (header.base_kind() == TgaHeader::kIndexed) picture.map = read_map(header, map);
  return picture;
}

void reverse_pixels(std::span<uint8_t> line, size_t pixel_bytes) {
  for (size_t left = 0, right = line.size(); left + pixel_bytes < right; left += pixel_bytes) {
    right -= pixel_bytes;
    std::swap_ranges(&line[left], &line[left] + pixel_bytes, &line[right]);
  }
}

// Makes a DIB of rows that `convert` makes of lines.
template <class Convert>
HGLOBAL read_lines(const Picture& picture, int depth, const Colors& colors, Convert convert) {
  const TgaHeader& header = picture.header;
  check_claim(header.width, header.height, depth, picture.pixels.size());
  NewDib dib({.width = header.width, .height = header.height, .depth = depth, .colors = colors});
  PixelBytes pixels = picture.reader();
  std::vector<uint8_t> line = picture.empty_line();
  for (int i = 0; i < dib.height(); ++i) {
    pixels.read(line);
    if ((header.descriptor & TgaHeader::kRightToLeft) != 0) reverse_pixels(line, picture.pixel_bytes());
    const bool is_top_down = (header.descriptor & TgaHeader::kTopDown) != 0;
    convert(std::span<const uint8_t>(line), dib.row_from_top(is_top_down ? i : dib.height() - 1 - i));
  }
  return dib.release();
}

// Makes a 24-bit DIB of pixels that `color_of` tells the colour of.
template <class ColorOf>
HGLOBAL read_colors(const Picture& picture, ColorOf color_of) {
  return read_lines(picture, 24, {}, [&](std::span<const uint8_t> line, std::span<uint8_t> row) {
    for (size_t x = 0; x < picture.header.width; ++x) {
      const RGBQUAD found = color_of(&line[x * picture.pixel_bytes()]);
      row[x * 3] = found.rgbBlue;
      row[x * 3 + 1] = found.rgbGreen;
      row[x * 3 + 2] = found.rgbRed;
    }
  });
}

size_t highest_index(const Picture& picture) {
  PixelBytes pixels = picture.reader();
  std::vector<uint8_t> line = picture.empty_line();
  uint8_t highest = 0;
  for (int i = 0; i < picture.header.height; ++i) {
    pixels.read(line);
    highest = std::max(highest, *std::ranges::max_element(line));
  }
  return highest;
}

HGLOBAL read_indexed(const Picture& picture) {
  const Colors& map = picture.map;
  if (picture.header.depth == 16) {
    return read_colors(picture, [&](const uint8_t* pixel) {
      const size_t index = pixel[0] | static_cast<size_t>(pixel[1]) << 8;
      return index < map.size() ? map[index] : color(0, 0, 0);
    });
  }
  // An index outside the map is black, so it needs a place in the table.
  int depth = depth_for_colors(map.size());
  if (depth < 8) depth = std::max(depth, depth_for_colors(highest_index(picture) + 1));
  return read_lines(picture, depth, map,
                    [&](std::span<const uint8_t> line, std::span<uint8_t> row) { pack_indices(line, depth, row); });
}

HGLOBAL read_gray(const Picture& picture) {
  const size_t pixel_bytes = picture.pixel_bytes();
  const bool with_alpha = pixel_bytes == 2 && has_alpha(picture.header);
  return read_lines(picture, 8, gray_ramp(8), [&](std::span<const uint8_t> line, std::span<uint8_t> row) {
    for (size_t x = 0; x < picture.header.width; ++x) {
      const uint8_t* pixel = &line[x * pixel_bytes];
      row[x] = with_alpha ? over_white(pixel[0], pixel[1]) : pixel[0];
    }
  });
}

}  // namespace

HGLOBAL read_tga(std::span<const uint8_t> file) {
  const Picture picture = parse(file);
  const int depth = picture.header.depth;
  const bool with_alpha = has_alpha(picture.header);
  switch (picture.header.base_kind()) {
    case TgaHeader::kIndexed: return read_indexed(picture);
    case TgaHeader::kGray: return read_gray(picture);
    default: return read_colors(picture, [=](const uint8_t* pixel) { return color_at(pixel, depth, with_alpha); });
  }
}

}  // namespace codec
