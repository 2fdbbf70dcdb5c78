#include "geometry/dib_cut.h"

namespace vorel {
namespace {

std::optional<OwnedBlock> allocate(ByteCount bytes, HGLOBAL* handle) {
  auto block = OwnedBlock::allocate(bytes);
  *handle = block ? block->get() : nullptr;
  return block;
}

// Puts head and rows into a part. The image size is that of the first part in both, the whole of its block but the head, however
// large the system has made that.
void fill(std::span<uint8_t> part, std::span<const uint8_t> head, std::span<const uint8_t> rows, DibHeader header,
          size_t image_bytes) {
  std::ranges::copy(head, part.begin());
  std::ranges::copy(rows, part.begin() + static_cast<std::ptrdiff_t>(head.size()));
  header.image_bytes = static_cast<uint32_t>(image_bytes);
  write_header(part, header);
}

}  // namespace

bool cut(const LockedDib& source, int32_t line, CutHandles parts) {
  const DibHeader& header = source.header();
  if (header.width < 0 || line <= 0 || line >= header.height) return false;
  if (header.depth != 24 && implied_colors(header.depth) == 0) return false;
  DibHeader lower = header, upper = header;
  lower.height = header.height - line;
  upper.height = line;

  const ByteCount head_bytes = ByteCount(kHeaderBytes) + palette_bytes(header);
  auto first = allocate(head_bytes + rows_bytes(lower), parts.first);
  if (!first) return false;
  auto second = allocate(head_bytes + rows_bytes(upper), parts.second);
  if (!second) return false;
  const auto whole = source.complete(head_bytes + rows_bytes(header));
  const auto first_lock = LockedBlock::lock(first->get()), second_lock = LockedBlock::lock(second->get());
  if (!whole || !first_lock || !second_lock) return false;

  const auto head = whole->bytes().first(static_cast<size_t>(head_bytes.value()));
  const auto rows = whole->bytes().subspan(head.size());
  const auto lower_bytes = static_cast<size_t>(rows_bytes(lower).value());
  const size_t image_bytes = first_lock->bytes().size() - head.size();
  fill(first_lock->bytes(), head, rows.first(lower_bytes), lower, image_bytes);
  fill(second_lock->bytes(), head, rows.subspan(lower_bytes), upper, image_bytes);
  *parts.first = first->release();
  *parts.second = second->release();
  return true;
}

}  // namespace vorel
