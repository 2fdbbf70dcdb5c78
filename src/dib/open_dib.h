// A DIB as an operation works on it: the header, and colours and rows found by the operation's own rule.
//
// An operation checks the header, opens the source, makes the result and runs a kernel:
//
//   const OpenDib opened = VOREL_TRY(OpenDib::open(source, kRule));
//   NewDib result = VOREL_TRY(NewDib::like(opened, result_header));
//   kernel(opened.pixels(), result.pixels());
//   return OwnedDib(std::move(result));
//
// A kernel that writes every pixel of the result needs no cleared memory: make the result with OwnedDib::allocate_unset (at depths
// that the kernel writes) and call clear_padding(), which clears the bytes behind the pixels of each row and behind the
// rows.
#pragma once

#include <algorithm>
#include <utility>

#include "core/layout.h"
#include "dib/packed_dib.h"
#include "frame/error.h"

namespace vorel {

// A locked DIB with all bytes that the rule covers. Bytes that its block lacks read as zero; writes to them are dropped.
class OpenDib {
 public:
  // kMemory if no block could be that large, or if memory for a completed copy is short.
  static Result<OpenDib> open(const LockedDib& source, const LayoutRule& rule = {}) {
    const Layout layout = Layout::of(source.header(), rule);
    auto bytes = source.complete(layout.needed);
    if (!bytes) return Error::kMemory;
    return OpenDib(source, rule, layout, std::move(*bytes));
  }

  const DibHeader& header() const { return source_->header(); }
  const LayoutRule& rule() const { return rule_; }
  const Layout& layout() const { return layout_; }

  std::span<uint8_t> bytes() const { return bytes_.bytes(); }
  // All bytes before the rows.
  std::span<uint8_t> head() const { return bytes().first(static_cast<size_t>(layout_.offset.value())); }
  // At most as many as the rule and the table have.
  std::span<Rgb> colors(size_t count) const { return colors_in(bytes(), count); }
  // Without rows and columns if the picture has none.
  DibView pixels() const { return pixels_in(bytes(), header(), layout_); }
  // Whether the block itself has all bytes.
  bool is_complete() const { return bytes_.held() == bytes_.bytes().size(); }
  // The rows that are at least partly in the block; all rows behind them are zero. A block of a few bytes can claim a large
  // picture: an operation that leaves zeros as they are needs only these rows.
  ConstDibView held_rows() const { return pixels().first_rows(held_row_count()); }
  // The same, cut at the last byte of the block if that lies in the first row.
  ConstDibView held_pixels() const {
    const ConstDibView rows = held_rows();
    if (rows.height() != 1 || rows.depth() == 0) return rows;
    return rows.with_width(static_cast<int>(std::min<uint64_t>(held_row_bytes() * 8 / rows.depth() + 1, rows.width())));
  }
  // All bytes of the rows, padding included.
  std::span<uint8_t> rows() const { return bytes().subspan(head().size(), static_cast<size_t>(layout_.rows.value())); }
  // The rows and all bytes behind them, to the end of the block.
  std::span<const uint8_t> rows_and_rest() const {
    const auto memory = source_->block().size() > bytes().size() ? source_->block() : bytes();
    return memory.subspan(static_cast<size_t>(layout_.offset.value()));
  }

  // Copies changes into the block. Needed where the block is too short.
  void write_back() const { bytes_.write_back(); }

 private:
  OpenDib(const LockedDib& source, const LayoutRule& rule, const Layout& layout, CompleteBytes bytes)
      : source_(&source), rule_(rule), layout_(layout), bytes_(std::move(bytes)) {}

  uint64_t held_row_bytes() const { return bytes_.held() - std::min<uint64_t>(bytes_.held(), layout_.offset.value()); }
  int held_row_count() const {
    const uint64_t stride = layout_.stride.value(), height = pixels().height();
    return static_cast<int>(stride == 0 ? height : std::min((held_row_bytes() + stride - 1) / stride, height));
  }

  const LockedDib* source_;
  LayoutRule rule_;
  Layout layout_;
  CompleteBytes bytes_;
};

// A new DIB with a given header. The rest holds zeros or is unset, depending on the allocation.
class NewDib {
 public:
  using Allocate = Result<OwnedDib>(ByteCount);

  // With an empty colour table, and `image_bytes` for rows and the bytes behind them.
  static Result<NewDib> make(const DibHeader& header, ByteCount image_bytes, const LayoutRule& rule = {},
                             Allocate* allocate = OwnedDib::allocate) {
    return make_laid_out(Layout::of(header, rule), header, image_bytes, allocate);
  }

  // With room for the colours of `source`, and for the rows of `header` with `spare` bytes behind them. The number of colours of a
  // 12-byte header changes with its other fields.
  static Result<NewDib> with_room_of(const DibHeader& source, const LayoutRule& rule, const DibHeader& header,
                                     Allocate* allocate = OwnedDib::allocate, ByteCount spare = 0) {
    Layout layout = Layout::of(header, rule);
    layout.offset = Layout::of(source, rule).offset;
    return make_laid_out(layout, header, layout.rows + spare, allocate);
  }

  // The same with the colours of another DIB.
  static Result<NewDib> like(const OpenDib& source, const DibHeader& header, Allocate* allocate = OwnedDib::allocate,
                             ByteCount spare = 0) {
    NewDib dib = VOREL_TRY(with_room_of(source.header(), source.rule(), header, allocate, spare));
    dib.copy_colors(source);
    return dib;
  }

  const DibHeader& header() const { return header_; }
  HGLOBAL handle() const { return dib_.handle(); }
  std::span<uint8_t> bytes() const { return dib_.bytes(); }
  std::span<uint8_t> head() const { return bytes().first(static_cast<size_t>(layout_.offset.value())); }
  // The rows and all bytes behind them, to the end of the block.
  std::span<uint8_t> image() const { return bytes().subspan(static_cast<size_t>(layout_.offset.value())); }
  std::span<Rgb> colors() const { return colors_in(bytes(), DIBNumColors(header_)); }
  // These two are for results whose image bytes can hold their rows.
  std::span<uint8_t> rows() const { return image().first(static_cast<size_t>(layout_.rows.value())); }
  DibView pixels() const { return pixels_in(bytes(), header_, layout_); }

  void set_header(const DibHeader& header) {
    header_ = header;
    write_header(bytes(), header);
  }

  // Copies everything between the header and the rows of a DIB with as much room there.
  void copy_colors(const OpenDib& source) {
    std::ranges::copy(source.head().subspan(kHeaderBytes), head().begin() + kHeaderBytes);
  }

  // Clears the bytes that are no pixels: behind the pixels of each row and behind the rows.
  void clear_padding() const {
    const DibView view = pixels();
    const auto stride = static_cast<size_t>(view.stride());
    for (int y = 0; y < view.height(); ++y)
      std::fill_n(view.row(y).data() + view.row(y).size(), stride - view.row(y).size(), uint8_t{0});
    clear_behind_rows();
  }
  // For kernels that write whole rows.
  void clear_behind_rows() const { std::ranges::fill(image().subspan(rows().size()), uint8_t{0}); }

  [[nodiscard]] HGLOBAL release() { return dib_.release(); }
  operator OwnedDib() && { return std::move(dib_); }  // NOLINT(google-explicit-constructor): passed on to its new owner

 private:
  static Result<NewDib> make_laid_out(const Layout& layout, const DibHeader& header, ByteCount image_bytes,
                                      Allocate* allocate) {
    NewDib dib(header, layout, VOREL_TRY(allocate(layout.offset + image_bytes)));
    std::ranges::fill(dib.head(), uint8_t{0});
    write_header(dib.bytes(), header);
    return dib;
  }

  NewDib(const DibHeader& header, const Layout& layout, OwnedDib dib)
      : header_(header), layout_(layout), dib_(std::move(dib)) {}

  DibHeader header_;
  Layout layout_;
  OwnedDib dib_;
};

}  // namespace vorel
