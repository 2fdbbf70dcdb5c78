// Tone and colour of packed DIBs.
#pragma once

#include <initializer_list>
#include <optional>
#include <utility>

#include "dib/packed_dib.h"
#include "kernels/filter/filter.h"
#include "kernels/tone/tone.h"

namespace vorel {

// A DIB that an operation has written to: the source itself or a new one.
class Written {
 public:
  // What the block is too short for is dropped.
  static std::optional<Written> in_place(HGLOBAL handle, CompleteBytes bytes) {
    return Written(handle, std::nullopt, std::move(bytes));
  }
  // None when memory for the bytes that the block is too short for is not there.
  static std::optional<Written> as_copy(OwnedDib dib, ByteCount bytes) {
    auto whole = CompleteBytes::of(dib.bytes(), bytes);
    if (!whole) return std::nullopt;
    return Written(nullptr, std::move(dib), std::move(*whole));
  }

  std::span<uint8_t> bytes() const { return bytes_.bytes(); }

  [[nodiscard]] HGLOBAL release() {
    bytes_.write_back();
    return copy_ ? copy_->release() : handle_;
  }

 private:
  Written(HGLOBAL handle, std::optional<OwnedDib> copy, CompleteBytes bytes)
      : handle_(handle), copy_(std::move(copy)), bytes_(std::move(bytes)) {}

  HGLOBAL handle_;
  std::optional<OwnedDib> copy_;
  CompleteBytes bytes_;
};

// How much of a size is looked at to see whether it is 0.
enum class SizeBits { kLow16, kAll };

// Why a picture is refused: a header of other than 40 bytes, compression, a depth other than those given, no width or no height; in
// this order. kNone if it is not.
Error refusal(const DibHeader& header, std::initializer_list<uint16_t> depths, SizeBits width_bits = SizeBits::kAll,
              SizeBits height_bits = SizeBits::kAll);

// Where changes of a picture go.
enum class Where { kInPlace, kCopy };

// Runs an 8-bit picture through a table: each pixel becomes the table's value for the mean of its colour, in greys.
Result<HGLOBAL> with_levels(HGLOBAL handle, const LockedDib& source, const kernels::ComponentTable& table, Where where);

// Runs the colours of a 4- or 8-bit picture, or the pixels of a 24-bit one, through a table.
Result<OwnedDib> with_components(const LockedDib& source, const kernels::ComponentTable& table);

// A 24-bit copy of an 8-bit picture.
Result<OwnedDib> in_true_color(const LockedDib& source);

// Filters an 8-bit picture, whose pixels are taken for greys whatever their colours.
Result<HGLOBAL> filtered_gray(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel, Where where);

// Filters the intensity of a 24-bit picture and adds what that changes to every component.
Result<HGLOBAL> filtered_color(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel,
                               kernels::Intensity intensity, Where where);

// Greys of a picture of 1, 4, 8 or 24 bits; `grade` is how much 1 bit is smoothed, 0 to 2.
Result<OwnedDib> in_grays(const LockedDib& source, int grade, kernels::GrayRule rule);

// The same for 1 bit alone, where white is 0 and the darker colour counts.
Result<OwnedDib> in_falling_grays(const LockedDib& source, int grade);

// A cleaned copy of a grey picture of 1 or 8 bits, of as many bytes as the source.
Result<OwnedDib> cleaned(const LockedDib& source, int level, kernels::Reach reach);

}  // namespace vorel
