// For tests of kernels: memory that ends, or begins, at a page without access, and the instruction sets of this machine.
//
//   for_each_level([&](CpuLevel level) {
//     for (const Edge edge : kEdges) {
//       const GuardedRows source(noise(33, 17, 8), 1, edge);    // a DIB's rows, misaligned: 1 byte between them
//       GuardedRows result({17, 33}, 8, 3, edge);               // noise, so that pixels that a kernel leaves out show
//       kernels::turn(level).quarter_turn(source.view(), result.view(), turn);
//       EXPECT_EQ(result.pixels(), expected.pixels());
//     }
//   });
#pragma once

#include <algorithm>
#include <gtest/gtest.h>
#include <new>
#include <span>

#include "core/byte_count.h"
#include "core/view.h"
#include "kernels/levels.h"
#include "support/dib.h"
#include "support/guarded_pages.h"
#include "support/picture.h"

namespace test {

// Runs the work at each level that this machine has.
template <class Work>
void for_each_level(Work work) {
  for (const vorel::CpuLevel level : vorel::kCpuLevels) {
    if (level > vorel::highest_cpu_level()) continue;
    SCOPED_TRACE(vorel::name_of(level));
    work(level);
  }
}

// The side on which memory touches a page without access.
enum class Edge { kBegin, kEnd };
inline constexpr Edge kEdges[] = {Edge::kBegin, Edge::kEnd};

// Memory between two pages without access, filled with noise.
class GuardedBytes {
 public:
  GuardedBytes(size_t size, Edge edge) : size_(size), pages_(size) {
    if (!pages_) throw std::bad_alloc();
    first_ = edge == Edge::kBegin ? pages_.begin() : pages_.end() - size;
    uint32_t state = 12'345;
    for (uint8_t& byte : bytes()) byte = static_cast<uint8_t>((state = state * 1'664'525 + 1'013'904'223) >> 24);
  }
  GuardedBytes(const Bytes& content, Edge edge) : GuardedBytes(content.size(), edge) {
    std::ranges::copy(content, bytes().begin());
  }

  std::span<uint8_t> bytes() const { return {first_, size_}; }

 private:
  size_t size_;
  GuardedPages pages_;
  uint8_t* first_ = nullptr;
};

// Scratch memory for a kernel, aligned as kernels want it.
inline GuardedBytes guarded_scratch(vorel::ByteCount bytes, Edge edge) {
  constexpr size_t kAlignment = 64;
  return GuardedBytes((static_cast<size_t>(bytes.value()) + kAlignment - 1) / kAlignment * kAlignment, edge);
}

// So many bytes between rows that a result of this height counts as too large for the caches.
inline size_t large_gap(int height) { return (size_t{4} << 20) / static_cast<size_t>(height) + 1; }

// Rows of pixels in guarded memory, some bytes apart. Nothing follows the pixels of the last row.
class GuardedRows {
 public:
  GuardedRows(vorel::Size size, int depth, size_t gap, Edge edge)
      : size_(size),
        depth_(depth),
        stride_(vorel::row_bytes(depth, size.width) + gap),
        memory_(size.height == 0 ? 0 : stride_ * static_cast<size_t>(size.height) - gap, edge) {}

  // With the pixels of a packed DIB.
  GuardedRows(const Bytes& dib, size_t gap, Edge edge) : GuardedRows(Picture(dib), gap, edge) {}

  vorel::DibView view() const {
    return {memory_.bytes().data(), static_cast<std::ptrdiff_t>(stride_), size_.width, size_.height, depth_};
  }

  // The bytes that hold pixels, and the other ones.
  Bytes pixels() const { return collected(true); }
  Bytes gaps() const { return collected(false); }

 private:
  GuardedRows(const Picture& picture, size_t gap, Edge edge)
      : GuardedRows({picture.width, picture.height}, picture.depth, gap, edge) {
    for (int y = 0; y < size_.height; ++y)
      std::copy_n(picture.bytes.data() + picture.index(0, y), view().row(y).size(), view().row(y).begin());
  }

  Bytes collected(bool are_pixels) const {
    const size_t row = vorel::row_bytes(depth_, size_.width);
    Bytes found;
    for (size_t i = 0; i < memory_.bytes().size(); ++i)
      if ((i % stride_ < row) == are_pixels) found.push_back(memory_.bytes()[i]);
    return found;
  }

  vorel::Size size_;
  int depth_;
  size_t stride_;
  GuardedBytes memory_;
};

}  // namespace test
