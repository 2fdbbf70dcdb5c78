#include "kernels/rle/rle.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/pixel.h"
#include "core/word.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// The encoder's runs and literals have at most this many pixels, though a code could count 255.
constexpr int kMostPixels = 250;
// Pads a literal to an even number of bytes.
constexpr uint8_t kPad = 0xFF;

constexpr int pixels_per_byte(int depth) { return 8 / depth; }

// ---- Encoding ----

// Appends codes to memory that has room for them.
class CodeWriter {
 public:
  explicit CodeWriter(uint8_t* codes) : next_(codes) {}

  uint8_t* position() const { return next_; }

  void run(int pixels, uint8_t value) { pair(pixels, value); }
  void mark(RleMark mark) { pair(0, static_cast<uint8_t>(mark)); }
  void literal(int pixels, const uint8_t* bytes, int count) {
    pair(0, static_cast<uint8_t>(pixels));
    std::memcpy(next_, bytes, static_cast<size_t>(count));
    next_ += count;
    if (count % 2 != 0) *next_++ = kPad;
  }

 private:
  void pair(int first, uint8_t second) {
    next_[0] = static_cast<uint8_t>(first);
    next_[1] = second;
    next_ += 2;
  }

  uint8_t* next_;
};

constexpr uint64_t kOneInEachByte = 0x0101010101010101;

// The first byte in memory that is not zero, of a word that has one.
int first_set_byte(uint64_t word) { return std::countr_zero(word) / 8; }

// A bit in the first zero byte of a word, and none in the bytes before it.
uint64_t zero_bytes(uint64_t word) { return (word - kOneInEachByte) & ~word & 0x8080808080808080; }

// Run length; the first two bytes already match.
int run_length(const uint8_t* bytes, int most) {
  int count = 2;
  for (; count + kWordBytes <= most; count += kWordBytes)
    if (const uint64_t differing = load_word(bytes + count) ^ bytes[0] * kOneInEachByte; differing != 0)
      return count + first_set_byte(differing);
  while (count < most && bytes[count] == bytes[0]) ++count;
  return count;
}

// Literal length, up to the first equal neighbours; the first two bytes already differ from theirs.
int literal_length(const uint8_t* bytes, int most) {
  int count = 2;
  for (; count + kWordBytes <= most; count += kWordBytes)
    if (const uint64_t equal = zero_bytes(load_word(bytes + count) ^ load_word(bytes + count + 1)); equal != 0)
      return count + first_set_byte(equal);
  while (count < most && bytes[count] != bytes[count + 1]) ++count;
  return count;
}

// Writes the next code or two of a row with three or more pixels left, and returns how many bytes they cover. A run or
// literal has at least two bytes, even where the last three 4-bit pixels fill only one and a half: it then counts one pixel
// more than the row has.
template <int kDepth>
int encode_next(const uint8_t* bytes, int pixels_left, CodeWriter& codes) {
  constexpr int kPixels = pixels_per_byte(kDepth);
  const int most = std::min(pixels_left, kMostPixels) / kPixels;
  if (bytes[0] == bytes[1]) {
    const int count = run_length(bytes, most);
    codes.run(count * kPixels, bytes[0]);
    return count;
  }
  if (bytes[1] == bytes[2]) {
    codes.run(kPixels, bytes[0]);
    return 1;
  }
  if (bytes[2] == bytes[3]) {
    codes.run(kPixels, bytes[0]);
    codes.run(kPixels, bytes[1]);
    return 2;
  }
  const int count = literal_length(bytes, most);
  codes.literal(count * kPixels, bytes, count);
  return count;
}

// Writes the codes for the last one or two pixels of a row. At 8 bits a single one is written as two, the second being the
// byte behind the row, which decoding drops.
template <int kDepth>
void encode_last(const uint8_t* bytes, int pixels_left, CodeWriter& codes) {
  if constexpr (kDepth == 4) {
    codes.run(pixels_left, bytes[0]);
  } else if (bytes[0] == bytes[1]) {
    codes.run(2, bytes[0]);
  } else {
    codes.run(1, bytes[0]);
    codes.run(1, bytes[1]);
  }
}

template <int kDepth>
void encode_row(const uint8_t* row, int width, CodeWriter& codes) {
  int left = width;
  while (left >= 3) {
    const int bytes = encode_next<kDepth>(row, left, codes);
    row += bytes;
    left -= bytes * pixels_per_byte(kDepth);
  }
  if (left > 0) encode_last<kDepth>(row, left, codes);
  codes.mark(RleMark::kEndOfLine);
}

template <int kDepth>
void encode_picture(ConstDibView picture, const uint8_t* last_row, CodeWriter& codes) {
  const int last = picture.height() - 1;
  for (int y = 0; y < last; ++y) encode_row<kDepth>(picture.row(y).data(), picture.width(), codes);
  if (last >= 0) encode_row<kDepth>(last_row, picture.width(), codes);
  codes.mark(RleMark::kEndOfBitmap);
}

// ---- Decoding ----

// Sets `count` pixels, one or more, from column x on.
template <int kDepth>
void set_run(uint8_t* row, int x, int count, uint8_t value);
// Copies `count` pixels, one or more, to column x on.
template <int kDepth>
void set_literal(uint8_t* row, int x, int count, const uint8_t* pixels);

template <>
void set_run<8>(uint8_t* row, int x, int count, uint8_t value) {
  std::memset(row + x, value, static_cast<size_t>(count));
}

template <>
void set_literal<8>(uint8_t* row, int x, int count, const uint8_t* pixels) {
  std::memcpy(row + x, pixels, static_cast<size_t>(count));
}

constexpr uint8_t halves_swapped(uint8_t byte) { return static_cast<uint8_t>(byte << 4 | byte >> 4); }

template <>
void set_run<4>(uint8_t* row, int x, int count, uint8_t value) {
  if (x % 2 != 0) {
    value = halves_swapped(value);
    Pixel<4>::store(row, x, value);
    ++x;
    --count;
  }
  std::memset(row + x / 2, value, static_cast<size_t>(count / 2));
  if (count % 2 != 0) Pixel<4>::store(row, x + count - 1, value >> 4);
}

template <>
void set_literal<4>(uint8_t* row, int x, int count, const uint8_t* pixels) {
  if (x % 2 == 0) {
    std::memcpy(row + x / 2, pixels, static_cast<size_t>(count / 2));
  } else {
    Pixel<4>::store(row, x, pixels[0] >> 4);
    uint8_t* whole = row + x / 2 + 1;
    for (int i = 0; i < (count - 1) / 2; ++i) whole[i] = static_cast<uint8_t>(pixels[i] << 4 | pixels[i + 1] >> 4);
  }
  Pixel<4>::store(row, x + count - 1, Pixel<4>::load(pixels, count - 1));
}

template <int kDepth>
class Decoder {
 public:
  Decoder(std::span<const uint8_t> codes, DibView picture) : codes_(codes), picture_(picture) {}

  void draw() {
    // No code moves back to an earlier row, so nothing is left to draw past the last row.
    while (y_ < picture_.height() && codes_.size() >= 2) {
      const std::span<const uint8_t> code = take(2);
      if (code[0] != 0) {
        draw_run(code[0], code[1]);
      } else if (code[1] > static_cast<uint8_t>(RleMark::kDelta)) {
        draw_literal(code[1]);
      } else if (!follow(static_cast<RleMark>(code[1]))) {
        return;
      }
    }
  }

 private:
  // The next bytes, or as many as remain.
  std::span<const uint8_t> take(size_t bytes) {
    const std::span<const uint8_t> taken = codes_.first(std::min(bytes, codes_.size()));
    codes_ = codes_.subspan(taken.size());
    return taken;
  }

  uint8_t* row() const { return picture_.row(static_cast<int>(y_)).data(); }

  // How many of `count` pixels the row has room for.
  int drawable(int count) const { return static_cast<int>(std::clamp<int64_t>(picture_.width() - x_, 0, count)); }

  void draw_run(int count, uint8_t value) {
    const int pixels = drawable(count);
    if (pixels > 0) set_run<kDepth>(row(), static_cast<int>(x_), pixels, value);
    advance(pixels);
  }

  void draw_literal(int count) {
    const int bytes = (count + pixels_per_byte(kDepth) - 1) / pixels_per_byte(kDepth);
    const std::span<const uint8_t> data = take(static_cast<size_t>(bytes));
    take(static_cast<size_t>(bytes % 2));
    const int available = std::min(count, static_cast<int>(data.size()) * pixels_per_byte(kDepth));
    const int pixels = drawable(available);
    if (pixels > 0) set_literal<kDepth>(row(), static_cast<int>(x_), pixels, data.data());
    advance(pixels);
  }

  // A full row accepts no more pixels.
  void advance(int pixels) {
    x_ += pixels;
    is_full_ = x_ == picture_.width();
  }

  // Returns whether decoding continues.
  bool follow(RleMark mark) {
    switch (mark) {
      case RleMark::kEndOfLine:
        x_ = 0;
        ++y_;
        is_full_ = false;
        return true;
      case RleMark::kDelta: return move();
      case RleMark::kEndOfBitmap: break;
    }
    return false;
  }

  bool move() {
    const std::span<const uint8_t> step = take(2);
    if (step.size() < 2) return false;
    if (kDepth == 8 && is_full_) x_ = 0;  // 8-bit codes count columns from 0 again where they have filled a row
    x_ += step[0];
    y_ += step[1];
    is_full_ = false;
    return true;
  }

  std::span<const uint8_t> codes_;
  DibView picture_;
  int64_t x_ = 0, y_ = 0;  // wide enough for the longest chain of deltas
  bool is_full_ = false;   // by pixels; a delta may lead to the same column
};

size_t encode(ConstDibView picture, const uint8_t* last_row, std::span<uint8_t> codes) {
  CodeWriter writer(codes.data());
  if (picture.depth() == 8) {
    encode_picture<8>(picture, last_row, writer);
  } else {
    encode_picture<4>(picture, last_row, writer);
  }
  return static_cast<size_t>(writer.position() - codes.data());
}

void decode(std::span<const uint8_t> codes, DibView picture) {
  if (picture.depth() == 8) {
    Decoder<8>(codes, picture).draw();
  } else {
    Decoder<4>(codes, picture).draw();
  }
}

}  // namespace

extern const RleTable rle_table;
const RleTable rle_table = {encode, decode};

}  // namespace vorel::kernels::VOREL_LEVEL
