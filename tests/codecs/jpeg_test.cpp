// JPEG files through the entry points of their modules.
#include <algorithm>

#include "codecs/codec.h"

using namespace test;

namespace {

class JpegTest : public CodecTest {
 protected:
  JpegTest() : CodecTest(kJpeg) {}

  Bytes saved(const Bytes& dib, int quality = 100) {
    EXPECT_TRUE(modules().save_jpeg(path.c_str(), block_of(dib).get(), quality));
    return read_file(path);
  }
};

// A picture whose colours change slowly, as JPEG likes it. Greys run backwards in the colour table.
Bytes smooth(int width, int height, int depth, bool is_gray) {
  Bytes rest;
  const int last = (1 << depth) - 1;
  for (int i = last; depth <= 8 && i >= 0; --i) {
    const auto level = uint8_t(i * 255 / last);
    rest.insert(rest.end(), {level, is_gray ? level : uint8_t(128), level, 0});
  }
  for (int y = 0; y < height; ++y)
    for (int i = 0; i < static_cast<int>(stride_of(width, depth)); ++i)
      rest.push_back(uint8_t(depth == 1 ? 0 : depth == 4 ? y / 2 * 0x11 : y * 2 + i / 2));
  return with_header(header_for(width, height, depth), rest);
}

TEST_F(JpegTest, PicturesComeBackMuchAsTheyWereSaved) {
  for (const int depth : {1, 4, 8, 24})
    for (const int width : {1, 9, 83})
      for (const bool is_gray : {false, true}) {
        const Bytes dib = smooth(width, 21, depth, is_gray);
        ASSERT_TRUE(save(dib));
        const Bytes loaded = load();
        EXPECT_LE(largest_difference(loaded, dib), is_gray && depth <= 8 ? 2 : 8) << depth << ' ' << width << ' ' << is_gray;
        EXPECT_EQ(header_of(loaded).biBitCount, is_gray && depth <= 8 ? 8 : 24);
      }
}

TEST_F(JpegTest, ResolutionsAreKeptAsNearAsTheyCanBeStated) {
  const struct {
    int x, y, loaded_x, loaded_y;
  } cases[] = {{11811, 7874, 11811, 7874},
               {5000, 10000, 5000, 10000},
               {5001, 10000, 5000, 10000},
               {11811, 0, 0, 0},
               {-1, -1, 0, 0},
               {2000000000, 2000000000, 0, 0}};
  for (const auto& c : cases) {
    ASSERT_TRUE(save(with_header_changed(smooth(8, 8, 24, false), [&](BITMAPINFOHEADER& header) {
      header.biXPelsPerMeter = c.x, header.biYPelsPerMeter = c.y;
    })));
    const BITMAPINFOHEADER loaded = header_of(load());
    EXPECT_EQ(loaded.biXPelsPerMeter, c.loaded_x) << c.x;
    EXPECT_EQ(loaded.biYPelsPerMeter, c.loaded_y) << c.y;
  }
}

TEST_F(JpegTest, QualityIsKeptInItsRange) {
  const Bytes dib = noise(32, 32, 24), lowest = saved(dib, 1), highest = saved(dib, 100);
  EXPECT_LT(lowest.size() * 3, highest.size());
  EXPECT_EQ(saved(dib, -5), lowest);
  EXPECT_EQ(saved(dib, 1000), highest);
}

// Where the two bytes of a marker stand.
std::ptrdiff_t marker(const Bytes& file, uint8_t code) {
  const Bytes wanted{0xFF, code};
  return std::search(file.begin(), file.end(), wanted.begin(), wanted.end()) - file.begin();
}
constexpr uint8_t kFrame = 0xC0, kScan = 0xDA, kTables = 0xDB, kProgressiveFrame = 0xC2;

TEST_F(JpegTest, LostPixelsAreAFailureAndStrayBytesAreNot) {
  const Bytes good = saved(smooth(83, 21, 24, false), 75), whole = load();
  ASSERT_FALSE(whole.empty());
  Bytes file = good;
  file.insert(file.begin() + marker(good, kTables), {0, 0, 0});
  EXPECT_EQ(load_file(file), whole);
  file = good;
  const auto pixels = static_cast<size_t>(marker(good, kScan)) + 40;
  file[pixels] = 0xFF, file[pixels + 1] = 0xD9;  // the end, too soon
  EXPECT_EQ(load_file(file), Bytes());
  for (const auto& [offset, value] : {std::pair{4, 12}, {5, 0xFF}, {9, 2}}) {  // bits per sample, height, components
    file = good;
    file[static_cast<size_t>(marker(good, kFrame) + offset)] = static_cast<uint8_t>(value);
    EXPECT_EQ(load_file(file), Bytes()) << offset;
  }
}

constexpr uint8_t kSequential = 0xC9, kProgressive = 0xCA;  // both in arithmetic code

// A grey square in arithmetic code of no bytes, which reads as zeros: after the first scan one for each coefficient from 1 on.
Bytes square_without_data(uint8_t frame, int size, int scans) {
  const auto high = static_cast<uint8_t>(size >> 8), low = static_cast<uint8_t>(size);
  const auto last = static_cast<uint8_t>(frame == kProgressive ? 0 : 63);
  Bytes file = joined({0xFF, 0xD8, 0xFF, kTables, 0, 67, 0}, Bytes(64, 1));
  file = joined(file, {0xFF, frame, 0, 11, 8, high, low, high, low, 1, 1, 0x11, 0, 0xFF, kScan, 0, 8, 1, 1, 0, 0, last, 0});
  for (uint8_t i = 1; i < scans; ++i) file = joined(file, {0xFF, kScan, 0, 8, 1, 1, 0, i, i, 0});
  return joined(file, {0xFF, 0xD9});
}

// The pixels of a grey block as three components, each with a scan of its own.
Bytes in_three_scans(const Bytes& gray) {
  const auto frame = gray.begin() + marker(gray, kFrame), scan = gray.begin() + marker(gray, kScan);
  Bytes file(gray.begin(), frame);
  file = joined(file, {0xFF, kFrame, 0, 17, 8, 0, 8, 0, 8, 3, 1, 0x11, 0, 2, 0x11, 0, 3, 0x11, 0});
  constexpr int kGrayFrame = 13, kComponent = 5;  // bytes of the frame, and where a scan names its component
  file.insert(file.end(), frame + kGrayFrame, scan);
  for (uint8_t component = 1; component <= 3; ++component) {
    Bytes one(scan, gray.end() - 2);
    one[kComponent] = component;
    file = joined(file, one);
  }
  return joined(file, {0xFF, 0xD9});
}

// The last bytes are the marker that says where the file ends. Scans of which only the end is missing are whole.
TEST_F(JpegTest, TheEndMarkerMayBeMissingWhereItLosesNothing) {
  const Bytes good = saved(smooth(83, 21, 24, false), 75), whole = load();
  for (const size_t missing : {1, 2}) EXPECT_EQ(load_file(first_bytes(good, good.size() - missing)), whole) << missing;
  EXPECT_EQ(load_file(first_bytes(good, good.size() - 4)), Bytes());
  Bytes file = saved(smooth(8, 8, 8, true));
  file[static_cast<size_t>(marker(file, kFrame)) + 1] = kProgressiveFrame;
  file[static_cast<size_t>(marker(file, kScan)) + 8] = 0;  // the first scan has the first coefficient alone
  file.resize(file.size() - 2);
  EXPECT_EQ(load_file(file), Bytes()) << "no scan of the other coefficients";
  file.insert(file.end(), {0xFF, kScan, 0, 8, 1, 1, 0, 1, 63, 0, 0xAF});
  EXPECT_FALSE(load_file(file).empty());
  const Bytes three_scans = in_three_scans(saved(smooth(8, 8, 8, true)));
  EXPECT_FALSE(load_file(three_scans).empty());
  EXPECT_EQ(load_file(first_bytes(three_scans, three_scans.size() - 2)), Bytes()) << "a scan for each component";
  file = square_without_data(kSequential, 64, 1);
  EXPECT_FALSE(load_file(file).empty());
  EXPECT_EQ(load_file(first_bytes(file, file.size() - 2)), Bytes()) << "arithmetic code";
}

// A progressive picture of one block: after the first scan one for each of its 63 other coefficients, and again to refine.
TEST_F(JpegTest, ScansMayBeManyButNotTooMany) {
  Bytes file = saved(smooth(8, 8, 8, true));
  file[static_cast<size_t>(marker(file, kFrame)) + 1] = kProgressiveFrame;
  const auto last_coefficient = static_cast<size_t>(marker(file, kScan)) + 8;
  file[last_coefficient] = 0;
  file.resize(file.size() - 2);
  for (const int bits : {0x01, 0x10}) {
    for (uint8_t i = 1; i <= 63; ++i) file.insert(file.end(), {0xFF, kScan, 0, 8, 1, 1, 0, i, i, uint8_t(bits), 0xAF});
    Bytes ended = file;
    ended.insert(ended.end(), {0xFF, 0xD9});
    EXPECT_EQ(load_file(ended).empty(), bits == 0x10);
  }
}

TEST_F(JpegTest, SmallFilesDoNotTakeMuchTimeOrMemory) {
  EXPECT_FALSE(load_file(square_without_data(kSequential, 12'000, 1)).empty());
  EXPECT_EQ(load_file(square_without_data(kProgressive, 12'000, 1)), Bytes()) << "what it keeps until the last scan";
  EXPECT_FALSE(load_file(square_without_data(kProgressive, 9'000, 20)).empty());
  EXPECT_EQ(load_file(square_without_data(kProgressive, 9'000, 27)), Bytes()) << "pixels of all scans";
}

}  // namespace
