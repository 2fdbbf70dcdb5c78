// Loaders and savers when memory is short: each allocation of a call fails in turn, alone and with all that follow. This program's
// malloc stands before that of the C library, for libtiff and libjpeg too.
#include <cerrno>
#include <cstdlib>

#include "codecs/codec.h"

extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);
}

namespace {

struct Shortage {
  int fails_at = 0;  // none while 0
  bool lasts = false;
  int seen = 0;
};
thread_local Shortage shortage;

bool is_short() {
  if (shortage.fails_at == 0) return false;
  ++shortage.seen;
  const bool fails = shortage.lasts ? shortage.seen >= shortage.fails_at : shortage.seen == shortage.fails_at;
  if (fails) errno = ENOMEM;
  return fails;
}

}  // namespace

extern "C" {
void* malloc(size_t bytes) noexcept { return is_short() ? nullptr : __libc_malloc(bytes); }
void* calloc(size_t count, size_t bytes) noexcept { return is_short() ? nullptr : __libc_calloc(count, bytes); }
void* realloc(void* block, size_t bytes) noexcept { return is_short() ? nullptr : __libc_realloc(block, bytes); }
}

using namespace test;

namespace {

struct Call {
  const char* name;
  Codec codec;
  int depth;
};

template <int kCompression>
constexpr Codec tiff() {
  return {kTiff.load, [](const char* path, HGLOBAL dib, int*) { return modules().save_tiff(path, dib, kCompression, 1); }};
}

constexpr Call kCalls[] = {
    {"plain", tiff<1>(), 8},   {"modified Huffman", tiff<2>(), 1},
    {"group 3", tiff<3>(), 1}, {"group 4", tiff<4>(), 1},
    {"LZW", tiff<5>(), 24},    {"JPEG in TIFF", tiff<7>(), 24},
    {"deflate", tiff<8>(), 8}, {"palette", tiff<32773>(), 4},
    {"CALS", kCals, 1},        {"JPEG", kJpeg, 24},
    {"PNG", kPng, 24},         {"GIF", kGif, 8},
    {"PCX", kPcx, 8},          {"TGA", kTga, 24},
};

class ShortMemory : public testing::TestWithParam<Call> {};

// Calls until no allocation is left to fail. A call either fails or gives `expected`, and gives it in the end.
template <class Attempt, class Result>
void fail_each_allocation(const Bytes& expected, Attempt attempt, Result result_of) {
  for (const bool lasts : {false, true})
    for (int n = 1, seen = n; seen >= n; ++n) {
      shortage = {n, lasts, 0};
      const auto given = attempt();
      seen = shortage.seen;
      shortage = {};
      const Bytes result = result_of(given);
      if (result.empty() && seen >= n) continue;
      EXPECT_EQ(largest_difference(result, expected), 0) << "allocation " << n;
    }
}

TEST_P(ShortMemory, EndsInFailureOrInTheWholePicture) {
  const auto& [name, codec, depth] = GetParam();
  const TempFolder folder;
  const std::string path = folder.path("picture.tga");
  const Block dib = block_of(noise(200, 50, depth));
  const auto loaded = [&] { return codec.load(path.c_str(), 1, nullptr); };
  const auto bytes = [](HGLOBAL block) { return bytes_of(Block(block).get()); };
  ASSERT_TRUE(codec.save(path.c_str(), dib.get(), nullptr));
  const Bytes expected = bytes(loaded());
  fail_each_allocation(expected, loaded, bytes);
  fail_each_allocation(
      expected, [&] { return codec.save(path.c_str(), dib.get(), nullptr); },
      [&](BOOL is_saved) { return is_saved != FALSE ? bytes(loaded()) : Bytes(); });
}

INSTANTIATE_TEST_SUITE_P(All, ShortMemory, testing::ValuesIn(kCalls), [](const auto& row) {
  std::string name = row.param.name;
  std::erase(name, ' ');
  return name;
});

}  // namespace
