#include <cstring>

#include "core/arena.h"
#include "core/row_writer.h"
#include "kernels/cache.h"
#include "kernels/lanes.h"
#include "kernels/scale/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Positions i * source / result for i from 0 on, rounded to nearest with halves up.
class NearestSteps {
 public:
  NearestSteps(int source, int result)
      : divisor_(int64_t{2} * result),
        whole_(2 * int64_t{source} / divisor_),
        rest_(2 * int64_t{source} % divisor_),
        over_(result) {}

  int64_t at() const { return at_; }
  void advance() {
    at_ += whole_;
    over_ += rest_;
    if (over_ < divisor_) return;
    over_ -= divisor_;
    ++at_;
  }

 private:
  int64_t divisor_, whole_, rest_, over_, at_ = 0;
};

// The source columns of a row of the result, limited to the rectangle and the picture.
struct Columns {
  int first, end;     // of the source
  int width, result;  // `width` columns become `result` columns

  // Calls pick(column) for each column in order.
  void for_each(auto&& pick) const {
    NearestSteps steps(width, result);
    for (int x = 0; x < result; ++x, steps.advance()) {
      if (steps.at() >= end - first) return;
      pick(first + static_cast<int>(steps.at()));
    }
  }
};

template <int kDepth>
void pick_row(const uint8_t* from, const Columns& columns, uint8_t* to) {
  RowWriter<kDepth> writer(to, 0);
  columns.for_each([&](int column) { writer.put(Pixel<kDepth>::load(from, column)); });
}

#ifdef __SSSE3__

// Picks bits of a row, the same columns in every row, by shuffling their bytes and testing one bit of each. A block has a byte of
// a vector for each bit, the first pixel of each eight last, so that the mask of tests has them in the order of memory.
class BitGather {
 public:
#ifdef __AVX512VBMI__
  using Vector = __m512i;
  using Mask = uint64_t;
#else
  using Vector = __m128i;
  using Mask = uint16_t;
#endif
  static constexpr size_t kBlock = sizeof(Vector);

  // `memory` has three bytes for each column of the result.
  BitGather(const Columns& columns, std::span<uint8_t> memory) {
    Arena arena(memory);
    const size_t blocks = (static_cast<size_t>(columns.result) + kBlock - 1) / kBlock;
    first_bytes_ = arena.take<uint32_t>(blocks);
    relative_ = arena.take<uint8_t>(blocks * kBlock);
    bits_ = arena.take<uint8_t>(blocks * kBlock);
    std::memset(bits_.data(), 0, bits_.size());
    std::memset(relative_.data(), 0, relative_.size());
    columns.for_each([&](int column) { add(column); });
  }

  bool fits() const { return fits_; }

  // Reads no byte from `end` on.
  void pick(const uint8_t* from, const uint8_t* end, uint8_t* to, size_t to_bytes) const {
    for (size_t block = 0; block * kBlock < count_; ++block, to += sizeof(Mask)) {
      const Mask mask = tested(from + first_bytes_[block], end, at(relative_, block), at(bits_, block));
      store_mask(mask, to, to_bytes - block * sizeof mask);
    }
  }

 private:
  // Columns past the last one have no bit to test.
#ifdef __AVX512VBMI__
  static Mask tested(const uint8_t* from, const uint8_t* end, Vector places, Vector bits) {
    const auto available = static_cast<size_t>(end - from);
    const Vector bytes = _mm512_maskz_loadu_epi8(available < kBlock ? (Mask{1} << available) - 1 : ~Mask{0}, from);
    return _mm512_test_epi8_mask(_mm512_maskz_permutexvar_epi8(~Mask{0}, places, bytes), bits);
  }
#else
  static Mask tested(const uint8_t* from, const uint8_t* end, Vector places, Vector bits) {
    const Vector picked = _mm_shuffle_epi8(load(from, end), places);
    const Vector is_set =
        _mm_andnot_si128(_mm_cmpeq_epi8(bits, _mm_setzero_si128()), _mm_cmpeq_epi8(_mm_and_si128(picked, bits), bits));
    return static_cast<Mask>(_mm_movemask_epi8(is_set));
  }

  static Vector load(const uint8_t* from, const uint8_t* end) {
    if (end - from >= 16) return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    uint8_t bytes[16] = {};
    std::memcpy(bytes, from, static_cast<size_t>(end - from));
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  }
#endif

  static Vector at(std::span<const uint8_t> table, size_t block) {
    return kernels::VOREL_LEVEL::load<Vector>(table.data() + block * kBlock);
  }

  void add(int column) {
    const auto byte = static_cast<uint32_t>(column / 8);
    if (count_ % kBlock == 0) first_bytes_[count_ / kBlock] = byte;
    const uint32_t distance = byte - first_bytes_[count_ / kBlock];
    fits_ = fits_ && distance < kBlock;
    const size_t slot = count_ ^ 7;
    relative_[slot] = static_cast<uint8_t>(distance);
    bits_[slot] = static_cast<uint8_t>(0x80 >> column % 8);
    ++count_;
  }

  std::span<uint32_t> first_bytes_;
  std::span<uint8_t> relative_, bits_;
  size_t count_ = 0;
  bool fits_ = true;
};

#endif

// A 1-bit row at its own width. Bits behind the last pixel are copied too, and of one more byte as many as the last byte has
// pixels: a quirk that is kept.
void copy_bits(std::span<const uint8_t> source, int x, int width, std::span<uint8_t> result) {
  source = source.subspan(static_cast<size_t>(x / 8));
  const size_t pixel_bytes = row_bytes(1, width);
  const size_t copied = source.size() < pixel_bytes + 1 ? source.size() : pixel_bytes + 1;
  const size_t end = result.size() < pixel_bytes + 1 ? result.size() : pixel_bytes + 1;
  const int shift = x % 8;
  const size_t whole = copied == 0 ? 0 : copied - 1 < end ? copied - 1 : end;  // bytes that have a successor
  for (size_t i = 0; i < whole; ++i) result[i] = static_cast<uint8_t>(source[i] << shift | source[i + 1] >> (8 - shift));
  for (size_t i = whole; i < end; ++i) result[i] = i < copied ? static_cast<uint8_t>(source[i] << shift) : uint8_t{0};
  if (width % 8 != 0 && pixel_bytes < end) result[pixel_bytes] &= static_cast<uint8_t>(0xFF00 >> width % 8);
}

template <class Byte>
std::span<Byte> whole_row_from_top(BasicView<Byte> view, int y) {
  return {view.row_from_top(y).data(), static_cast<size_t>(view.stride())};
}

// Calls fill(source row, result row) for zeroed rows of the result from the top on, down to the last source row, and
// repeats the previous row where the source row is the same.
void for_each_row(ConstDibView source, Rect rect, DibView result, auto&& fill) {
  NearestSteps steps(rect.height, result.height());
  const int64_t rows = std::min(rect.height, source.height() - rect.y);
  int64_t previous = -1;
  for (int y = 0; y < result.height() && steps.at() < rows; ++y) {
    const int64_t from = steps.at();
    const auto to = whole_row_from_top(result, y);
    steps.advance();
    if (steps.at() > from && steps.at() < rows) {
      const auto next = whole_row_from_top(source, rect.y + static_cast<int>(steps.at()));
      read_ahead(next.data(), next.size());
    }
    if (from == previous)
      std::memcpy(to.data(), whole_row_from_top(result, y - 1).data(), to.size());
    else
      fill(whole_row_from_top(source, rect.y + static_cast<int>(from)), to);
    previous = from;
  }
}

}  // namespace

void scale_nearest(ConstDibView source, Rect rect, DibView result, std::span<uint8_t> scratch) {
  const int available = source.width() - rect.x;
  const Columns columns{rect.x, rect.x + (rect.width < available ? rect.width : available), rect.width, result.width()};
  using Row = std::span<const uint8_t>;
  if (source.depth() == 1 && rect.width == result.width() && rect.width <= available) {
    return for_each_row(source, rect, result,
                        [&](Row from, std::span<uint8_t> to) { copy_bits(from, rect.x, rect.width, to); });
  }
#ifdef __SSSE3__
  if (source.depth() == 1 && !scratch.empty()) {
    const BitGather gather(columns, scratch);
    if (gather.fits()) {
      const size_t bytes = row_bytes(1, result.width());
      return for_each_row(source, rect, result, [&](Row from, std::span<uint8_t> to) {
        gather.pick(from.data(), from.data() + from.size(), to.data(), bytes);
      });
    }
  }
#else
  static_cast<void>(scratch);
#endif
  with_depth(source.depth(), [&](auto depth) {
    for_each_row(source, rect, result,
                 [&](Row from, std::span<uint8_t> to) { pick_row<depth>(from.data(), columns, to.data()); });
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
