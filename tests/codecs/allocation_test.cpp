// Loaders and savers when memory is short: each allocation of a call fails in turn, alone and with all that follow. This program's
// malloc stands before that of the C library, for libtiff and libjpeg too, and counts blocks that are left.
#include <cerrno>
#include <cstdlib>

#include "codecs/codec.h"

extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);
void __libc_free(void* block);
}

namespace {

struct Shortage {
  int fails_at = 0;  // none while 0
  bool lasts = false;
  int seen = 0;
};
thread_local Shortage shortage;
thread_local long live_blocks = 0;

bool is_short() {
  if (shortage.fails_at == 0) return false;
  ++shortage.seen;
  const bool fails = shortage.lasts ? shortage.seen >= shortage.fails_at : shortage.seen == shortage.fails_at;
  if (fails) errno = ENOMEM;
  return fails;
}

void* counted(void* block) {
  if (block != nullptr) ++live_blocks;
  return block;
}

}  // namespace

extern "C" {
void* malloc(size_t bytes) noexcept { return is_short() ? nullptr : counted(__libc_malloc(bytes)); }
void* calloc(size_t count, size_t bytes) noexcept { return is_short() ? nullptr : counted(__libc_calloc(count, bytes)); }
void* realloc(void* block, size_t bytes) noexcept {
  if (is_short()) return nullptr;
  void* const moved = __libc_realloc(block, bytes);
  return block == nullptr ? counted(moved) : moved;
}
void free(void* block) noexcept {
  if (block != nullptr) --live_blocks;
  __libc_free(block);
}
}

using namespace test;

namespace {

struct Call {
  const char* name;
  Codec codec;
  int depth;
  long most_left = 0;  // blocks that only the field's library knows
};

template <int kCompression>
constexpr Codec tiff() {
  return {kTiff.load, [](const char* path, HGLOBAL dib, int*) { return modules().save_tiff(path, dib, kCompression, 1); }};
}

constexpr Call kCalls[] = {
    {"plain", tiff<1>(), 8},   {"modified Huffman", tiff<2>(), 1},
    {"group 3", tiff<3>(), 1}, {"group 4", tiff<4>(), 1},
    {"LZW", tiff<5>(), 24},    {"JPEG in TIFF", tiff<7>(), 24, 1},
    {"deflate", tiff<8>(), 8}, {"palette", tiff<32773>(), 4},
    {"CALS", kCals, 1},        {"JPEG", kJpeg, 24},
    {"PNG", kPng, 24},         {"GIF", kGif, 8},
    {"PCX", kPcx, 8},          {"TGA", kTga, 24},
};

class ShortMemory : public testing::TestWithParam<Call> {};

// Calls until no allocation is left to fail. A call either fails or gives `expected`, and gives it in the end. Returns how many blocks
// all calls left.
template <class Attempt, class Result>
long fail_each_allocation(const Bytes& expected, Attempt attempt, Result result_of) {
  long left = 0;
  for (const bool lasts : {false, true})
    for (int n = 1, seen = n; seen >= n; ++n) {
      const long before = live_blocks;
      shortage = {n, lasts, 0};
      const auto given = attempt();
      seen = shortage.seen;
      shortage = {};
      const Bytes result = result_of(given);
      left += live_blocks - before - (result.empty() ? 0 : 1);
      if (result.empty() && seen >= n) continue;
      EXPECT_EQ(largest_difference(result, expected), 0) << "allocation " << n;
    }
  return left;
}

TEST_P(ShortMemory, EndsInFailureOrInTheWholePicture) {
  const auto& [name, codec, depth, most_left] = GetParam();
  const TempFolder folder;
  const std::string path = folder.path("picture.tga");
  const Block dib = block_of(noise(200, 50, depth));
  const auto loaded = [&] { return codec.load(path.c_str(), 1, nullptr); };
  const auto bytes = [](HGLOBAL block) { return bytes_of(Block(block).get()); };
  ASSERT_TRUE(codec.save(path.c_str(), dib.get(), nullptr));
  const Bytes expected = bytes(loaded());
  long left = fail_each_allocation(expected, loaded, bytes);
  left += fail_each_allocation(
      expected, [&] { return codec.save(path.c_str(), dib.get(), nullptr); },
      [&](BOOL is_saved) { return is_saved != FALSE ? bytes(loaded()) : Bytes(); });
  EXPECT_LE(left, most_left);
}

INSTANTIATE_TEST_SUITE_P(All, ShortMemory, testing::ValuesIn(kCalls), [](const auto& row) {
  std::string name = row.param.name;
  std::erase(name, ' ');
  return name;
});

}  // namespace
