// The output of operations: the source itself, or a copy as large as its header states.
#pragma once

#include <algorithm>
#include <optional>
#include <utility>

#include "core/gray.h"
#include "dib/open_dib.h"
#include "tone/full_table.h"

namespace vorel::tone {

// A new DIB with the header of another and the image size stated there. If that is too small for the rows, they are cut at
// the block's end. Its pixels are unset.
class StatedCopy {
 public:
  // `allocate` need not clear.
  static Result<StatedCopy> of(const OpenDib& source, NewDib::Allocate* allocate) {
    NewDib dib = VOREL_TRY(NewDib::make(source.header(), stated_image_bytes(source.header()), {}, allocate));
    const ByteCount needed = source.layout().offset + source.layout().rows;
    if (needed <= ByteCount(dib.bytes().size()))
      dib.clear_padding();
    else
      std::ranges::fill(dib.image(), uint8_t{0});
    CompleteBytes bytes = VOREL_TRY(or_error(CompleteBytes::of(dib.bytes(), needed), Error::kMemory));
    return StatedCopy(std::move(dib), source.layout(), std::move(bytes));
  }

  std::span<uint8_t> head() const { return bytes_.bytes().first(static_cast<size_t>(layout_.offset.value())); }
  std::span<Rgb> colors(size_t count) const { return colors_in(bytes_.bytes(), count); }
  DibView pixels() const { return pixels_in(bytes_.bytes(), dib_.header(), layout_); }

  OwnedDib finish() && {
    bytes_.write_back();
    return std::move(dib_);
  }

 private:
  StatedCopy(NewDib dib, const Layout& layout, CompleteBytes bytes)
      : dib_(std::move(dib)), layout_(layout), bytes_(std::move(bytes)) {}

  NewDib dib_;
  Layout layout_;
  CompleteBytes bytes_;
};

enum class Where { kInPlace, kCopy };

// The DIB that receives a result.
class Target {
 public:
  static Result<Target> of(HGLOBAL handle, const OpenDib& source, Where where, NewDib::Allocate* allocate) {
    if (where == Where::kInPlace) return Target(handle, source, std::nullopt);
    return Target(handle, source, VOREL_TRY(StatedCopy::of(source, allocate)));
  }

  // Writes a grey ramp within the table: rows behind a shorter table stay.
  void write_gray_ramp() {
    const size_t count = std::min(DIBNumColors(source_->header()), kTableColors);
    vorel::write_gray_ramp(copy_ ? copy_->colors(count) : source_->colors(count));
  }
  void keep_table() {
    if (copy_) std::ranges::copy(source_->head(), copy_->head().begin());
  }
  DibView pixels() const { return copy_ ? copy_->pixels() : source_->pixels(); }

  [[nodiscard]] HGLOBAL release() && {
    if (copy_) return OwnedDib(std::move(*copy_).finish()).release();
    source_->write_back();
    return handle_;
  }

 private:
  Target(HGLOBAL handle, const OpenDib& source, std::optional<StatedCopy> copy)
      : handle_(handle), source_(&source), copy_(std::move(copy)) {}

  HGLOBAL handle_;
  const OpenDib* source_;
  std::optional<StatedCopy> copy_;
};

}  // namespace vorel::tone
