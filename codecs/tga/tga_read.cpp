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

TgaHeader take_sound_header(ByteSource& source) {
  const auto header = source.take_header<TgaHeader>();
  if (!is_sound(header)) fail(IMG_E_FORMAT);
  return header;
}

enum class Alpha { kIgnored, kStraight, kPremultiplied };

// The extension area's meaning of alpha. Files need not have one.
uint8_t stated_alpha_kind(std::span<const uint8_t> file) {
  constexpr uint8_t kUnstated = TgaExtension::kStraight;
  if (file.size() < sizeof(TgaFooter)) return kUnstated;
  const auto footer = ByteSource(file.last(sizeof(TgaFooter))).take_header<TgaFooter>();
  if (footer.signature != TgaFooter::kSignature || footer.extension == 0) return kUnstated;
  if (uint64_t{footer.extension} + sizeof(TgaExtension) > file.size()) return kUnstated;
  const auto extension = ByteSource(file.subspan(footer.extension)).take_header<TgaExtension>();
  return extension.size < sizeof extension ? kUnstated : extension.alpha_kind;
}

// Bits that the descriptor does not count as alpha are ignored.
Alpha alpha_of(const TgaHeader& header, std::span<const uint8_t> file) {
  if ((header.descriptor & TgaHeader::kAlphaBits) == 0) return Alpha::kIgnored;
  const uint8_t kind = stated_alpha_kind(file);
  if (kind <= TgaExtension::kNoUseButKept) return Alpha::kIgnored;
  return kind == TgaExtension::kPremultiplied ? Alpha::kPremultiplied : Alpha::kStraight;
}

uint8_t component_over_white(int value, int alpha, Alpha meaning) {
  return meaning == Alpha::kPremultiplied ? premultiplied_over_white(value, alpha) : over_white(value, alpha);
}

// A colour of a map or a pixel: bytes of blue, green, red and alpha, or five bits each with, at 16 bits, one of alpha.
Rgb opaque_color_at(const uint8_t* bytes, int depth) {
  if (depth >= 24) return color(bytes[2], bytes[1], bytes[0]);
  const int word = bytes[0] | bytes[1] << 8;
  const auto component = [&](int shift) { return ((word >> shift & 31) * 255 + 15) / 31; };
  return color(component(10), component(5), component(0));
}

int color_alpha_at(const uint8_t* bytes, int depth) {
  if (depth == 32) return bytes[3];
  return depth == 16 && (bytes[1] & 0x80) == 0 ? 0 : 255;
}

Rgb color_at(const uint8_t* bytes, int depth, Alpha meaning) {
  const Rgb opaque = opaque_color_at(bytes, depth);
  if (meaning == Alpha::kIgnored) return opaque;
  const auto component = [&](int value) { return component_over_white(value, color_alpha_at(bytes, depth), meaning); };
  return color(component(opaque.red), component(opaque.green), component(opaque.blue));
}

int gray_alpha_at(const uint8_t* bytes, int depth) { return depth == 16 ? bytes[1] : 255; }

uint8_t gray_at(const uint8_t* bytes, int depth, Alpha meaning) {
  return meaning == Alpha::kIgnored ? bytes[0] : component_over_white(bytes[0], gray_alpha_at(bytes, depth), meaning);
}

// Fills `out` with as many copies as fit.
void repeat(std::span<const uint8_t> bytes, std::span<uint8_t> out) {
  if (bytes.size() == 1) {
    std::ranges::fill(out, bytes[0]);
  } else {
    for (size_t at = 0; at < out.size(); at += bytes.size()) std::ranges::copy(bytes, &out[at]);
  }
}

// Pixels in sequence. Packets may cross lines.
class PixelBytes {
 public:
  PixelBytes(ByteSource source, size_t pixel_bytes, bool is_compressed)
      : source_(source), pixel_bytes_(pixel_bytes), is_compressed_(is_compressed) {}

  bool can_give(uint64_t pixels) const {
    const uint64_t stored = source_.rest().size();
    return pixels <= (is_compressed_ ? stored / (1 + pixel_bytes_) * kTgaLongestPacket : stored / pixel_bytes_);
  }

  struct Stretch {
    std::span<const uint8_t> stored;  // the one pixel of a run, or all pixels
    size_t bytes;                     // of the pixels that the stretch yields
  };

  // The next pixels of a packet, at most `most` bytes.
  Stretch next(size_t most) {
    if (left_ == 0) next_packet(most);
    const size_t bytes = std::min(left_, most);
    left_ -= bytes;
    return {is_run_ ? pixel_ : source_.take(bytes), bytes};
  }

  void read(std::span<uint8_t> line) {
    while (!line.empty()) {
      const auto [stored, bytes] = next(line.size());
      repeat(stored, line.first(bytes));
      line = line.subspan(bytes);
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
  size_t pixel_bytes_, left_ = 0;   // bytes left in the packet
  bool is_compressed_, is_run_ = false;
};

struct Picture {
  TgaHeader header;
  Alpha alpha;
  std::span<const uint8_t> map, pixels;

  size_t pixel_bytes() const { return bytes_for(header.depth); }
  size_t line_bytes() const { return header.width * pixel_bytes(); }
  PixelBytes reader() const { return {ByteSource(pixels), pixel_bytes(), header.is_compressed()}; }
};

template <class Test>
bool any_entry(std::span<const uint8_t> entries, size_t entry_bytes, Test test) {
  for (size_t at = 0; at < entries.size(); at += entry_bytes)
    if (test(&entries[at])) return true;
  return false;
}

// Tests pixels as they are stored, so that long runs cost no more than short ones.
template <class Test>
bool any_pixel(const Picture& picture, Test test) {
  PixelBytes pixels = picture.reader();
  for (uint64_t left = uint64_t{picture.line_bytes()} * picture.header.height; left > 0;) {
    const auto [stored, bytes] = pixels.next(static_cast<size_t>(std::min<uint64_t>(left, picture.line_bytes())));
    if (any_entry(stored, picture.pixel_bytes(), test)) return true;
    left -= bytes;
  }
  return false;
}

bool any_alpha(const Picture& picture) {
  const TgaHeader& header = picture.header;
  switch (header.base_kind()) {
    case TgaHeader::kIndexed:
      return any_entry(picture.map, bytes_for(header.map_depth),
                       [&](const uint8_t* entry) { return color_alpha_at(entry, header.map_depth) != 0; });
    case TgaHeader::kGray:
      return any_pixel(picture, [&](const uint8_t* pixel) { return gray_alpha_at(pixel, header.depth) != 0; });
    default: return any_pixel(picture, [&](const uint8_t* pixel) { return color_alpha_at(pixel, header.depth) != 0; });
  }
}

// The format has no signature: a consistent header and enough bytes are all that identifies it.
Picture parse(std::span<const uint8_t> file) {
  ByteSource source(file);
  const TgaHeader header = take_sound_header(source);
  source.take(header.name_bytes);
  const auto map = source.take(header.has_map == 1 ? header.map_count * bytes_for(header.map_depth) : 0);
  Picture picture{header, alpha_of(header, file), map, source.rest()};
  // Whatever the header claims, no memory is allocated without enough pixels in the file.
  if (!picture.reader().can_give(uint64_t{header.width} * header.height)) fail(IMG_E_FORMAT);
  // A fully transparent picture is never intended: some programs leave the alpha bytes 0.
  if (picture.alpha != Alpha::kIgnored && !any_alpha(picture)) picture.alpha = Alpha::kIgnored;
  return picture;
}

void reverse_pixels(std::span<uint8_t> line, size_t pixel_bytes) {
  for (size_t left = 0, right = line.size(); left + pixel_bytes < right; left += pixel_bytes) {
    right -= pixel_bytes;
    std::swap_ranges(&line[left], &line[left] + pixel_bytes, &line[right]);
  }
}

// Makes a DIB; `convert` turns each line into a row.
template <class Convert>
HGLOBAL read_lines(const Picture& picture, int depth, const Colors& colors, Convert convert) {
  const TgaHeader& header = picture.header;
  LoadedDib dib({.width = header.width,
                 .height = header.height,
                 .depth = depth,
                 .colors = colors,
                 .has_opacity = picture.alpha != Alpha::kIgnored});
  PixelBytes pixels = picture.reader();
  std::vector<uint8_t> line(picture.line_bytes());
  for (int i = 0; i < dib.height(); ++i) {
    pixels.read(line);
    if ((header.descriptor & TgaHeader::kRightToLeft) != 0) reverse_pixels(line, picture.pixel_bytes());
    const bool is_top_down = (header.descriptor & TgaHeader::kTopDown) != 0;
    convert(std::span<const uint8_t>(line), dib.row_from_top(is_top_down ? i : dib.height() - 1 - i));
  }
  return dib.release();
}

// Makes a DIB of pixels that files store as DIBs do.
HGLOBAL read_as_stored(const Picture& picture, const Colors& colors) {
  return read_lines(picture, picture.header.depth, colors,
                    [](std::span<const uint8_t> line, std::span<uint8_t> row) { std::ranges::copy(line, row.begin()); });
}

// Makes a 24-bit DIB; `color_of` gives the colour of a pixel.
template <class ColorOf>
HGLOBAL read_colors(const Picture& picture, ColorOf color_of) {
  return read_lines(picture, 24, {}, [&](std::span<const uint8_t> line, std::span<uint8_t> row) {
    for (size_t x = 0; x < picture.header.width; ++x) {
      const Rgb found = color_of(&line[x * picture.pixel_bytes()]);
      row[x * 3] = found.blue;
      row[x * 3 + 1] = found.green;
      row[x * 3 + 2] = found.red;
    }
  });
}

Colors colors_of_map(const Picture& picture) {
  const TgaHeader& header = picture.header;
  Colors colors(header.map_first);
  const size_t entry_bytes = bytes_for(header.map_depth);
  for (size_t at = 0; at < picture.map.size(); at += entry_bytes)
    colors.push_back(color_at(&picture.map[at], header.map_depth, picture.alpha));
  return colors;
}

// The depth with room for every colour of the map and every index. Indices outside the map are black.
int depth_of_indices(const Picture& picture, size_t colors) {
  int depth = depth_for_colors(colors);
  const auto has_no_place = [&](const uint8_t* pixel) { return *pixel >> depth != 0; };
  while (depth < 8 && any_pixel(picture, has_no_place)) depth = depth == 1 ? 4 : 8;
  return depth;
}

HGLOBAL read_indexed(const Picture& picture) {
  const Colors map = colors_of_map(picture);
  if (picture.header.depth == 16) {
    return read_colors(picture, [&](const uint8_t* pixel) {
      const size_t index = pixel[0] | static_cast<size_t>(pixel[1]) << 8;
      return index < map.size() ? map[index] : color(0, 0, 0);
    });
  }
  const int depth = depth_of_indices(picture, map.size());
  return read_lines(picture, depth, map,
                    [&](std::span<const uint8_t> line, std::span<uint8_t> row) { pack_indices(line, depth, row); });
}

HGLOBAL read_gray(const Picture& picture) {
  const TgaHeader& header = picture.header;
  if (header.depth == 8) return read_as_stored(picture, gray_ramp(8));
  return read_lines(picture, 8, gray_ramp(8), [&](std::span<const uint8_t> line, std::span<uint8_t> row) {
    for (size_t x = 0; x < header.width; ++x)
      row[x] = gray_at(&line[x * picture.pixel_bytes()], header.depth, picture.alpha);
  });
}

HGLOBAL read_true_color(const Picture& picture) {
  const int depth = picture.header.depth;
  if (depth == 24) return read_as_stored(picture, {});
  return read_colors(picture, [&](const uint8_t* pixel) { return color_at(pixel, depth, picture.alpha); });
}

}  // namespace

void check_tga_start(std::span<const uint8_t> start) {
  ByteSource source(start);
  take_sound_header(source);
}

HGLOBAL read_tga(std::span<const uint8_t> file) {
  const Picture picture = parse(file);
  switch (picture.header.base_kind()) {
    case TgaHeader::kIndexed: return read_indexed(picture);
    case TgaHeader::kGray: return read_gray(picture);
    default: return read_true_color(picture);
  }
}

}  // namespace codec
