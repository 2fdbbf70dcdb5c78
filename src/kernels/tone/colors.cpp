#include <algorithm>

#include "kernels/bgr.h"
#include "kernels/row_output.h"
#include "kernels/tone/functions.h"
#include "kernels/tone/linear.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Each of these maps the first bytes of a row and returns their number.

class LinearMap {
 public:
  explicit LinearMap(const LinearTable& table)
      : factor_(Words{} + static_cast<uint16_t>(table.factor)),
        offset_(Doublewords{} + table.offset),
        shift_(table.shift),
        least_(Bytes{} + table.least),
        most_(Bytes{} + table.most) {}

  size_t map(const uint8_t* from, uint8_t* to, size_t count) const {
    size_t x = 0;
    for (; x + kVectorBytes <= count; x += kVectorBytes) {
      const auto bytes = load<Bytes>(from + x);
      const Bytes levels = pack(mapped(low_words(bytes)), mapped(high_words(bytes)));
      store(to + x, larger(smaller(levels, most_), least_));
    }
    return x;
  }

 private:
  [[gnu::always_inline]] Words mapped(Words words) const {
    return pack((multiply_add(low_words(words), factor_) + offset_) >> shift_,
                (multiply_add(high_words(words), factor_) + offset_) >> shift_);
  }

  Words factor_;
  Doublewords offset_;
  int shift_;
  Bytes least_, most_;
};

#if defined(__AVX512VBMI__)
// Looks all bytes up by permutes of 128 entries.
class ShuffledMap {
 public:
  explicit ShuffledMap(const ComponentTable& table) {
    for (size_t i = 0; i < 4; ++i) parts_[i] = load<__m512i>(&table[i * sizeof parts_[i]]);
  }

  size_t map(const uint8_t* from, uint8_t* to, size_t count) const {
    size_t x = 0;
    for (; x + sizeof(__m512i) <= count; x += sizeof(__m512i)) {
      const auto index = load<__m512i>(from + x);
      const __m512i low = _mm512_permutex2var_epi8(parts_[0], index, parts_[1]);
      const __m512i high = _mm512_permutex2var_epi8(parts_[2], index, parts_[3]);
      store(to + x, _mm512_mask_blend_epi8(_mm512_movepi8_mask(index), low, high));
    }
    return x;
  }

 private:
  __m512i parts_[4];
};
#elif defined(__AVX2__)
// Looks all bytes up by shuffles of sixteen entries. Entries are kept as differences from the entries sixteen further down:
// a byte takes part in each shuffle up to its own, so that the differences add up to its entry.
class ShuffledMap {
 public:
  explicit ShuffledMap(const ComponentTable& table) {
    for (size_t i = 0; i < 256; ++i) {
      const bool is_first = i % 128 < 16;
      const auto difference = static_cast<uint8_t>(table[i] ^ (is_first ? 0 : table[i - 16]));
      parts_[i / 16][i % 16] = parts_[i / 16][16 + i % 16] = difference;
    }
  }

  size_t map(const uint8_t* from, uint8_t* to, size_t count) const {
    constexpr size_t kStep = 2 * kVectorBytes;
    size_t x = 0;
    for (; x + kStep <= count; x += kStep) {
      __m256i index[2], result[2];
      for (int i = 0; i < 2; ++i) index[i] = load<__m256i>(from + x + static_cast<size_t>(i) * kVectorBytes);
      result[0] = result[1] = __m256i{};
      for (size_t half = 0; half < 2; ++half) {
        for (size_t part = 0; part < 8; ++part) {
          const auto differences = load<__m256i>(parts_[half * 8 + part]);
          for (int i = 0; i < 2; ++i) {
            // Bytes below this part are negative here and give 0, as do bytes of the other half.
            result[i] ^= _mm256_shuffle_epi8(differences, index[i]);
            index[i] = _mm256_subs_epi8(index[i], _mm256_set1_epi8(16));
          }
        }
        for (int i = 0; i < 2; ++i)
          index[i] = load<__m256i>(from + x + static_cast<size_t>(i) * kVectorBytes) ^ _mm256_set1_epi8(-128);
      }
      for (int i = 0; i < 2; ++i) store(to + x + static_cast<size_t>(i) * kVectorBytes, result[i]);
    }
    return x;
  }

 private:
  alignas(kVectorBytes) uint8_t parts_[16][kVectorBytes];
};
#else
// At the lower levels one byte after the other is as fast.
struct ShuffledMap {
  explicit ShuffledMap(const ComponentTable&) {}
  size_t map(const uint8_t*, uint8_t*, size_t) const { return 0; }
};
#endif

// Source and result may be the same.
template <class Map>
void map_rows(ConstDibView source, DibView result, const ComponentTable& table, const Map& map) {
  for (int y = 0; y < source.height(); ++y) {
    const auto row = source.row(y);
    uint8_t* const to = result.row(y).data();
    for (size_t x = map.map(row.data(), to, row.size()); x < row.size(); ++x) to[x] = table[row[x]];
  }
}

// Fitting a line takes as long as mapping some thousand bytes.
constexpr size_t kLeastLinearBytes = 1 << 16;

}  // namespace

void map_bytes(ConstDibView source, DibView result, const ComponentTable& table) {
  if (source.height() == 0) return;
  const bool is_large = source.row(0).size() * static_cast<size_t>(source.height()) >= kLeastLinearBytes;
  if (const auto line = is_large ? LinearTable::of(table) : std::nullopt; line)
    map_rows(source, result, table, LinearMap(*line));
  else
    map_rows(source, result, table, ShuffledMap(table));
}

void look_up_colors(ConstDibView source, DibView result, std::span<const Rgb, 256> colors) {
  uint32_t entries[256];
  for (size_t i = 0; i < 256; ++i)
    entries[i] = colors[i].blue | uint32_t{colors[i].green} << 8 | uint32_t{colors[i].red} << 16;
  for (int y = 0; y < source.height(); ++y) {
    const auto row = source.row(y);
    uint8_t* to = result.row(y).data();
    // Two pixels at a time, in eight bytes; the next pair overwrites two of them.
    size_t x = 0;
    for (; x + 4 <= row.size(); x += 2, to += 6) {
      const uint64_t two = entries[row[x]] | uint64_t{entries[row[x + 1]]} << 24;
      std::memcpy(to, &two, sizeof two);
    }
    for (; x < row.size(); ++x, to += 3) std::memcpy(to, &entries[row[x]], 3);
  }
}

void gray_rows(ConstDibView source, DibView result, GrayRule rule) {
  const RowOutput output(source, result);
  for (int y = 0; y < source.height(); ++y) {
    const uint8_t* const row = source.row(y).data();
    output.write_vectors(result.row(y), [&](size_t begin, size_t end, uint8_t* to, auto put) VOREL_INLINE {
      if (rule == GrayRule::kMean)
        weigh_row<kMeanWeights>(row + begin * 3, to, end - begin, put);
      else
        weigh_row<kGrayWeights>(row + begin * 3, to, end - begin, put);
    });
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
