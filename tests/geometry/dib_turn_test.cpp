// Turns and mirrors through the exports, against a picture taken apart pixel by pixel.
#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <tuple>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

// Where pixels go, rows counted from the bottom: sides swapped or not, then counted from the other end or not.
struct Turn {
  const char* name;
  HGLOBAL(VORELCALL* call)(HGLOBAL);
  bool swaps_sides, mirrors_x, mirrors_y;
};

const Turn kTurns[] = {{"RotateDIB90", RotateDIB90, true, false, true},
                       {"RotateDIB180", RotateDIB180, false, true, true},
                       {"RotateDIB270", RotateDIB270, true, true, false},
                       {"FlipDIBVertical", FlipDIBVertical, false, false, true},
                       {"FlipDIBHorizontal", FlipDIBHorizontal, false, true, false}};

// RotateDIB270 puts its pixels one column to the right.
std::pair<int, int> target(const Turn& turn, int x, int y, int width, int height) {
  if (turn.swaps_sides) return {turn.mirrors_x ? height - y : y, turn.mirrors_y ? width - 1 - x : x};
  return {turn.mirrors_x ? width - 1 - x : x, turn.mirrors_y ? height - 1 - y : y};
}

// Widths and heights that leave part-filled bytes and words, fill them exactly, and cross the kernels' blocks.
constexpr std::pair<int, int> kSizes[] = {{1, 1},   {3, 2},   {7, 9},   {8, 8},    {16, 4},
                                          {31, 33}, {32, 64}, {65, 40}, {130, 70}, {600, 17}};

class Turning : public testing::TestWithParam<std::tuple<Turn, int>> {};

// The pixels of a result as they must lie in memory, spare bytes included: pixel by pixel at its column and row, even where the
// column is past the row's end.
Bytes expected_pixels(const Turn& turn, const Bytes& source) {
  const BITMAPINFOHEADER header = header_of(source);
  const int width = header.biWidth, height = header.biHeight, depth = header.biBitCount;
  const size_t stride = stride_of(turn.swaps_sides ? height : width, depth);
  Bytes pixels(stride * static_cast<size_t>(turn.swaps_sides ? width : height) + 4);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const auto [to_x, to_y] = target(turn, x, y, width, height);
      const size_t first_bit = static_cast<size_t>(to_y) * stride * 8 + static_cast<size_t>(to_x * depth);
      const uint32_t value = pixel(source, x, y);
      for (int bit = 0; bit < depth; ++bit) {
        const size_t at = first_bit + static_cast<size_t>(bit);
        pixels[at / 8] |= static_cast<uint8_t>((value >> (depth - 1 - bit) & 1) << (7 - at % 8));
      }
    }
  return pixels;
}

TEST_P(Turning, PutsEveryPixelInItsPlaceAndNothingElsewhere) {
  const auto& [turn, depth] = GetParam();
  for (const auto& [width, height] : kSizes) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    const Bytes source = noise(width, height, depth);
    const Block block = block_of(source);
    const Bytes result = bytes_of(Block(turn.call(block.get())).get());
    ASSERT_EQ(bytes_of(block.get()), source) << "the source is only read";

    BITMAPINFOHEADER header = header_of(source);
    if (turn.swaps_sides) {
      std::swap(header.biWidth, header.biHeight);
      std::swap(header.biXPelsPerMeter, header.biYPelsPerMeter);
      header.biSizeImage = static_cast<uint32_t>(stride_of(height, depth) * static_cast<size_t>(width));
    }
    const size_t head = 40 + (depth <= 8 ? size_t{4} << depth : 0);
    Bytes expected = with_header(header, Bytes(source.begin() + 40, source.begin() + static_cast<std::ptrdiff_t>(head)));
    const Bytes pixels = expected_pixels(turn, source);
    expected.insert(expected.end(), pixels.begin(), pixels.end());
    if (turn.call == FlipDIBVertical) {  // copies the padding with the rows
      const size_t stride = stride_of(width, depth);
      for (size_t y = 0; y < static_cast<size_t>(height); ++y)
        std::memcpy(&expected[expected.size() - 4 - (y + 1) * stride], &source[head + y * stride], stride);
    }
    EXPECT_TRUE(result == expected);
  }
}

INSTANTIATE_TEST_SUITE_P(AllDepths, Turning, testing::Combine(testing::ValuesIn(kTurns), testing::Values(1, 4, 8, 24)),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).name) + "_" + std::to_string(std::get<1>(test.param));
                         });

Bytes rows_of(const Bytes& dib, size_t colors) {
  return {dib.begin() + 40 + static_cast<std::ptrdiff_t>(colors) * 4, dib.end()};
}

Bytes turned(HGLOBAL(VORELCALL* turn)(HGLOBAL), const Bytes& dib) {
  return bytes_of(Block(turn(block_of(dib).get())).get());
}

TEST(TurnedBytes, AreTheseForASmallPicture) {
  // Seen from the top: A B C D over E F G H.
  BITMAPINFOHEADER header = header_for(4, 2, 24);
  Bytes rows;
  for (char c : std::string("EEEFFFGGGHHHAAABBBCCCDDD")) rows.push_back(static_cast<uint8_t>(c));
  const Bytes dib = with_header(header, rows);
  const auto text = [&](HGLOBAL(VORELCALL * turn)(HGLOBAL)) {
    std::string seen;
    for (uint8_t byte : rows_of(turned(turn, dib), 0)) seen += byte == 0 ? '.' : static_cast<char>(byte);
    return seen;
  };
  EXPECT_EQ(text(RotateDIB90), "HHHDDD..GGGCCC..FFFBBB..EEEAAA......") << "clockwise: EA / FB / GC / HD from the top";
  EXPECT_EQ(text(RotateDIB270), "...AAAEEE..BBBFFF..CCCGGG..DDDHHH...") << "one column to the right";
  EXPECT_EQ(text(RotateDIB180), "DDDCCCBBBAAAHHHGGGFFFEEE....");
  EXPECT_EQ(text(FlipDIBVertical), "AAABBBCCCDDDEEEFFFGGGHHH....");
  EXPECT_EQ(text(FlipDIBHorizontal), "HHHGGGFFFEEEDDDCCCBBBAAA....");
}

TEST(TurnedBytes, AreTheseAtOneBit) {
  const Bytes dib = with_header(header_for(10, 1, 1), {0, 0, 0, 0, 9, 9, 9, 0, 0b10000001, 0b11111111, 0xFF, 0xFF});
  EXPECT_EQ(rows_of(turned(FlipDIBHorizontal, dib), 2), (Bytes{0b11100000, 0b01000000, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(rows_of(turned(RotateDIB180, dib), 2), (Bytes{0b11100000, 0b01000000, 0, 0, 0, 0, 0, 0}));
}

TEST(OtherDepths, GiveEmptyPicturesButMirrorWholeRows) {
  for (int depth : {0, 2, 16, 32}) {
    const Bytes dib = with_header(header_for(5, 3, depth), Bytes(stride_of(5, depth) * 3, 0xAB));
    for (auto* turn : {RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBHorizontal}) {
      const Bytes result = turned(turn, dib);
      EXPECT_EQ(Bytes(result.begin() + 40, result.end()), Bytes(result.size() - 40)) << depth;
    }
  }
  const Bytes dib = noise(5, 3, 16);
  const Bytes result = turned(FlipDIBVertical, dib);
  EXPECT_EQ(Bytes(result.begin() + 40, result.begin() + 52), Bytes(dib.begin() + 64, dib.begin() + 76));
}

// Rows are as long as all planes together, pixels as one plane has them.
TEST(Planes, LengthenTheRows) {
  BITMAPINFOHEADER header = header_for(4, 2, 8);
  header.biPlanes = 2;
  header.biClrUsed = 1;
  const Bytes dib = with_header(header, {0, 0, 0, 0, 1, 2, 3, 4, 9, 9, 9, 9, 5, 6, 7, 8, 9, 9, 9, 9});
  EXPECT_EQ(rows_of(turned(FlipDIBHorizontal, dib), 1), (Bytes{4, 3, 2, 1, 0, 0, 0, 0, 8, 7, 6, 5, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(rows_of(turned(RotateDIB90, dib), 1), (Bytes{4, 8, 0, 0, 3, 7, 0, 0, 2, 6, 0, 0, 1, 5, 0, 0, 0, 0, 0, 0}));
}

TEST(LongerHeaders, AreCarriedOver) {
  BITMAPINFOHEADER header = header_for(4, 1, 24);
  header.biSize = 48;
  const Bytes result =
      turned(RotateDIB180, with_header(header, {1, 2, 3, 4, 5, 6, 7, 8, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4}));
  EXPECT_EQ(rows_of(result, 0), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 4, 4, 4, 3, 3, 3, 2, 2, 2, 1, 1, 1, 0, 0, 0, 0}));
}

TEST(DamagedDibs, AreCompletedOrRefused) {
  const auto expect_result = [](HGLOBAL dib, bool is_there) {
    for (const Turn& turn : kTurns) {
      SetImgError(7);
      EXPECT_EQ(static_cast<bool>(Block(turn.call(dib))), is_there) << turn.name;
      EXPECT_EQ(ImgError(), 7) << "no code is stored";
    }
  };
  struct Damage {
    const char* what;
    int width, height, depth, planes;
    uint32_t colors, size;
    size_t bytes_there;
    bool gives_result;
  };
  const Damage damages[] = {
      {"nothing behind the header", 9, 9, 8, 1, 0, 40, 0, true},
      {"table cut", 9, 9, 8, 1, 0, 40, 100, true},
      {"rows cut", 9, 9, 1, 1, 2, 40, 12, true},
      {"no pixels", 0, 0, 8, 1, 0, 40, 0, true},
      {"no rows", 5, 0, 1, 1, 0, 40, 0, true},
      {"no columns, most rows", 0, INT32_MAX, 8, 1, 0, 40, 0, true},
      {"no depth, largest", INT32_MAX, INT32_MAX, 0, 1, 0, 40, 0, true},
      {"no planes", 5, 5, 8, 0, 0, 40, 500, true},
      {"many planes", 5, 5, 1, 65'535, 0, 40, 0, true},
      {"longer header", 5, 5, 8, 1, 0, 64, 2000, true},
      {"short header", 5, 5, 8, 1, 0, 12, 2000, false},
      {"header of nothing", 5, 5, 8, 1, 0, 0, 2000, false},
      {"header of everything", 5, 5, 8, 1, 0, 0xFFFFFFFF, 2000, false},
      {"negative height", 5, -5, 8, 1, 0, 40, 2000, false},
      {"negative width", -5, 5, 8, 1, 0, 40, 2000, false},
      {"wraps in 32 bits", 65'536, 65'536, 8, 1, 0, 40, 2000, false},
      {"widest", INT32_MAX, INT32_MAX, 65'535, 65'535, 0, 40, 2000, false},
      {"table of 4 GB", 5, 5, 8, 1, 1u << 30, 40, 2000, false},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.what);
    BITMAPINFOHEADER header = header_for(damage.width, damage.height, damage.depth);
    header.biPlanes = static_cast<uint16_t>(damage.planes);
    header.biSize = damage.size;
    header.biClrUsed = damage.colors;
    expect_result(block_of(with_header(header, Bytes(damage.bytes_there, 0xFF))).get(), damage.gives_result);
  }
  const Block cut = block_of(Bytes(39, 40));
  for (HGLOBAL handle : {HGLOBAL{nullptr}, dead_handle(), cut.get()}) expect_result(handle, false);
}

TEST(DamagedDibs, MissingRowsAreEmptyInTheResult) {
  Bytes dib = noise(9, 4, 8);
  const Bytes whole = dib;
  dib.resize(40 + 1024 + 12 + 3);  // one row and three pixels
  const Bytes result = turned(FlipDIBVertical, dib);
  for (int x = 0; x < 9; ++x) {
    EXPECT_EQ(pixel(result, x, 3), pixel(whole, x, 0));
    EXPECT_EQ(pixel(result, x, 2), x < 3 ? pixel(whole, x, 1) : 0);
    EXPECT_EQ(pixel(result, x, 0), 0u);
  }
}

}  // namespace
