#include "tone/histogram.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

#include "dib/open_dib.h"
#include "frame/thread_context.h"
#include "kernels/tone/tone.h"

namespace vorel::tone {
namespace {

using kernels::ComponentTable;

constexpr uint32_t kHistogramBytes = kernels::kHistogramLevels * sizeof(uint16_t);
constexpr size_t kTableBytes = ComponentTable().size();
constexpr kernels::Corner kNowhere = {-256, -256};  // no square has this corner

struct Memory {
  int32_t histogram_bytes = 0;  // of a histogram; 0 until one is allocated
  kernels::Corner counted_last{0, 0};
  int32_t table_bytes = 0;  // of a lookup table; 0 until one is allocated
};
const PerThread<Memory> memory;

// A caller's block, zero-extended to `size` bytes.
class CallersBlock {
 public:
  static Result<CallersBlock> lock(HGLOBAL handle, size_t size) {
    LockedBlock lock = VOREL_TRY(or_error(LockedBlock::lock(handle), Error::kLock));
    CompleteBytes bytes = VOREL_TRY(or_error(CompleteBytes::of(lock.bytes(), size), Error::kLock));
    return CallersBlock(std::move(lock), std::move(bytes));
  }

  std::span<uint8_t> bytes() const { return bytes_.bytes(); }
  kernels::Histogram counters() const {
    return kernels::Histogram(reinterpret_cast<uint16_t*>(bytes().data()), kernels::kHistogramLevels);
  }
  void write_back() const { bytes_.write_back(); }

 private:
  CallersBlock(LockedBlock lock, CompleteBytes bytes) : lock_(std::move(lock)), bytes_(std::move(bytes)) {}

  LockedBlock lock_;
  CompleteBytes bytes_;
};

Result<HGLOBAL> new_block(size_t bytes, auto&& fill) {
  OwnedBlock block = VOREL_TRY(or_error(OwnedBlock::allocate(bytes), Error::kMemory));
  const LockedBlock lock = VOREL_TRY(or_error(LockedBlock::lock(block.get()), Error::kLock));
  fill(lock.bytes());
  return block.release();
}

}  // namespace

Result<HGLOBAL> new_histogram() {
  memory->histogram_bytes = kHistogramBytes;
  auto histogram = new_block(kHistogramBytes, [](std::span<uint8_t>) {});
  if (histogram) memory->counted_last = kNowhere;
  return histogram;
}

Result<HGLOBAL> counted(const LockedDib& source, HGLOBAL histogram, kernels::Corner asked) {
  const kernels::Corner before = memory->counted_last;
  const kernels::Corner corner = kernels::clamped(asked, {source.header().width, source.header().height});
  if (corner == before) return histogram;
  const CallersBlock block = VOREL_TRY(CallersBlock::lock(histogram, kHistogramBytes));
  const OpenDib picture = VOREL_TRY(OpenDib::open(source));

  if (kernels::can_slide(before, corner)) {
    kernels::tone().slide_square(picture.pixels(), before, corner, block.counters());
  } else {
    // A quirk that is kept: a thread that never allocated a histogram clears nothing.
    const auto cleared = static_cast<size_t>(memory->histogram_bytes) / sizeof(uint16_t);
    std::ranges::fill(block.counters().first(cleared), uint16_t{0});
    kernels::tone().count_square(picture.pixels(), corner, block.counters());
  }
  block.write_back();
  memory->counted_last = corner;
  return histogram;
}

Result<HGLOBAL> new_lookup_table() {
  memory->table_bytes = static_cast<int32_t>(kTableBytes);
  return new_block(kTableBytes, [](std::span<uint8_t> table) {
    std::iota(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(kTableBytes), uint8_t{0});
  });
}

Result<HGLOBAL> filled_lookup_table(HGLOBAL table, HGLOBAL histogram, int contrast, int brightness) {
  const auto target = LockedBlock::lock(table);
  const auto counters = CallersBlock::lock(histogram, kHistogramBytes);
  const int mean = counters ? kernels::mean_level(counters->counters()) : kernels::kMiddleLevel;
  const ComponentTable levels = kernels::contrast_table(contrast, brightness, mean);
  // A quirk that is kept: a thread that never allocated a table writes none.
  const auto count = static_cast<size_t>(memory->table_bytes);
  if (target) std::ranges::copy(std::span(levels).first(std::min(count, target->bytes().size())), target->bytes().begin());
  return table;
}

Result<ComponentTable> read_lookup_table(HGLOBAL table) {
  const CallersBlock block = VOREL_TRY(CallersBlock::lock(table, kTableBytes));
  ComponentTable levels;
  std::ranges::copy(block.bytes().first(kTableBytes), levels.begin());
  return levels;
}

}  // namespace vorel::tone
