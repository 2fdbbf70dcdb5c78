// Writing the rows of a result to memory.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

#include "core/view.h"
#include "kernels/cache.h"
#include "kernels/lanes.h"

namespace vorel::kernels::VOREL_LEVEL {

// Bytes of a row of a picture; nothing outside of the picture.
inline std::span<const uint8_t> source_piece(ConstDibView source, int y, size_t begin, size_t end) {
  if (y < 0 || y >= source.height()) return {};
  return {source.row(y).data() + begin, end - begin};
}

// Writes a result row after row. A large result goes past the caches, so that its old content is not read into them. Where
// pixels are only moved, the source is prefetched: the processor does so by itself only for ascending addresses.
class RowOutput {
 public:
  // The rows of a picture changed in place are in the caches already.
  RowOutput(ConstDibView source, DibView result)
      : streams_(result.height() > 0 &&
                 static_cast<uint64_t>(result.stride()) * static_cast<uint64_t>(result.height()) >= kStreamedBytes &&
                 source.row(0).data() != result.row(0).data()) {}
  // For rows that do not leave the caches.
  RowOutput() = default;
  RowOutput(const RowOutput&) = delete;
  RowOutput& operator=(const RowOutput&) = delete;
  ~RowOutput() {
    if (streams_) _mm_sfence();
  }

  // Calls make(begin, end, to) to write each piece of a row. Pixels of three bytes are not split. ahead(row, begin, end) is the
  // source of a piece of this row (0) or the next one (1).
  template <class Ahead, class Make>
  [[gnu::always_inline]] void write(std::span<uint8_t> row, Ahead ahead, Make make) const {
    if (!streams_) return make(size_t{0}, row.size(), row.data());
    alignas(kCacheLine) uint8_t lines[kPiece];
    const auto end_of = [&](size_t begin) { return row.size() - begin < kPiece ? row.size() : begin + kPiece; };
    for (size_t begin = 0; begin < row.size(); begin += kPiece) {
      const size_t end = end_of(begin);
      uint8_t* const to = row.data() + begin;
      make(begin, end, lines);
      copy_past_caches(lines, to, end - begin,
                       end < row.size() ? ahead(0, end, end_of(end)) : ahead(1, size_t{0}, end_of(0)));
    }
  }

  // Copies a row. `next` is prefetched.
  void copy(std::span<uint8_t> row, const uint8_t* from, std::span<const uint8_t> next) const {
    if (streams_)
      copy_past_caches(from, row.data(), row.size(), next);
    else
      std::memcpy(row.data(), from, row.size());
  }

  // For rows made vector by vector. make(begin, end, to, put) stores vectors by put(to, vector), at `to` and whole vectors
  // behind it.
  template <class Make>
  [[gnu::always_inline]] void write_vectors(std::span<uint8_t> row, Make make) const {
    const size_t in_front = (0 - reinterpret_cast<uintptr_t>(row.data())) % kCacheLine;
    if (!streams_ || in_front >= row.size())
      return make(size_t{0}, row.size(), row.data(), [](uint8_t* to, Bytes vector) VOREL_INLINE { store(to, vector); });
    make(size_t{0}, in_front, row.data(), [](uint8_t* to, Bytes vector) VOREL_INLINE { store(to, vector); });
    make(in_front, row.size(), row.data() + in_front, [](uint8_t* to, Bytes vector) VOREL_INLINE { stream(to, vector); });
  }

 private:
  static constexpr uint64_t kStreamedBytes = uint64_t{4} << 20;
  static constexpr size_t kPiece = 96 * kCacheLine;
  static_assert(kPiece % 3 == 0);

  static void copy_past_caches(const uint8_t* from, uint8_t* to, size_t count, std::span<const uint8_t> ahead) {
    const size_t in_front = (0 - reinterpret_cast<uintptr_t>(to)) % kCacheLine;
    if (in_front >= count) return void(std::memcpy(to, from, count));
    std::memcpy(to, from, in_front);
    size_t i = in_front;
    for (; i + kCacheLine <= count; i += kCacheLine) {
      if (i < ahead.size()) __builtin_prefetch(ahead.data() + i, 0, 2);
      for (size_t k = 0; k < kCacheLine; k += kVectorBytes) stream(to + i + k, load<Bytes>(from + i + k));
    }
    std::memcpy(to + i, from + i, count - i);
  }

  bool streams_ = false;
};

}  // namespace vorel::kernels::VOREL_LEVEL
