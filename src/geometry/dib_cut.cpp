#include "geometry/dib_cut.h"

#include <algorithm>

#include "dib/open_dib.h"

namespace vorel::geometry {
namespace {

constexpr LayoutRule kRule = {.rows_at = RowsAt::kBehindTable};

DibHeader with_height(DibHeader header, int32_t height) {
  header.height = height;
  return header;
}

// A part whose colours and rows are not filled in yet.
Result<NewDib> new_part(const DibHeader& source, int32_t height, HGLOBAL* handle) {
  auto part = NewDib::with_room_of(source, kRule, with_height(source, height));
  *handle = part ? part->handle() : nullptr;
  return part;
}

void fill(NewDib& part, const OpenDib& source, std::span<const uint8_t> rows, size_t image_bytes) {
  DibHeader header = part.header();
  header.image_bytes = static_cast<uint32_t>(image_bytes);
  part.set_header(header);
  part.copy_colors(source);
  std::ranges::copy(rows, part.image().begin());
}

}  // namespace

Result<bool> cut(const LockedDib& source, int32_t line, CutHandles parts) {
  const DibHeader& header = source.header();
  if (header.width < 0 || line <= 0 || line >= header.height) return Error::kUnreported;
  if (header.depth != 24 && implied_colors(header.depth) == 0) return Error::kUnreported;

  NewDib lower = VOREL_TRY(new_part(header, header.height - line, parts.first).or_error(Error::kUnreported));
  NewDib upper = VOREL_TRY(new_part(header, line, parts.second).or_error(Error::kUnreported));
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kRule).or_error(Error::kUnreported));

  const std::span<const uint8_t> rows = opened.rows();
  const size_t lower_bytes = lower.rows().size();
  // A quirk that is kept: both parts state the image size of the first: its block without header and colours.
  const size_t image_bytes = lower.image().size();
  fill(lower, opened, rows.first(lower_bytes), image_bytes);
  fill(upper, opened, rows.subspan(lower_bytes), image_bytes);
  *parts.first = lower.release();
  *parts.second = upper.release();
  return true;
}

}  // namespace vorel::geometry
