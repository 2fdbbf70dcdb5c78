// Inputs of fuzz targets read as numbers and as pictures whose headers may lie, and what holds for every call of an export.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include <vorel32.h>

#include "support/dib.h"

namespace fuzz {

// Pictures may claim this many bytes, and results may need them. Few inputs may go to the upper limit, for the sake of speed.
inline constexpr uint64_t kMostBytes = uint64_t{32} << 20, kUsuallyMostBytes = uint64_t{1} << 18;
// Up to here a call is repeated with a whole block.
inline constexpr uint64_t kMostCompleted = uint64_t{1} << 18;

inline void require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (holds) return;
  std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
  std::abort();
}

// Reads past the end give zeros.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : rest_(data, size) {
    unsigned sum = 0;
    for (size_t i = 0; i < size; ++i) sum += data[i];
    most_bytes_ = sum % 64 == 0 ? kMostBytes : kUsuallyMostBytes;
  }

  uint64_t most_bytes() const { return most_bytes_; }

  std::span<const uint8_t> rest() const { return rest_; }

  uint8_t byte() {
    if (rest_.empty()) return 0;
    const uint8_t first = rest_[0];
    rest_ = rest_.subspan(1);
    return first;
  }
  uint32_t bytes(int count) {
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) value |= uint32_t{byte()} << 8 * i;
    return value;
  }
  // Mostly small, at times near a limit.
  int32_t number() {
    constexpr std::array<int64_t, 8> kLimits = {0, -1, 1 << 15, 1 << 16, 1 << 24, 1 << 29, INT32_MAX, INT32_MIN};
    const uint8_t kind = byte();
    if (kind < 160) return kind;
    if (kind < 200) return static_cast<int32_t>(bytes(2));
    if (kind < 216) return static_cast<int32_t>(bytes(4));
    if (kind < 232) return -static_cast<int32_t>(byte());
    return static_cast<int32_t>(static_cast<uint32_t>(kLimits[kind % 8]) + bytes(1) - 2u);
  }

 private:
  std::span<const uint8_t> rest_;
  uint64_t most_bytes_;
};

inline BITMAPINFOHEADER header_from(Input& input) {
  constexpr std::array<WORD, 8> kDepths = {1, 4, 8, 24, 8, 1, 16, 32};
  const uint8_t depth = input.byte(), oddities = input.byte();
  BITMAPINFOHEADER header = test::header_for(input.number(), input.number(), depth < 240 ? kDepths[depth % 8] : depth % 16);
  header.biXPelsPerMeter = header.biYPelsPerMeter = 3000;
  if ((oddities & 1) != 0) header.biClrUsed = static_cast<uint32_t>(input.number());
  if ((oddities & 2) != 0) header.biSizeImage = static_cast<uint32_t>(input.number());
  if ((oddities & 4) != 0) header.biYPelsPerMeter = input.number();
  if ((oddities & 0x18) == 0x18) header.biSize = static_cast<uint32_t>(input.number());
  if ((oddities & 0x28) == 0x28) header.biPlanes = static_cast<WORD>(input.number());
  if ((oddities & 0x48) == 0x48) header.biCompression = input.byte();
  return header;
}

inline uint64_t row_bytes(const BITMAPINFOHEADER& header) {
  const uint64_t width = header.biWidth > 0 ? static_cast<uint64_t>(header.biWidth) : 0;
  return (width * header.biBitCount * std::max<uint64_t>(header.biPlanes, 1) + 31) / 32 * 4;
}
inline uint64_t rows_bytes(const BITMAPINFOHEADER& header) {
  return header.biHeight > 0 ? row_bytes(header) * static_cast<uint64_t>(header.biHeight) : 0;
}
inline uint64_t head_bytes(const BITMAPINFOHEADER& header) {
  const bool has_table = header.biBitCount == 1 || header.biBitCount == 4 || header.biBitCount == 8;
  uint64_t colors = has_table ? uint64_t{1} << header.biBitCount : 0;
  if (header.biSize == sizeof header && header.biClrUsed != 0) colors = header.biClrUsed;
  return header.biSize + colors * 4;
}

// The bytes of head and rows, whatever order the rows have.
inline uint64_t claim_of_rows_either_way(BITMAPINFOHEADER header) {
  header.biHeight = std::abs(std::max<int32_t>(header.biHeight, -INT32_MAX));
  return head_bytes(header) + rows_bytes(header);
}

// A picture with the rest of the input behind its header. What that lacks of the picture, the block lacks too.
class Picture {
 public:
  explicit Picture(Input& input) : header_(header_from(input)), most_bytes_(input.most_bytes()) {
    bytes_ = test::with_header(header_, test::Bytes(input.rest().begin(), input.rest().end()));
  }

  const BITMAPINFOHEADER& header() const { return header_; }
  uint64_t claim() const { return head_bytes(header_) + rows_bytes(header_); }
  // Results may be as large as the header states.
  bool is_acceptable() const { return std::max<uint64_t>(claim(), header_.biSizeImage) <= most_bytes_; }
  bool is_short() const { return bytes_.size() < claim() + kBeyond; }

  test::Block block() const { return test::block_of(bytes_); }
  // With all rows, and zeros wherever an operation may look behind them.
  test::Block completed() const {
    test::Bytes bytes = bytes_;
    bytes.resize(std::max<size_t>(bytes.size(), static_cast<size_t>(claim() + kBeyond)));
    return test::block_of(bytes);
  }
  bool is_unchanged(HGLOBAL block) const { return test::bytes_of(block) == bytes_; }

 private:
  static constexpr uint64_t kBeyond = 2048;

  BITMAPINFOHEADER header_;
  uint64_t most_bytes_;
  test::Bytes bytes_;
};

// A result has all bytes that its header states.
inline void require_whole(HGLOBAL result) {
  const size_t size = GlobalSize(result);
  require(size >= sizeof(BITMAPINFOHEADER));
  BITMAPINFOHEADER header;
  std::memcpy(&header, GlobalLock(result), sizeof header);
  GlobalUnlock(result);
  if (header.biSize != sizeof header || header.biCompression != BI_RGB) return;
  // Operations that know planes make no rows for none; the others ignore the number.
  const bool has_rows = header.biPlanes != 0;
  header.biPlanes = 1;
  require(size >= head_bytes(header) + (has_rows ? rows_bytes(header) : 0));
}

// Compares as many bytes as both have.
inline void require_same_start(HGLOBAL a, HGLOBAL b) {
  require((a == nullptr) == (b == nullptr));
  if (a == nullptr) return;
  require(std::memcmp(GlobalLock(a), GlobalLock(b), std::min(GlobalSize(a), GlobalSize(b))) == 0);
  GlobalUnlock(a);
  GlobalUnlock(b);
}

// Sizes of results: what the result's header states, what the source's header states (biSizeImage, if any), the source's own.
enum class ResultSize { kAsStated, kAsSourceStates, kOfSource };

// Makes a call that gives a new DIB: its result is whole, the source stays as it was, and a block that is too short counts as
// completed with zeros.
template <class MakeDib>
void make(const Picture& picture, MakeDib make_dib, ResultSize size = ResultSize::kAsStated) {
  const test::Block source = picture.block(), result(make_dib(source.get()));
  const bool may_be_short =
      size == ResultSize::kOfSource || (size == ResultSize::kAsSourceStates && picture.header().biSizeImage != 0);
  if (result && !may_be_short) require_whole(result.get());
  require(picture.is_unchanged(source.get()));
  if (!picture.is_short() || picture.claim() > kMostCompleted) return;
  const test::Block whole = picture.completed(), same(make_dib(whole.get()));
  require_same_start(result.get(), same.get());
}

// The same for a call that changes the DIB itself, or fails.
template <class Change>
void change(const Picture& picture, Change change_dib) {
  const test::Block source = picture.block();
  const auto outcome = change_dib(source.get());
  if (!picture.is_short() || picture.claim() > kMostCompleted) return;
  const test::Block whole = picture.completed();
  require((change_dib(whole.get()) == whole.get()) == (outcome == source.get()));
  require_same_start(source.get(), whole.get());
}

}  // namespace fuzz
