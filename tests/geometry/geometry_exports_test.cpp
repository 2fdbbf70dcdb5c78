// What holds for all exports that make pictures of another shape: the same bytes on every build, and what bad DIBs get.
#include <climits>
#include <functional>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

constexpr int kUntouched = 77;

// What a call gives, and what it tells its own variable.
struct Outcome {
  Bytes result;
  int told = kUntouched;
};

Outcome rotate(HGLOBAL dib, int angle, int method) {
  int told = kUntouched;
  const Block result(RotateDIB(dib, angle, method, &told, nullptr));
  return {bytes_of(result.get()), told};
}

Outcome skew(HGLOBAL dib, int direction, int offset) {
  int told = kUntouched;
  const Block result(SkewDIB(dib, direction, offset, &told, nullptr));
  return {bytes_of(result.get()), told};
}

Outcome scale(HGLOBAL dib, int mode, unsigned width, unsigned height) {
  return {bytes_of(Block(ScaleDIB(dib, mode, width, height)).get())};
}

Outcome magnify(HGLOBAL dib, int mode, int factor) {
  return {bytes_of(Block(ScaleGrayDIB(dib, 4, 3, factor, 3, mode)).get())};
}

Outcome cut(HGLOBAL dib, int line) {
  HGLOBAL first = nullptr, second = nullptr;
  if (!CutDIB(dib, line, &first, &second)) return {};
  return {joined(bytes_of(Block(first).get()), bytes_of(Block(second).get()))};
}

TEST(Geometry, GivesTheSameBytesOnEveryBuild) {
  Digest digest;
  const auto add = [&](const Outcome& outcome) { digest.add(outcome.result); };
  for (int depth : {1, 4, 8, 24})
    for (const auto& [width, height] : {std::pair{4, 3}, {33, 17}, {64, 50}, {101, 75}}) {
      const Block dib = block_of(noise(width, height, depth));
      for (int angle = -360; angle < 720; angle += 7)
        for (int method : {0, 1}) add(rotate(dib.get(), angle, method));
      for (int offset : {-130, -9, 0, 1, 21, 64})
        for (int direction : {0, 1}) add(skew(dib.get(), direction, offset));
      for (unsigned side : {1u, 30u, 64u, 77u, 150u})
        for (int mode : {0, 1}) add(scale(dib.get(), mode, side, 150 - side / 2));
      for (int factor : {1, 2, 9})
        for (int mode : {0, 1}) add(magnify(dib.get(), mode, factor));
      add(cut(dib.get(), height / 2));
    }
  EXPECT_EQ(digest.value, 10226358578409826977u);
}

TEST(Geometry, CompletesShortBlocksAndLeavesTheSourceAlone) {
  const std::function<Outcome(HGLOBAL)> calls[] = {
      [](HGLOBAL dib) { return rotate(dib, 17, 0); },  [](HGLOBAL dib) { return rotate(dib, 17, 1); },
      [](HGLOBAL dib) { return skew(dib, 0, 17); },    [](HGLOBAL dib) { return skew(dib, 1, 17); },
      [](HGLOBAL dib) { return scale(dib, 0, 8, 9); }, [](HGLOBAL dib) { return scale(dib, 1, 40, 30); },
      [](HGLOBAL dib) { return magnify(dib, 1, 2); },  [](HGLOBAL dib) { return cut(dib, 3); }};
  for (int depth : {1, 4, 8, 24}) {
    const Bytes whole = noise(30, 20, depth);
    for (size_t there : {size_t{40}, size_t{47}, whole.size() - 33}) {
      Bytes completed = whole;
      completed.resize(there);
      const Block cut_off = block_of(completed);
      completed.resize(whole.size());
      for (const auto& call : calls) {
        EXPECT_TRUE(call(cut_off.get()).result == call(block_of(completed).get()).result)
            << depth << " bits, " << there << " bytes";
        EXPECT_EQ(GlobalSize(cut_off.get()), there);
        EXPECT_TRUE(bytes_of(cut_off.get()) ==
                    Bytes(completed.begin(), completed.begin() + static_cast<std::ptrdiff_t>(there)));
      }
    }
  }
}

TEST(Geometry, OtherDepthsAreRefusedOrComeOutEmpty) {
  for (int depth : {0, 2, 16, 32}) {
    const Block dib = block_of(with_header(header_for(10, 10, depth), Bytes(stride_of(10, depth) * 10, 0xAB)));
    const auto is_empty = [&](const Bytes& result, int width, int height) {
      return Bytes(result.begin() + 40, result.end()) == Bytes(stride_of(width, depth) * static_cast<size_t>(height));
    };
    EXPECT_TRUE(is_empty(rotate(dib.get(), 45, 0).result, 14, 14)) << depth;
    EXPECT_TRUE(is_empty(skew(dib.get(), 1, -2).result, 12, 10)) << depth;
    EXPECT_TRUE(is_empty(skew(dib.get(), 0, 2).result, 10, 12)) << depth;
    EXPECT_TRUE(cut(dib.get(), 5).result.empty()) << depth;
  }
}

// What each export tells of a DIB: 0 if it gives a picture. CutDIB tells nothing but whether it does.
struct Input {
  const char* what;
  Block dib;
  int rotated, skewed, scaled, magnified;
  bool is_cut;
};

Block picture(int width, int height, int depth, int size = 40, int compression = 0, int colors = 1) {
  BITMAPINFOHEADER header = header_for(width, height, depth);
  header.biSize = static_cast<uint32_t>(size);
  header.biCompression = static_cast<uint32_t>(compression);
  header.biClrUsed = static_cast<uint32_t>(colors);
  return block_of(with_header(header, Bytes(300, 0xAB)));
}

TEST(Geometry, TellsEachInItsWayWhatIsWrongWithADib) {
  const Input inputs[] = {
      {"good", picture(9, 9, 8), 0, 0, 0, 0, true},
      {"null", Block(), 506, 8, 8, 8, false},
      {"header cut", block_of(Bytes(39, 40)), 506, 8, 21, 21, false},
      {"another header, and compressed", picture(9, 9, 8, 64, 1), 506, 8, 0, 0, true},
      {"compressed, and no width", picture(0, 9, 8, 40, 1), 500, 18, 19, 8, true},
      {"masks", picture(9, 9, 16, 40, 3), 500, 18, 21, 21, false},
      {"no width", picture(0, 9, 4), 501, 19, 19, 8, true},
      {"no height", picture(9, 0, 4), 501, 19, 19, 8, false},
      {"no low word of width", picture(0x30000, 9, 8), 501, 0, 19, 0, true},
      {"no low word of height", picture(9, 0x30000, 8), 501, 0, 0, 0, true},
      {"negative width", picture(-9, 9, 8), 0, 1, 19, 8, false},
      {"top-down", picture(9, -9, 8), 0, 1, 19, 8, false},
      {"largest", picture(INT_MAX, INT_MAX, 24), 503, 1, 19, 1, false},
      {"wraps in 32 bits", picture(65'535, 65'537, 8), 503, 1, 1, 1, false},
      {"table of 4 GB", picture(9, 9, 8, 40, 0, 1 << 30), 503, 1, 1, 1, false},
  };
  for (const Input& input : inputs) {
    SCOPED_TRACE(input.what);
    HGLOBAL dib = input.dib.get();
    const auto expect = [](const Outcome& outcome, int told, int code, bool has_result) {
      EXPECT_EQ(outcome.told, told);
      EXPECT_EQ(ImgError(), code);
      EXPECT_EQ(!outcome.result.empty(), has_result);
      SetImgError(7);
    };
    const auto code_or = [](int code, int otherwise) { return code != 0 ? code : otherwise; };
    SetImgError(7);
    expect(rotate(dib, 17, 0), input.rotated, 7, input.rotated == 0);
    for (int direction : {0, 1})
      expect(skew(dib, direction, 2), code_or(input.skewed, kUntouched), input.skewed, input.skewed == 0);
    for (int mode : {0, 1}) {
      expect(scale(dib, mode, 5, 5), kUntouched, code_or(input.scaled, 7), input.scaled == 0);
      expect(magnify(dib, mode, 2), kUntouched, code_or(input.magnified, 7), input.magnified == 0);
    }
    expect(cut(dib, 5), kUntouched, 7, input.is_cut);
  }
}

TEST(Geometry, TellsThatAHandleIsDeadAndDoesWithoutVariables) {
  HGLOBAL dead = dead_handle();
  EXPECT_EQ(rotate(dead, 0, 0).told, 505);
  EXPECT_EQ(skew(dead, 0, 0).told, 17);
  EXPECT_EQ(ImgError(), 17);
  EXPECT_TRUE(scale(dead, 0, 5, 5).result.empty());
  EXPECT_EQ(ImgError(), 1);
  SetImgError(7);
  EXPECT_TRUE(magnify(dead, 0, 1).result.empty());
  EXPECT_EQ(ImgError(), 1);
  EXPECT_TRUE(cut(dead, 1).result.empty());
  EXPECT_EQ(RotateDIB(dead, 0, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(SkewDIB(dead, 0, 0, nullptr, nullptr), nullptr);
}

}  // namespace
