#include "tone/cleaning.h"

#include <algorithm>

#include "core/gray.h"
#include "dib/held_part.h"
#include "tone/full_table.h"

namespace vorel::tone {
namespace {

constexpr int kLeastLevel = 20, kMostLevel = 100;

bool can_be_cleaned(const DibHeader& header) {
  return header.size == kHeaderBytes && (header.depth == 1 || (header.depth == 8 && header.planes == 1));
}

// Copies a block except for complete 8-bit pixels, which the kernel writes.
void copy_all_but_pixels(const OpenDib& source, std::span<const uint8_t> block, std::span<uint8_t> result) {
  const DibView pixels = source.pixels();
  const auto stride = static_cast<size_t>(pixels.stride());
  size_t begin = 0;
  if (pixels.depth() == 8 && block.size() >= source.bytes().size()) {
    size_t row = source.head().size();
    for (int y = 0; y < pixels.height(); ++y, row += stride) {
      std::ranges::copy(block.subspan(begin, row - begin), result.subspan(begin).begin());
      begin = row + static_cast<size_t>(pixels.width());
    }
  }
  std::ranges::copy(block.subspan(begin), result.subspan(begin).begin());
}

}  // namespace

Result<OwnedDib> cleaned(const LockedDib& source, int level, kernels::Reach reach) {
  const DibHeader& header = source.header();
  if (level < kLeastLevel || level > kMostLevel || !can_be_cleaned(header)) return Error::kUnreported;
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kReadsFullTable).or_error(Error::kUnreported));
  const auto colors = opened.colors(implied_colors(header.depth));
  if (!is_gray(colors)) return Error::kUnreported;

  OwnedDib result = VOREL_TRY(OwnedDib::allocate_unset(source.block().size()).or_error(Error::kUnreported));
  copy_all_but_pixels(opened, source.block(), result.bytes());
  const auto whole = VOREL_TRY(or_error(CompleteBytes::of(result.bytes(), opened.bytes().size()), Error::kUnreported));
  const DibView to = pixels_in(whole.bytes(), header, opened.layout());
  const int opposite = kLeastLevel + kMostLevel - level;
  const bool is_black_first = colors[0].blue == 0;
  const int speck_level = is_black_first ? opposite : level, rank_level = is_black_first ? level : opposite;
  const HeldPart part(opened, 1);  // the zeros behind it stay
  if (header.depth == 1)
    kernels::filter().clean_bits(opened.rows_and_rest(), to.first_rows(part.rows()), speck_level * 8 / 100, reach);
  else
    kernels::filter().take_rank(part.of(ConstDibView(opened.pixels())), part.of(to), std::min(rank_level * 9 / 100, 8),
                                reach);
  whole.write_back();
  return result;
}

}  // namespace vorel::tone
