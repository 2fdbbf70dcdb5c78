// Metafiles drawn, loaded and saved, and the picture on the clipboard.
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <thread>

#include <vorel32.h>

#include "win32/support/device_formats.h"
#include "win32/support/every_record.h"
#include "win32/support/imports.h"
#include "win32/support/message_box.h"

using namespace test;

namespace {

constexpr const char* kQuarters = "000000 FFFFFF FF0000 0000FF";
constexpr const char* kBilevelQuarters = "000000 FFFFFF FFFFFF 000000";
constexpr size_t kPlaceable = 22;

class Metafile : public DeviceFormat {
 protected:
  Object<HBITMAP> loaded(const Bytes& bytes) const { return Object<HBITMAP>(LoadMetaFileIntoBitmap(put(bytes).c_str())); }
  int code_of_loading(const Bytes& bytes) const {
    SetImgError(kUntouched);
    return loaded(bytes) ? -1 : ImgError();
  }
};

Bytes placeable(int16_t right, int16_t bottom, uint16_t units, const Bytes& metafile) {
  Bytes header = {0xD7, 0xCD, 0xC6, 0x9A};
  header.resize(kPlaceable);
  std::memcpy(&header[10], &right, 2);
  std::memcpy(&header[12], &bottom, 2);
  std::memcpy(&header[14], &units, 2);
  return joined(header, metafile);
}

TEST_F(Metafile, PicturesOfEveryDepthComeBack) {
  for (const int depth : {1, 4, 8, 24}) {
    const Bytes picture = quarters(48, 24, depth);
    const Block dib = block_of(picture);
    const Object<HBITMAP> bitmap(ConvertDIBToBitmap(dib.get()));
    const char* expected = depth == 1 ? kBilevelQuarters : kQuarters;
    for (const bool from_bitmap : {false, true}) {
      const auto save = [&](auto save_dib, auto save_bitmap, const std::string& path) {
        return from_bitmap ? save_bitmap(path.c_str(), bitmap.get()) : save_dib(path.c_str(), dib.get());
      };
      ASSERT_EQ(save(SaveDIBIntoMetaFile, SaveBitmapIntoMetaFile, at("a.wmf")), TRUE);
      const Object<HBITMAP> windows(LoadMetaFileIntoBitmap(at("a.wmf").c_str()));
      ASSERT_TRUE(windows) << depth;
      EXPECT_EQ(largest_difference(dib_bytes(windows.get()), picture), 0) << depth << from_bitmap;

      // Drawn one pixel smaller than the bitmap, so that its edges are white.
      ASSERT_EQ(save(SaveDIBIntoEnhMetaFile, SaveBitmapIntoEnhMetaFile, at("a.emf")), TRUE);
      const Object<HBITMAP> enhanced(LoadMetaFileIntoBitmap(at("a.emf").c_str()));
      ASSERT_TRUE(enhanced) << depth;
      EXPECT_EQ(size_of(enhanced.get()), std::pair(48, 24));
      EXPECT_EQ(quarters_of(dib_bytes(enhanced.get())), expected) << depth << from_bitmap;
    }
  }
}

TEST_F(Metafile, RowOrderAndMissingNumbersDoNotMatter) {
  const Bytes picture = quarters(40, 20, 8);
  Bytes top_down = with_header_changed(picture, [](BITMAPINFOHEADER& header) { header.biHeight = -20; });
  for (auto y = 0; y < 10; ++y)
    std::swap_ranges(top_down.end() - 40 * (y + 1), top_down.end() - 40 * y, top_down.end() - 40 * (20 - y));
  for (const Bytes& dib :
       {top_down, with_header_changed(picture, [](BITMAPINFOHEADER& header) { header.biSizeImage = 7; })}) {
    SaveDIBIntoMetaFile(at("a.wmf").c_str(), block_of(dib).get());
    EXPECT_EQ(largest_difference(dib_bytes(Object<HBITMAP>(LoadMetaFileIntoBitmap(at("a.wmf").c_str())).get()), picture), 0);
  }
}

TEST_F(Metafile, SavingPutsAPlaceableHeaderInFront) {
  SaveDIBIntoMetaFile(at("a.wmf").c_str(), block_of(quarters(100, 50, 1)).get());
  const Bytes file = read_file(at("a.wmf"));
  const Bytes expected = {0xD7, 0xCD, 0xC6, 0x9A, 0, 0, 0, 0, 0, 0, 100, 0, 50, 0, 96, 0, 0, 0, 0, 0, 0x27, 0x57};
  EXPECT_EQ(Bytes(file.begin(), file.begin() + kPlaceable), expected);
  uint32_t words;
  std::memcpy(&words, &file[kPlaceable + 6], 4);
  EXPECT_EQ(words * 2, file.size() - kPlaceable) << "the metafile follows, whole";
}

TEST_F(Metafile, SavingReportsNothing) {
  const std::string file = put({1, 2, 3});
  const Block dib = block_of(quarters(8, 8, 1)), none = block_of(Bytes(40));
  const Object<HBITMAP> bitmap = counting_bitmap(8, 8, 1);
  const std::string nowhere = at("no/such/folder/a.wmf");
  for (HGLOBAL handle : {HGLOBAL{nullptr}, dead_handle(), none.get()}) {
    EXPECT_TRUE(SaveDIBIntoMetaFile(file.c_str(), handle) && SaveDIBIntoEnhMetaFile(file.c_str(), handle));
  }
  EXPECT_TRUE(SaveBitmapIntoMetaFile(file.c_str(), nullptr) && SaveBitmapIntoEnhMetaFile(file.c_str(), nullptr));
  EXPECT_EQ(read_file(file), (Bytes{1, 2, 3})) << "what is no picture costs no file";
  for (const char* path : {nowhere.c_str(), static_cast<const char*>(nullptr)}) {
    EXPECT_TRUE(SaveDIBIntoMetaFile(path, dib.get()) && SaveDIBIntoEnhMetaFile(path, dib.get()));
    EXPECT_TRUE(SaveBitmapIntoMetaFile(path, bitmap.get()) && SaveBitmapIntoEnhMetaFile(path, bitmap.get()));
  }
  EXPECT_EQ(ImgError(), kUntouched);
  EXPECT_FALSE(SaveDIBInImageFormat(file.c_str(), dead_handle(), IMG_FORMAT_METAFILE, 0, 0)) << "there is no bitmap to save";
}

TEST_F(Metafile, LoadsAtTheSizeItSays) {
  const Bytes metafile = red_and_white_bits(Coordinates::kOwn);
  const struct {
    const char* name;
    Bytes file;
    std::pair<int, int> size;
  } rows[] = {{"plain", metafile, {480, 480}},
              {"an inch of 1440", placeable(1440, 720, 1440, metafile), {96, 48}},
              {"no units", placeable(100, 100, 0, metafile), {480, 480}},
              {"negative", placeable(-100, 100, 96, metafile), {480, 480}}};
  for (const auto& row : rows) {
    const Object<HBITMAP> bitmap = loaded(row.file);
    ASSERT_TRUE(bitmap) << row.name;
    EXPECT_EQ(size_of(bitmap.get()), row.size) << row.name;
    EXPECT_EQ(quarters_of(dib_bytes(bitmap.get())), "FF0000 FFFFFF FF0000 FFFFFF") << row.name;
  }
}

TEST_F(Metafile, DamagedOnesHaveTheirCodes) {
  const Bytes whole = placeable(96, 96, 96, red_and_white_bits(Coordinates::kOwn));
  EXPECT_EQ(LoadMetaFileIntoBitmap(at("missing").c_str()), nullptr);
  EXPECT_EQ(LoadMetaFileIntoBitmap(nullptr), nullptr);
  EXPECT_EQ(ImgError(), kUntouched);
  for (const int count : {0, 3, 4, 21, 22, 39}) {
    EXPECT_EQ(code_of_loading(Bytes(whole.begin(), whole.begin() + count)), IMG_E_FILE_IO) << count;
  }
  EXPECT_EQ(code_of_loading(Bytes(whole.begin(), whole.end() - 3)), -1) << "without its last record";

  const auto changed = [&](size_t offset, uint32_t value) {
    Bytes file = whole;
    std::memcpy(&file[offset], &value, sizeof value);
    return file;
  };
  EXPECT_EQ(code_of_loading(changed(kPlaceable + 6, 0)), IMG_E_FILE_IO) << "no bytes at all";
  EXPECT_EQ(code_of_loading(changed(kPlaceable + 6, 0x60000000)), IMG_E_MEMORY);
  EXPECT_EQ(code_of_loading(changed(kPlaceable + 4, 0x12345678)), IMG_E_CREATE_METAFILE) << "a version there is not";
  constexpr int kOfTwoGigabytes = sizeof(void*) == 4 ? IMG_E_MEMORY : IMG_E_CREATE_METAFILE;
  EXPECT_EQ(code_of_loading(Bytes(200, 'x')), kOfTwoGigabytes) << "taken for an enhanced one of 2 GB";
  EXPECT_EQ(code_of_loading(Bytes(200, 0)), IMG_E_FILE_IO);

  SaveDIBIntoEnhMetaFile(at("a.emf").c_str(), block_of(quarters(48, 24, 24)).get());
  const Bytes enhanced = read_file(at("a.emf"));
  EXPECT_EQ(code_of_loading(enhanced), -1);
  for (const size_t count : {size_t{40}, size_t{99}})
    EXPECT_EQ(code_of_loading(Bytes(enhanced.begin(), enhanced.begin() + static_cast<int>(count))), IMG_E_FILE_IO) << count;
  for (const size_t count : {size_t{100}, enhanced.size() - 1})
    EXPECT_EQ(code_of_loading(Bytes(enhanced.begin(), enhanced.begin() + static_cast<int>(count))), IMG_E_CREATE_METAFILE)
        << count;
}

// A metafile that sets no coordinates is as large as the one who plays it says.
TEST_F(Metafile, IsDrawnAtHalfTheSizeWhereTheBitmapIsTooLarge) {
  HMETAFILE metafile = red_and_white(Coordinates::kOfWhoPlays, 32, 32);
  const Replacement replaced("CreateBitmap", low_bitmap);
  const struct {
    int width, height, rows, refused;
    std::pair<int, int> size;
  } rows[] = {{50, 40, 40, 0, {50, 40}}, {50, 40, 39, 1, {25, 20}}, {50, 41, 10, 2, {12, 10}}, {8, 8, 1, 3, {0, 0}},
              {8, 8, 2, 2, {2, 2}},      {0, 8, 99, 0, {0, 0}},     {8, -1, 99, 0, {0, 0}}};
  for (const auto& row : rows) {
    most_rows = row.rows;
    refused_bitmaps = 0;
    SetImgError(kUntouched);
    const Object<HBITMAP> bitmap(DrawMetaFileIntoBitmap(metafile, row.width, row.height, FALSE));
    EXPECT_EQ(bitmap ? size_of(bitmap.get()) : std::pair(0, 0), row.size) << row.height << ' ' << row.rows;
    EXPECT_EQ(ImgError(), bitmap ? kUntouched : IMG_E_MEMORY);
    EXPECT_EQ(refused_bitmaps, row.refused) << row.height << ' ' << row.rows;
  }
  // Twice as large as the bitmap is: red ends at twice 16 of 32 columns.
  most_rows = 32;
  const Object<HBITMAP> bitmap(DrawMetaFileIntoBitmap(metafile, 64, 64, FALSE));
  EXPECT_EQ(quarters_of(dib_bytes(bitmap.get())), "FF0000 FF0000 FF0000 FF0000");
  DeleteMetaFile(metafile);
}

TEST_F(Metafile, SizesThatNoMemoryHoldsAreHalved) {
  HMETAFILE metafile = red_and_white(Coordinates::kOfWhoPlays);
  const Replacement replaced("CreateBitmap", low_bitmap);
  most_rows = 200;
  const Object<HBITMAP> bitmap(DrawMetaFileIntoBitmap(metafile, 0x7FFFFFFF, 0x7FFFFFFF, FALSE));
  EXPECT_EQ(size_of(bitmap.get()), std::pair(127, 127));
  DeleteMetaFile(metafile);
}

TEST_F(Metafile, WhatIsNoneIsDrawnAsNothing) {
  for (const BOOL enhanced : {FALSE, TRUE}) {
    const Object<HBITMAP> bitmap(DrawMetaFileIntoBitmap(nullptr, 20, 10, enhanced));
    EXPECT_EQ(quarters_of(dib_bytes(bitmap.get())), "FFFFFF FFFFFF FFFFFF FFFFFF");
  }
}

// A state that nobody saved is not there to be restored.
TEST_F(Metafile, RestoringMoreThanWasSavedChangesNothing) {
  HDC dc = CreateMetaFileA(nullptr);
  RestoreDC(dc, -1);
  SetWindowExtEx(dc, 100, 100, nullptr);
  HBRUSH red = CreateSolidBrush(RGB(255, 0, 0));
  SelectObject(dc, red);
  PatBlt(dc, 0, 0, 50, 100, PATCOPY);
  HMETAFILE metafile = CloseMetaFile(dc);
  DeleteObject(red);
  const Holdings before;
  {
    const Object<HBITMAP> bitmap(DrawMetaFileIntoBitmap(metafile, 300, 300, FALSE));
    EXPECT_EQ(quarters_of(dib_bytes(bitmap.get())), "FF0000 FFFFFF FF0000 FFFFFF");
  }
  before.expect_no_more();
  DeleteMetaFile(metafile);
}

// ---- The clipboard ----

class ClipboardPicture : public Metafile {
 protected:
  void TearDown() override {
    OpenClipboard(nullptr);
    EmptyClipboard();
    CloseClipboard();
  }
  void place(int mode, int x, int y, UINT format = CF_METAFILEPICT) const {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT));
    const METAFILEPICT picture{mode, x, y, red_and_white(Coordinates::kOwn)};
    std::memcpy(GlobalLock(block), &picture, sizeof picture);
    GlobalUnlock(block);
    ASSERT_TRUE(OpenClipboard(window()));
    EmptyClipboard();
    SetClipboardData(format, block);
    CloseClipboard();
  }
  // Whether another thread can have it.
  static bool clipboard_is_free() {
    bool is_free = false;
    std::thread([&] {
      is_free = OpenClipboard(nullptr) != FALSE;
      if (is_free) CloseClipboard();
    }).join();
    return is_free;
  }
};

TEST_F(ClipboardPicture, IsPlacedAsABitmapAndAsADib) {
  HDC dc = GetDC(window());
  const std::pair screen(GetDeviceCaps(dc, HORZSIZE), GetDeviceCaps(dc, VERTSIZE));
  ReleaseDC(window(), dc);
  const struct {
    int mode, x, y;
    std::pair<int, int> size;
  } rows[] = {{MM_HIMETRIC, 2540, 2540, {99, 99}},
              {MM_ANISOTROPIC, 2540, 1270, {99, 49}},
              {MM_TEXT, 30, 20, {30, 20}},
              {MM_ISOTROPIC, 0, 0, screen},
              {77, 30, 20, screen}};
  for (const auto& row : rows) {
    place(row.mode, row.x, row.y);
    const Object<HBITMAP> bitmap(PlaceMetaFileIntoBMPFromCLP(window()));
    ASSERT_TRUE(bitmap) << row.mode;
    EXPECT_EQ(size_of(bitmap.get()), row.size) << row.mode;
    const Bytes dib = bytes_of(Block(PlaceMetaFileIntoDIBFromCLP(window())).get());
    EXPECT_EQ(largest_difference(dib, dib_bytes(bitmap.get())), 0);
    EXPECT_EQ(quarters_of(dib), "FF0000 FFFFFF FF0000 FFFFFF") << row.mode;
    EXPECT_TRUE(clipboard_is_free());
  }
}

TEST_F(ClipboardPicture, SaysWhatIsWrong) {
  using Boxes = std::vector<std::string>;
  const auto expect = [&](HWND owner, int code, const Boxes& expected) {
    static bool as_dib = false;  // one after the other: boxes take their time
    as_dib = !as_dib;
    const MessageBoxes boxes;
    SetImgError(kUntouched);
    EXPECT_EQ(as_dib ? PlaceMetaFileIntoDIBFromCLP(owner) : HGLOBAL{PlaceMetaFileIntoBMPFromCLP(owner)}, nullptr);
    EXPECT_EQ(ImgError(), code);
    EXPECT_EQ(boxes.seen(), expected);
  };
  place(MM_TEXT, 30, 20, CF_TEXT);
  expect(nullptr, kUntouched, {});
  expect(window(), IMG_E_MEMORY, {});
  EXPECT_TRUE(clipboard_is_free());

  place(MM_TEXT, 30, 20);
  {
    most_rows = 0;
    const Replacement replaced("CreateBitmap", low_bitmap);
    expect(window(), IMG_E_MEMORY, {"ERROR: Could not draw meta file into a bitmap"});
  }
  EXPECT_TRUE(clipboard_is_free());

  HANDLE taken = CreateEventA(nullptr, TRUE, FALSE, nullptr), done = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  std::thread other([&] {
    OpenClipboard(nullptr);
    SetEvent(taken);
    WaitForSingleObject(done, INFINITE);
    CloseClipboard();
  });
  WaitForSingleObject(taken, INFINITE);
  expect(window(), IMG_E_CLIPBOARD, {"ERROR: Could not open clipboard"});
  SetEvent(done);
  other.join();
  CloseHandle(taken);
  CloseHandle(done);
}

// ---- Hostile files ----

// Says which file the process ends at.
class Watch {
 public:
  Watch() : handler_(AddVectoredExceptionHandler(1, tell)) {}
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch() { RemoveVectoredExceptionHandler(handler_); }

  inline static std::string file;

 private:
  static LONG CALLBACK tell(EXCEPTION_POINTERS* about) {
    if (about->ExceptionRecord->ExceptionCode != STATUS_ACCESS_VIOLATION) return EXCEPTION_CONTINUE_SEARCH;
    std::printf("ended by %s\n", file.c_str());
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 1);
    return EXCEPTION_CONTINUE_SEARCH;
  }

  PVOID handler_;
};

// Files of one record each: one whose numbers are changed one by one, and each kind of record with what another one holds.
class LyingRecords : public Metafile {
 protected:
  template <class Number>
  void load_all(const Taken& taken, size_t kind_at, size_t first_number, const std::set<Number>& kinds,
                void (*set_size)(Bytes& file)) const {
    const Watch watch;
    const auto load = [&](const Bytes& record, const std::string& name) {
      Bytes file = taken.file_with(record);
      set_size(file);
      Watch::file = name;
      loaded(file);
    };
    std::set<Number> seen;
    std::set<size_t> sizes;
    for (const Bytes& record : taken.records) {
      const auto kind = number_at<Number>(record, kind_at);
      const std::string name = std::to_string(kind);
      if (seen.insert(kind).second) {
        for (size_t at = first_number; at + sizeof(Number) <= std::min<size_t>(record.size(), 130); at += sizeof(Number)) {
          Bytes changed = record;
          set_number(changed, at, static_cast<Number>(-1));
          load(changed, name + " at " + std::to_string(at));
        }
      }
      if (!sizes.insert(record.size() / 100).second) continue;
      for (const Number other : kinds) {
        Bytes changed = record;
        set_number(changed, kind_at, other);
        load(changed, name + " as " + std::to_string(other));
      }
    }
  }
};

TEST_F(LyingRecords, OfEnhancedMetafilesDoNotEndTheProcess) {
  std::set<uint32_t> kinds;
  for (uint32_t kind = 2; kind <= 123; ++kind) kinds.insert(kind);
  load_all<uint32_t>(every_enhanced_record(), 0, 8, kinds, [](Bytes& file) {
    set_number(file, 48, static_cast<uint32_t>(file.size()));
    set_number(file, 16, 20);  // small bounds and a small frame
    set_number(file, 20, 20);
    set_number(file, 32, 500);
    set_number(file, 36, 500);
  });
}

TEST_F(LyingRecords, OfWindowsMetafilesDoNotEndTheProcess) {
  const Taken taken = every_windows_record();
  std::set<uint16_t> kinds = {0x35, 0x37, 0x139, 0x1F9, 0x419, 0x436, 0x521, 0x922, 0xB23, 0xD33};
  for (const Bytes& record : taken.records) kinds.insert(number_at<uint16_t>(record, 4));
  load_all<uint16_t>(taken, 4, 6, kinds, [](Bytes& file) {
    set_number(file, 6, static_cast<uint32_t>(file.size() / 2));
    const Bytes placed = placeable(20, 20, 96, file);
    file = placed;
  });
  for (uint16_t escape = 0; escape < 60; ++escape) {
    Bytes record = {7, 0, 0, 0, 0x26, 6, 0, 0, 4, 0, 0, 0, 0, 0};
    set_number(record, 6, escape);
    Bytes file = taken.file_with(record);
    set_number(file, 6, static_cast<uint32_t>(file.size() / 2));
    EXPECT_TRUE(loaded(file)) << escape;
  }
}

TEST_F(Metafile, HostileFilesLeaveNothing) {
  SaveDIBIntoMetaFile(at("a.wmf").c_str(), block_of(quarters(16, 8, 4)).get());
  SaveDIBIntoEnhMetaFile(at("a.emf").c_str(), block_of(quarters(16, 8, 8)).get());
  const Bytes originals[] = {read_file(at("a.wmf")), read_file(at("a.emf")), red_and_white_bits(Coordinates::kOwn)};
  const Replacement replaced("CreateBitmap", low_bitmap);
  most_rows = 500;
  std::mt19937 random(3);
  constexpr uint32_t kValues[] = {0, 1, 2, 3, 0x7FFF, 0x8000, 0xFFFF, 0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  const auto attack = [&](int count) {
    for (int i = 0; i < count; ++i) {
      Bytes file = originals[i % 3];
      for (size_t changes = 1 + random() % 3; changes > 0; --changes) {
        const size_t header = std::min<size_t>(file.size(), 130);
        std::memcpy(&file[random() % (header - 4)], &kValues[random() % std::size(kValues)], random() % 2 == 0 ? 2 : 4);
      }
      if (random() % 4 == 0) file.resize(random() % file.size());
      loaded(file);
      int status = 0;
      GlobalFree(LoadImageIntoDIB(at("file").c_str(), 1, &status));
    }
  };
  attack(30);  // whatever the system keeps from first uses
  const Holdings before;
  attack(600);
  before.expect_no_more();
}

}  // namespace
