// A picture in memory, as the programs hand it from step to step.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <utility>

#include <vorel32.h>

#include "core/header.h"
#include "core/view.h"

namespace vorel::programs {

// The depths that pictures are stored with.
bool is_stored_depth(int depth);

// Rows in either order, and their bytes without compression.
uint64_t row_count(const DibHeader& header);
ByteCount plain_bytes(const DibHeader& header);

// Ends the use of a locked block.
struct UnlockAndFree {
  bool owns = true;

  void operator()(void* block) const {
    if (!owns) return;
    GlobalUnlock(block);
    GlobalFree(block);
  }
};

// Owns a packed DIB with a 40-byte header. It is what its header says: colours and rows lie inside the block. As loaded it may be
// run-length compressed, stored top row first, or of 16 or 32 bits; see forms.h.
class Picture {
 public:
  Picture() = default;  // none

  // Takes over what a function of the library returned. Null means that memory is short. Throws Problem for that, and for a
  // block that is not what its header says.
  explicit Picture(HGLOBAL dib);

  // A picture without compression whose pixels are all 0. Fills in the sizes of the header and the number of colours.
  static Picture blank(DibHeader header, std::span<const Rgb> colors = {});

  // The same with other rows of `bytes` bytes: run-length codes.
  static Picture blank(DibHeader header, std::span<const Rgb> colors, ByteCount bytes);

  Picture copy() const;

  // The same picture for a function that takes one over and must leave this one as it is. It shares the memory, which must
  // outlive it. Functions that change a picture in place call made_own() first.
  Picture lent() const;
  bool is_lent() const { return block_ != nullptr && !block_.get_deleter().owns; }

  explicit operator bool() const { return block_ != nullptr; }
  HGLOBAL get() const { return block_.get(); }
  [[nodiscard]] HGLOBAL release();

  const DibHeader& header() const { return header_; }
  int width() const { return header_.width; }
  int height() const { return header_.height < 0 ? -header_.height : header_.height; }  // in rows
  int depth() const { return header_.depth; }
  bool is_compressed() const { return header_.compression != Compression::kNone; }
  bool is_top_down() const { return header_.height < 0; }

  // Fields that move neither colours nor rows.
  void set_resolution(int x_per_metre, int y_per_metre);
  void set_rows_order(bool top_down);

  std::span<uint8_t> bytes() const { return {data_, GlobalSize(get())}; }
  std::span<Rgb> colors() const;
  // The rows as they are stored, of a picture that is not compressed.
  DibView pixels() const;
  // Everything behind the colours: codes, or rows.
  std::span<uint8_t> image_bytes() const;

 private:
  void write_header();

  std::unique_ptr<void, UnlockAndFree> block_;  // locked
  uint8_t* data_ = nullptr;
  DibHeader header_{};
};

// A copy of a lent picture; any other as it is.
Picture made_own(Picture picture);

// An empty picture of another size or depth with the rest of the header and, below 24 bits, the colours of another.
Picture blank_like(const Picture& picture, Size size, int depth);

// The colour of a pixel as a pixel of 24 bits has it. What the table lacks is black.
uint32_t color_of(const Picture& picture, uint32_t pixel);

constexpr Rgb rgb_of(uint32_t color) {
  return {static_cast<uint8_t>(color), static_cast<uint8_t>(color >> 8), static_cast<uint8_t>(color >> 16), 0};
}

// The colours of the table that pixels can have: some tables are longer.
std::span<const Rgb> used_colors(const Picture& picture);

// Calls change(row) for the bytes of each row, padding included.
template <class Change>
void for_each_row(const Picture& picture, Change change) {
  const DibView pixels = picture.pixels();
  for (int y = 0; y < pixels.height(); ++y) change(std::span(pixels.row(y).data(), static_cast<size_t>(pixels.stride())));
}

}  // namespace vorel::programs
