// Black and white, and few colours: pictures worked out by hand, agreement with the same one pixel at a time, and refusals.
#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <tuple>

#include <vorel32.h>

#include "support/dib.h"
#include "support/plain_bilevel.h"

using namespace test;

namespace {

constexpr WORD kUntouched = 77;

struct Dither {
  const char* name;
  HGLOBAL(VORELCALL* call)(HGLOBAL, int);
  PlainDither kind;
  int null_code, dead_code, most_bits;
};

const Dither kDithers[] = {{"DitherFS4", DitherFS4, PlainDither::floyd_steinberg, 8, 17, 8},
                           {"DitherJJN", DitherJJN, PlainDither::jarvis, 17, 1, 8},
                           {"DitherSmooth", DitherSmooth, PlainDither::smooth, 17, 1, 4},
                           {"DitherSharp", DitherSharp, PlainDither::sharp, 17, 1, 4}};

// An 8-bit picture of greys, or a 24-bit one of blue, green, red; rows from the bottom.
Bytes picture(int width, int depth, const std::vector<Bytes>& rows) {
  Bytes rest;
  for (int i = 0; depth == 8 && i < 1024; ++i) rest.push_back(static_cast<uint8_t>(i % 4 == 3 ? 0 : i / 4));
  for (Bytes row : rows) {
    row.resize(stride_of(width, depth));
    rest = joined(rest, row);
  }
  return with_header(header_for(width, static_cast<int>(rows.size()), depth), rest);
}

Bytes dithered(const Dither& dither, const Bytes& dib, int bits) {
  return bytes_of(Block(dither.call(block_of(dib).get(), bits)).get());
}

Bytes halftone(const Bytes& dib, int method, int brightness) {
  return bytes_of(Block(Halftone(block_of(dib).get(), static_cast<WORD>(method), brightness, nullptr)).get());
}

// Pixels from left to right, rows from the bottom: "010 011".
std::string pixels(const Bytes& dib) {
  const BITMAPINFOHEADER header = header_of(dib);
  std::string text;
  for (int y = 0; y < header.biHeight; ++y) {
    if (y > 0) text += ' ';
    for (int x = 0; x < header.biWidth; ++x) text += "0123456789ABCDEF"[pixel(dib, x, y) & 15];
  }
  return text;
}

// One error alone, which the rows that follow show two rows below: what is added makes the others white without a remainder.
const std::vector<Bytes> kOneError = {{100, 241, 245}, {241, 245, 249}, {245, 124, 0}};

TEST(Dithering, GivesThePixelsWorkedOutByHand) {
  const auto& [floyd, jarvis, smooth, sharp] = kDithers;
  const Bytes gray = picture(3, 8, {{128, 128, 128}, {128, 128, 128}});
  EXPECT_EQ(pixels(dithered(floyd, gray, 1)), "010 011");
  EXPECT_EQ(pixels(dithered(jarvis, picture(3, 8, {{128, 128, 128}}), 1)), "010");
  EXPECT_EQ(pixels(dithered(jarvis, picture(3, 8, kOneError), 1)), "011 111 100");
  for (const Dither& dither : {smooth, sharp})
    EXPECT_EQ(pixels(dithered(dither, picture(4, 8, {{100, 100, 100, 100}}), 1)), "1001") << dither.name;
  EXPECT_EQ(pixels(dithered(floyd, picture(1, 24, {{0, 95, 125}, {0, 95, 125}}), 4)), "0 C") << "green takes red's error";
  const Bytes blue = picture(2, 24, {{255, 0, 0, 255, 0, 0}});
  EXPECT_EQ(pixels(dithered(floyd, blue, 8)), "33");
  EXPECT_EQ(pixels(dithered(jarvis, blue, 8)), "34") << "blue spills into green";
}

TEST(Dithering, WritesTheFixedTables) {
  const auto entry = [](const Bytes& dib, int i) {
    const auto at = dib.begin() + 40 + 4 * i;
    return Bytes(at, at + 4);
  };
  const auto of = [](int bits) { return dithered(kDithers[0], noise(9, 9, 24), bits); };
  EXPECT_EQ(entry(of(1), 0), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(entry(of(1), 1), (Bytes{255, 255, 255, 0}));
  EXPECT_EQ(entry(of(4), 6), (Bytes{255, 255, 0, 0}));
  EXPECT_EQ(entry(of(4), 9), (Bytes{0, 0, 255, 255}));
  EXPECT_EQ(entry(of(8), 0xFF), (Bytes{255, 252, 252, 0}));
  EXPECT_EQ(entry(of(8), 0x25), (Bytes{85, 36, 36, 0}));
}

TEST(Halftone, GivesThePixelsWorkedOutByHand) {
  const Bytes row = {0, 128, 129, 255};
  EXPECT_EQ(pixels(halftone(picture(4, 8, {row}), 0, 0)), "0011");
  EXPECT_EQ(pixels(halftone(picture(4, 8, {row}), 0, 255)), "1111");
  EXPECT_EQ(pixels(halftone(picture(4, 8, {row}), 0, -255)), "0000");
  EXPECT_EQ(pixels(halftone(picture(3, 8, kOneError), 1, 0)), "011 111 110") << "unlike DitherJJN's";
  const std::string all(16, '1'), last = "0" + all.substr(1);
  std::string tile;
  for (int y = 0; y < 32; ++y) tile += (y % 16 == 15 ? last + last : all + all) + (y < 31 ? " " : "");
  EXPECT_EQ(pixels(halftone(picture(32, 8, std::vector<Bytes>(32, Bytes(32, 255))), 2, 0)), tile);
  EXPECT_EQ(pixels(halftone(picture(4, 24, std::vector<Bytes>(6, Bytes(12, 255))), 0, 0)), "1111 1111 0000 0000 0000 0000")
      << "a row of the result begins three rows after the last";
}

// Sizes, depths, tables that are short, and blocks that end within the table, within the rows, or after more than them.
std::vector<Bytes> sources() {
  std::vector<Bytes> result;
  for (int depth : {4, 8, 24})
    for (const auto& [width, height] :
         {std::pair{1, 1}, {1, 9}, {9, 1}, {2, 2}, {3, 5}, {33, 17}, {64, 8}, {30, 5}, {101, 40}}) {
      const Bytes dib = noise(width, height, depth);
      result.push_back(dib);
      if (width < 30) continue;
      if (depth < 24)
        for (size_t colors : {1u, 7u}) result.push_back(with_colors(dib, colors));
      for (size_t kept : {size_t{40}, size_t{55}, dib.size() / 2, dib.size() - 1})
        result.emplace_back(dib.begin(), dib.begin() + static_cast<std::ptrdiff_t>(kept));
      result.push_back(joined(dib, Bytes(1000, 200)));
    }
  return result;
}

std::string name_of(const Bytes& dib) {
  const BITMAPINFOHEADER h = header_of(dib);
  return std::to_string(h.biWidth) + " x " + std::to_string(h.biHeight) + ", " + std::to_string(h.biBitCount) + " bits, " +
         std::to_string(h.biClrUsed) + " colours, " + std::to_string(dib.size()) + " bytes";
}

TEST(BiLevel, AgreesWithTheSameOnePixelAtATimeOnEveryBuild) {
  Digest digest;
  const auto expect = [&](const Bytes& result, const Bytes& plain, const std::string& what) {
    EXPECT_TRUE(result == plain) << what;
    digest.add(result);
  };
  for (const Bytes& dib : sources()) {
    for (const Dither& dither : kDithers)
      for (int bits : {1, 4, 8})
        if (bits <= dither.most_bits && bits < header_of(dib).biBitCount)
          expect(dithered(dither, dib, bits), plain_dither(dib, dither.kind, bits),
                 dither.name + std::string(" to ") + std::to_string(bits) + ": " + name_of(dib));
    for (int method : {0, 1, 2})
      for (int brightness : {0, 40, -77, 200, INT_MAX, INT_MIN})
        expect(halftone(dib, method, brightness), plain_halftone(dib, method, brightness),
               "method " + std::to_string(method) + ", " + std::to_string(brightness) + ": " + name_of(dib));
  }
  EXPECT_EQ(digest.value, 6569166750224067655u);
}

struct Outcome {
  int code, locks;
  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) { *out << outcome.code << ", " << outcome.locks << " locks"; }

// The code and the locks that stay, of a call that fails or, with code 0, does not. The picture is only read.
Outcome dither_outcome(const Dither& dither, HGLOBAL dib, int bits) {
  const Bytes before = bytes_of(dib);
  SetImgError(7);
  const Block result(dither.call(dib, bits));
  const Outcome outcome{ImgError(), dib == nullptr || before.empty() ? 0 : take_locks_back(dib)};
  EXPECT_EQ(static_cast<bool>(result), outcome.code == 0) << dither.name;
  EXPECT_TRUE(bytes_of(dib) == before);
  return outcome;
}

// The same, where success leaves the variable alone and nothing touches the thread's code.
Outcome halftone_outcome(HGLOBAL dib, int method) {
  const Bytes before = bytes_of(dib);
  SetImgError(7);
  WORD error = kUntouched;
  const Block result(Halftone(dib, static_cast<WORD>(method), 0, &error));
  const Outcome outcome{error == kUntouched ? 0 : error, before.empty() ? 0 : take_locks_back(dib)};
  EXPECT_EQ(static_cast<bool>(result), error == kUntouched);
  EXPECT_EQ(ImgError(), 7);
  EXPECT_TRUE(bytes_of(dib) == before);
  EXPECT_EQ(static_cast<bool>(Block(Halftone(dib, static_cast<WORD>(method), 0, nullptr))), outcome.code == 0);
  if (!before.empty()) take_locks_back(dib);
  return outcome;
}

TEST(Dithering, RefusesInOrderAndLeavesLocksBehind) {
  const auto picture_of_depth = [](int depth) { return block_of(with_header(header_for(9, 9, depth), Bytes(2000))); };
  for (const Dither& dither : kDithers) {
    SCOPED_TRACE(dither.name);
    for (int bits : {INT_MIN, -1, 0, 2, 3, 5, 16, 24, INT_MAX})
      for (HGLOBAL none : {HGLOBAL{nullptr}, dead_handle()})
        EXPECT_EQ(dither_outcome(dither, none, bits), (Outcome{8, 0})) << bits;
    EXPECT_EQ(dither_outcome(dither, picture_of_depth(24).get(), 8), (Outcome{dither.most_bits == 8 ? 0 : 8, 0}));
    EXPECT_EQ(dither_outcome(dither, nullptr, 1), (Outcome{dither.null_code, 0}));
    EXPECT_EQ(dither_outcome(dither, dead_handle(), 1), (Outcome{dither.dead_code, 0}));
    for (int depth : {0, 1, 4, 8, 16, 24, 32})
      for (int bits : {1, 4}) {
        const bool is_good = (depth == 4 || depth == 8 || depth == 24) && bits < depth;
        EXPECT_EQ(dither_outcome(dither, picture_of_depth(depth).get(), bits), is_good ? (Outcome{0, 0}) : (Outcome{20, 1}))
            << depth << " to " << bits;
      }
  }
}

// Pictures of a negative height fail when there is no turning back, and lock; a block too short for a header has no depth.
TEST(BiLevel, CopesWithSizesAndHeadersThatLie) {
  for (const auto& [width, height, dithered, halftoned] : {std::tuple{0, 9, Outcome{0, 0}, Outcome{0, 0}},
                                                           {9, 0, {0, 0}, {0, 0}},
                                                           {9, -9, {1, 1}, {1, 0}},
                                                           {INT_MAX, INT_MAX, {1, 0}, {1, 0}},
                                                           {1, INT_MAX, {1, 0}, {1, 0}}}) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    const Block dib = block_of(with_header(header_for(width, height, 8)));
    for (const Dither& dither : kDithers) EXPECT_EQ(dither_outcome(dither, dib.get(), 4), dithered) << dither.name;
    EXPECT_EQ(halftone_outcome(dib.get(), 1), halftoned);
  }
  const Block cut = block_of(Bytes(39, 40));
  for (const Dither& dither : kDithers) EXPECT_EQ(dither_outcome(dither, cut.get(), 1), (Outcome{20, 1})) << dither.name;
  EXPECT_EQ(halftone_outcome(cut.get(), 1), (Outcome{8, 1}));
  const Bytes dib = noise(30, 5, 8);
  const auto same = [&](auto change) {
    const Bytes changed = with_header_changed(dib, change);
    return dithered(kDithers[1], changed, 4) == plain_dither(changed, PlainDither::jarvis, 4) &&
           (header_of(changed).biSize != 40 || halftone(changed, 1, 9) == plain_halftone(changed, 1, 9));
  };
  EXPECT_TRUE(same([](BITMAPINFOHEADER& header) { header.biCompression = BI_RLE8; }));
  EXPECT_TRUE(same([](BITMAPINFOHEADER& header) { header.biSize = 64; }));
  EXPECT_TRUE(same([](BITMAPINFOHEADER& header) { header.biSizeImage = 7; }));
  EXPECT_TRUE(same([](BITMAPINFOHEADER& header) { header.biClrUsed = 300; }));
}

TEST(Halftone, RefusesInOrderAndLeavesLocksBehind) {
  EXPECT_EQ(halftone_outcome(nullptr, 0), (Outcome{8, 0}));
  for (int method : {3, 0xFFFF}) EXPECT_EQ(halftone_outcome(dead_handle(), method), (Outcome{8, 0}));
  EXPECT_EQ(halftone_outcome(dead_handle(), 2), (Outcome{1, 0}));
  for (int depth : {0, 1, 4, 8, 16, 24, 32})
    EXPECT_EQ(halftone_outcome(block_of(with_header(header_for(9, 9, depth), Bytes(2000))).get(), 1),
              depth == 4 || depth == 8 || depth == 24 ? (Outcome{0, 0}) : (Outcome{8, 1}))
        << depth;
}

}  // namespace
