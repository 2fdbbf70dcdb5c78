// TGA files through the entry points of their modules.
#include "codecs/codec.h"

using namespace test;

namespace {

class TgaTest : public CodecTest {
 protected:
  TgaTest() : CodecTest(kTga) {}

  Bytes saved(const Bytes& dib, int run_length) {
    EXPECT_TRUE(modules().save_tga(path.c_str(), block_of(dib).get(), run_length, 0));
    return read_file(path);
  }
};

struct Variant {
  int kind = 2, depth = 24, descriptor = 0, width = 2, height = 1, map_first = 0, map_count = 0, map_depth = 0;

  Bytes file(const Bytes& map_and_pixels) const {
    const auto low = [](int value) { return static_cast<uint8_t>(value); };
    const auto high = [](int value) { return static_cast<uint8_t>(value >> 8); };
    Bytes bytes = {4, low(map_depth != 0), low(kind), low(map_first), high(map_first), low(map_count), high(map_count)};
    for (const uint8_t byte : {low(map_depth), uint8_t{0}, uint8_t{0}, uint8_t{0}, uint8_t{0}, low(width), high(width),
                               low(height), high(height), low(depth), low(descriptor)})
      bytes.push_back(byte);
    return joined(joined(bytes, {'n', 'a', 'm', 'e'}), map_and_pixels);
  }
};

Variant gray(int depth, int descriptor = 0, int height = 1) {
  return {.kind = 3, .depth = depth, .descriptor = descriptor, .height = height};
}
Variant mapped(int count, int entry_bits, int descriptor = 0, int first = 0, int depth = 8) {
  return {
      .kind = 1, .depth = depth, .descriptor = descriptor, .map_first = first, .map_count = count, .map_depth = entry_bits};
}
Variant packets(Variant variant) {
  variant.kind += 8;
  return variant;
}

TEST_F(TgaTest, SavedBytesAreAsOthersReadThem) {
  // Two rows: a run of three pixels and one more, above two and two. The bottom row comes first.
  const Bytes dib = with_header(header_for(4, 2, 24), {1, 2, 3, 4, 5, 6, 4, 5, 6, 7, 8, 9,  //
                                                       9, 9, 9, 9, 9, 9, 9, 9, 9, 7, 8, 9});
  EXPECT_EQ(saved(dib, 0), Bytes({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 2, 0, 24, 0,  //
                                  1, 2, 3, 4, 5, 6, 4, 5, 6, 7, 8, 9, 9, 9, 9, 9, 9,  9, 9, 9, 9, 7, 8, 9}));
  const Bytes packets = saved(dib, 1);
  EXPECT_EQ(Bytes(packets.begin() + 18, packets.end()),
            Bytes({0, 1, 2, 3, 0x81, 4, 5, 6, 0, 7, 8, 9, 0x82, 9, 9, 9, 0, 7, 8, 9}));
  const Bytes blank = saved(with_header(header_for(130, 1, 24)), 1);
  EXPECT_EQ(Bytes(blank.begin() + 18, blank.end()), Bytes({0xFF, 0, 0, 0, 0x81, 0, 0, 0}));
  const Bytes with_footer = CodecTest::saved(dib);
  EXPECT_EQ(std::string(with_footer.end() - 26, with_footer.end()),
            std::string(8, '\0') + std::string("TRUEVISION-XFILE.", 18));

  const Bytes gray = saved(with_gray_ramp(with_header(header_for(3, 1, 8), joined(Bytes(256 * 4), {5, 5, 6, 0}))), 1);
  EXPECT_EQ(Bytes(gray.begin(), gray.begin() + 8), Bytes({0, 0, 11, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Bytes(gray.begin() + 18, gray.end()), Bytes({2, 5, 5, 6}));
}

TEST_F(TgaTest, VariantsLoad) {
  const struct {
    const char* name;
    Variant variant;
    Bytes data;
    int depth;
    std::string picture;
  } kVariants[] = {
      {"bottom up", gray(8, 0, 2), {1, 2, 3, 4}, 8, "030303 040404/010101 020202"},
      {"right to left", gray(8, 16, 2), {1, 2, 3, 4}, 8, "040404 030303/020202 010101"},
      {"top down", gray(8, 32, 2), {1, 2, 3, 4}, 8, "010101 020202/030303 040404"},
      {"both", {.descriptor = 48}, {1, 2, 3, 4, 5, 6}, 24, "060504 030201"},
      {"packets over lines", packets(gray(8, 32, 2)), {0x82, 7, 0, 9}, 8, "070707 070707/070707 090909"},
      {"15 bits", {.depth = 15, .descriptor = 1}, {0x1F, 0, 0x60, 0x7C}, 24, "0000FF FF1900"},
      {"16 bits without alpha", packets({.depth = 16}), {0x81, 0x1F, 0}, 24, "0000FF 0000FF"},
      {"16 bits with alpha", {.depth = 16, .descriptor = 1}, {0x1F, 0x80, 0x1F, 0}, 24, "0000FF FFFFFF"},
      {"16 bits with no alpha set", packets({.depth = 16, .descriptor = 1}), {0x81, 0x1F, 0}, 24, "0000FF 0000FF"},
      {"32 bits without alpha", {.depth = 32}, {1, 2, 3, 0, 4, 5, 6, 0}, 24, "030201 060504"},
      {"32 bits with alpha", {.depth = 32, .descriptor = 8}, {1, 2, 3, 255, 0, 0, 0, 51}, 24, "030201 CCCCCC"},
      {"32 bits with no alpha set", {.depth = 32, .descriptor = 8}, {1, 2, 3, 0, 4, 5, 6, 0}, 24, "030201 060504"},
      {"grey with alpha", gray(16, 8), {9, 255, 0, 51}, 8, "090909 CCCCCC"},
      {"grey with no alpha set", gray(16, 8), {9, 0, 7, 0}, 8, "090909 070707"},
      {"an unused map", {.kind = 3, .depth = 8, .map_count = 1, .map_depth = 15}, {77, 77, 8, 9}, 8, "080808 090909"},
      {"two colours", mapped(2, 24), {1, 2, 3, 4, 5, 6, 0, 1}, 1, "030201 060504"},
      {"three colours", packets(mapped(3, 16)), {0, 0, 31, 0, 0, 124, 0x81, 2}, 4, "FF0000 FF0000"},
      {"three colours, two of them used", mapped(3, 16), {0, 0, 31, 0, 0, 124, 0, 1}, 4, "000000 0000FF"},
      {"a first index", mapped(1, 24, 0, 20), {1, 2, 3, 20, 0}, 8, "030201 000000"},
      {"an index outside", mapped(2, 24), {1, 2, 3, 4, 5, 6, 1, 19}, 8, "060504 000000"},
      {"packets with an index outside", packets(mapped(2, 24)), {1, 2, 3, 4, 5, 6, 0x81, 15}, 4, "000000 000000"},
      {"a map with alpha", mapped(2, 32, 8), {1, 2, 3, 255, 0, 0, 0, 51, 0, 1}, 1, "030201 CCCCCC"},
      {"a map with no alpha set", mapped(1, 32, 8), {1, 2, 3, 0, 0, 0}, 1, "030201 030201"},
      {"indices of 16 bits", mapped(1, 24, 0, 300, 16), {1, 2, 3, 44, 1, 45, 1}, 24, "030201 000000"},
  };
  for (const auto& [name, variant, data, depth, picture] : kVariants) {
    SCOPED_TRACE(name);
    const Bytes dib = load_file(variant.file(data));
    ASSERT_EQ(status, IMG_OK);
    EXPECT_EQ(header_of(dib).biBitCount, depth);
    EXPECT_EQ(picture_of(dib), picture);
  }
}

TEST_F(TgaTest, TheExtensionAreaSaysWhatAlphaIs) {
  const std::string opaque = "030201 1E140A", straight = "030201 D2D0CE", premultiplied = "030201 EAE0D6";
  const Bytes picture = Variant{.depth = 32, .descriptor = 8}.file({1, 2, 3, 255, 10, 20, 30, 51});
  Bytes extension(495), footer(8);
  extension[0] = 0xEF, extension[1] = 1;  // its size
  footer[0] = static_cast<uint8_t>(picture.size());
  for (const char c : std::string("TRUEVISION-XFILE.", 18)) footer.push_back(static_cast<uint8_t>(c));
  for (const auto& [kind, expected] :
       {std::pair(0, opaque), {1, opaque}, {2, opaque}, {3, straight}, {4, premultiplied}, {5, straight}}) {
    extension[494] = static_cast<uint8_t>(kind);
    Bytes file = joined(joined(picture, extension), footer);
    EXPECT_EQ(picture_of(load_file(file)), expected) << kind;
    file[file.size() - 26] = 0;
    EXPECT_EQ(picture_of(load_file(file)), straight);
  }
  footer[3] = 0xFF;
  EXPECT_EQ(picture_of(load_file(joined(picture, footer))), straight);
}

TEST_F(TgaTest, RefusesWhatIsNotRead) {
  const Bytes data(1000, 0);
  const Variant refused[] = {{.kind = 0},
                             {.kind = 4},
                             {.kind = 32},
                             {.depth = 8},
                             {.depth = 17},
                             {.descriptor = 0x40},
                             {.descriptor = 0x80},
                             {.descriptor = 9},
                             {.width = 0},
                             {.height = 0},
                             {.kind = 1, .depth = 8},
                             mapped(0, 24),
                             mapped(2, 24, 0, 0, 24),
                             {.map_count = 2, .map_depth = 8},
                             mapped(400, 24),
                             gray(24),
                             {.width = 334},
                             packets({.width = 65'535, .height = 65'535})};
  for (int i = 0; const Variant& variant : refused) expect_refused(variant.file(data), IMG_E_FORMAT, std::to_string(i++));
}

}  // namespace
