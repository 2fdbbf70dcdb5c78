// A DIB as an operation works on it: the header and, found by the operation's own rule, colours and rows.
#pragma once

#include <utility>

#include "core/layout.h"
#include "dib/packed_dib.h"
#include "frame/error.h"

namespace vorel {

// A locked DIB with all that the rule looks at. What its block is too short for reads as zero; what is written there is dropped.
class OpenDib {
 public:
  // kMemory where no block could be that large, or memory for a completed copy is short.
  static Result<OpenDib> open(const LockedDib& source, const LayoutRule& rule = {}) {
    const Layout layout = Layout::of(source.header(), rule);
    auto bytes = source.complete(layout.needed);
    if (!bytes) return Error::kMemory;
    return OpenDib(source, layout, std::move(*bytes));
  }

  const DibHeader& header() const { return source_->header(); }
  const Layout& layout() const { return layout_; }

  std::span<uint8_t> bytes() const { return bytes_.bytes(); }
  // Everything in front of the rows.
  std::span<uint8_t> head() const { return bytes().first(static_cast<size_t>(layout_.offset.value())); }
  // At most as many as the rule and the table have.
  std::span<Rgb> colors(size_t count) const { return colors_in(bytes(), count); }
  // No rows and columns where the picture has none.
  DibView pixels() const { return pixels_in(bytes(), header(), layout_); }
  // The rows and what follows them, to the end of the block.
  std::span<const uint8_t> rows_and_rest() const {
    const auto memory = source_->block().size() > bytes().size() ? source_->block() : bytes();
    return memory.subspan(static_cast<size_t>(layout_.offset.value()));
  }

  // Puts what was written into the block. Needed where the block is too short.
  void write_back() const { bytes_.write_back(); }

 private:
  OpenDib(const LockedDib& source, const Layout& layout, CompleteBytes bytes)
      : source_(&source), layout_(layout), bytes_(std::move(bytes)) {}

  const LockedDib* source_;
  Layout layout_;
  CompleteBytes bytes_;
};

// A new DIB of a header, zero-filled behind it.
class NewDib {
 public:
  using Allocate = Result<OwnedDib>(ByteCount);

  // With an empty colour table, and `image_bytes` for rows and whatever is to follow them.
  static Result<NewDib> make(const DibHeader& header, ByteCount image_bytes, const LayoutRule& rule = {},
                             Allocate* allocate = OwnedDib::allocate) {
    const Layout layout = Layout::of(header, rule);
    OwnedDib dib = VOREL_TRY(allocate(layout.offset + image_bytes));
    write_header(dib.bytes(), header);
    return NewDib(header, layout, std::move(dib));
  }

  const DibHeader& header() const { return header_; }
  std::span<uint8_t> bytes() const { return dib_.bytes(); }
  std::span<uint8_t> head() const { return bytes().first(static_cast<size_t>(layout_.offset.value())); }
  std::span<Rgb> colors() const { return colors_in(bytes(), DIBNumColors(header_)); }
  // For results whose image bytes hold their rows.
  DibView pixels() const { return pixels_in(bytes(), header_, layout_); }

  [[nodiscard]] HGLOBAL release() { return dib_.release(); }
  operator OwnedDib() && { return std::move(dib_); }  // NOLINT(google-explicit-constructor): handed on as what it owns

 private:
  NewDib(const DibHeader& header, const Layout& layout, OwnedDib dib)
      : header_(header), layout_(layout), dib_(std::move(dib)) {}

  DibHeader header_;
  Layout layout_;
  OwnedDib dib_;
};

}  // namespace vorel
