// Clipboard files: what is taken out of them and what is written.
#include <gtest/gtest.h>
#include <random>

#include <vorel32.h>

#include "win32/support/device_formats.h"
#include "win32/support/imports.h"

using namespace test;

namespace {

struct Entry {
  int format;
  Bytes data;
};

template <class Integer>
void put_at(Bytes& bytes, size_t offset, Integer value) {
  std::memcpy(&bytes[offset], &value, sizeof value);
}

constexpr size_t kHeader = 4, kEntry = 89, kLengthInEntry = 2, kOffsetInEntry = 6;

Bytes clipboard_file(const std::vector<Entry>& entries) {
  Bytes file(kHeader + kEntry * entries.size());
  put_at(file, 0, uint16_t{50'000});
  put_at(file, 2, static_cast<uint16_t>(entries.size()));
  for (size_t at = kHeader; const Entry& entry : entries) {
    put_at(file, at, static_cast<uint16_t>(entry.format));
    put_at(file, at + kLengthInEntry, static_cast<uint32_t>(entry.data.size()));
    put_at(file, at + kOffsetInEntry, static_cast<uint32_t>(file.size()));
    file = joined(file, entry.data);
    at += kEntry;
  }
  return file;
}

Bytes picture(int mode, int x, int y) {
  Bytes header(16, 0xEE);
  put_at(header, 0, mode);
  put_at(header, 4, x);
  put_at(header, 8, y);
  return joined(header, red_and_white_bits(Coordinates::kOwn));
}

class ClipboardFile : public DeviceFormat {
 protected:
  Object<HBITMAP> loaded(const Bytes& file, int format) const {
    return Object<HBITMAP>(static_cast<HBITMAP>(LoadClipboardFormat(put(file).c_str(), static_cast<WORD>(format))));
  }
  int code_of_loading(const Bytes& file, int format) const {
    SetImgError(kUntouched);
    EXPECT_FALSE(loaded(file, format)) << format;
    return ImgError();
  }
};

TEST_F(ClipboardFile, EveryKindOfEntryIsTakenOut) {
  const Bytes dib = quarters(20, 10, 24), raw = {5, 6, 7};
  const Bytes file = clipboard_file({{CF_TEXT, {'H', 'i', 0}},
                                     {CF_DIB, dib},
                                     {CF_BITMAP, raw},
                                     {CF_METAFILEPICT, picture(MM_TEXT, 30, 20)},
                                     {CF_DIB, {}}});
  EXPECT_EQ(largest_difference(dib_bytes(loaded(file, CF_DIB).get()), dib), 0) << "the first of two";
  const Object<HBITMAP> text = loaded(file, CF_TEXT), same(LoadASCIIIntoBitmap(block_of({'H', 'i', 0}).get()));
  EXPECT_EQ(picture_of(dib_bytes(text.get())), picture_of(dib_bytes(same.get())));
  const Object<HBITMAP> metafile = loaded(file, CF_METAFILEPICT);
  EXPECT_EQ(size_of(metafile.get()), std::pair(30, 20));
  EXPECT_EQ(quarters_of(dib_bytes(metafile.get())), "FF0000 FFFFFF FF0000 FFFFFF");
  const Block block(LoadClipboardFormat(put(file).c_str(), CF_BITMAP));
  EXPECT_EQ(bytes_of(block.get()), raw);
  int status = 0;
  EXPECT_EQ(largest_difference(bytes_of(Block(LoadImageIntoDIB(at("file").c_str(), 1, &status)).get()), dib), 0);
}

TEST_F(ClipboardFile, MetafilePicturesHaveTheSizeOfTheirMode) {
  const struct {
    int mode, x, y;
    std::pair<int, int> size;
  } rows[] = {{MM_HIMETRIC, 5080, 2540, {192, 96}}, {MM_TWIPS, 3, 4, {60, 80}}, {MM_ISOTROPIC, -1, -2, {96, 192}},
              {MM_ANISOTROPIC, 0, 7, {480, 480}},   {77, 3, 4, {480, 480}},     {MM_TEXT, -3, 4, {480, 480}}};
  for (const auto& row : rows) {
    const Object<HBITMAP> bitmap =
        loaded(clipboard_file({{CF_METAFILEPICT, picture(row.mode, row.x, row.y)}}), CF_METAFILEPICT);
    EXPECT_EQ(size_of(bitmap.get()), row.size) << row.mode;
  }
}

TEST_F(ClipboardFile, SavedOnesHoldADib) {
  for (const int depth : {1, 4, 8, 24}) {
    const Bytes dib = quarters(20, 10, depth);
    const Object<HBITMAP> bitmap(ConvertDIBToBitmap(block_of(dib).get()));
    ASSERT_TRUE(SaveClipboardFormat(at("a.clp").c_str(), bitmap.get()));
    const Bytes file = read_file(at("a.clp")), converted = dib_bytes(bitmap.get());
    EXPECT_EQ(file, clipboard_file({{CF_DIB, Bytes(converted.begin(), converted.end() - 10)}})) << "without the spare bytes";
    EXPECT_EQ(largest_difference(dib_bytes(loaded(file, CF_DIB).get()), dib), 0) << depth;
  }
  SetImgError(kUntouched);
  EXPECT_FALSE(SaveClipboardFormat(at("b.clp").c_str(), nullptr));
  EXPECT_EQ(ImgError(), kUntouched);
  const Object<HBITMAP> bitmap = counting_bitmap(8, 8, 1);
  EXPECT_FALSE(SaveClipboardFormat(at("no/such/folder/a.clp").c_str(), bitmap.get()));
  EXPECT_EQ(ImgError(), IMG_E_OPEN_FILE);
}

HGLOBAL WINAPI no_block(UINT, SIZE_T) { return nullptr; }

TEST_F(ClipboardFile, DamagedOnesHaveTheirCodes) {
  const Bytes whole =
      clipboard_file({{CF_TEXT, Bytes(20, 'x')}, {CF_METAFILEPICT, picture(MM_TEXT, 9, 9)}, {CF_PALETTE, {1}}});
  EXPECT_EQ(LoadClipboardFormat(at("missing").c_str(), CF_DIB), nullptr);
  EXPECT_EQ(ImgError(), IMG_E_OPEN_FILE);
  EXPECT_EQ(code_of_loading({}, CF_DIB), IMG_E_FORMAT);
  EXPECT_EQ(code_of_loading({'B', 'M', 1, 0}, CF_DIB), IMG_E_FORMAT);
  EXPECT_EQ(code_of_loading(clipboard_file({}), CF_DIB), IMG_E_CLIPBOARD_FORMAT);
  for (const int format : {0, int{CF_DIB}, int{CF_BITMAP}, int{CF_PALETTE}, 0xFFFF})
    EXPECT_EQ(code_of_loading(whole, format), IMG_E_CLIPBOARD_FORMAT) << format;
  EXPECT_EQ(code_of_loading(Bytes(whole.begin(), whole.begin() + kHeader + 88), CF_TEXT), IMG_E_CLIPBOARD_FORMAT);

  const auto changed = [&](size_t offset, uint32_t value) {
    Bytes file = whole;
    put_at(file, offset, value);
    return file;
  };
  {
    const Replacement replaced("GlobalAlloc", no_block);  // nothing is asked for that the file does not have
    for (const uint32_t length : {uint32_t{10'000}, 0x7FFFFFFFu, 0xFFFFFFFFu})
      EXPECT_EQ(code_of_loading(changed(kHeader + kLengthInEntry, length), CF_TEXT), IMG_E_FILE_IO) << length;
    EXPECT_EQ(code_of_loading(changed(kHeader + kOffsetInEntry, 0xFFFFFFFF), CF_TEXT), IMG_E_FILE_IO);
    EXPECT_EQ(code_of_loading(whole, CF_TEXT), IMG_E_MEMORY);
  }
  EXPECT_EQ(code_of_loading(changed(kHeader + kEntry + kLengthInEntry, 15), CF_METAFILEPICT), IMG_E_FILE_IO);
  EXPECT_EQ(code_of_loading(changed(kHeader + kEntry + kLengthInEntry, 20), CF_METAFILEPICT), kUntouched) << "no metafile";
  EXPECT_EQ(code_of_loading(clipboard_file({{CF_DIB, Bytes(40)}}), CF_DIB), IMG_E_CREATE_BITMAP);
  EXPECT_EQ(code_of_loading(clipboard_file({{CF_DIB, {}}}), CF_DIB), kUntouched);
}

TEST_F(ClipboardFile, HostileOnesLeaveNothing) {
  const Bytes original =
      clipboard_file({{CF_DIB, quarters(9, 9, 8)}, {CF_METAFILEPICT, picture(MM_ISOTROPIC, -1, -1)}, {CF_TEXT, {'x', 0}}});
  std::mt19937 random(5);
  const Replacement replaced("CreateBitmap", low_bitmap);
  most_rows = 500;
  constexpr uint32_t kValues[] = {0, 1, 8, 40, 0x7FFF, 0xFFFF, 0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  const auto attack = [&](int count) {
    for (int i = 0; i < count; ++i) {
      Bytes file = original;
      const size_t header = kHeader + 3 * kEntry + 40;
      for (size_t changes = 1 + random() % 3; changes > 0; --changes)
        put_at(file, random() % header, kValues[random() % std::size(kValues)]);
      if (random() % 4 == 0) file.resize(random() % file.size());
      for (const int format : {CF_DIB, CF_METAFILEPICT, CF_TEXT}) loaded(file, format);
    }
  };
  attack(30);
  const Holdings before;
  attack(300);
  before.expect_no_more();
}

}  // namespace
