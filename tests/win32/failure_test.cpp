// Every export with its platform failing under it: the stated code, and nothing left behind.
#include <functional>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/heap.h"
#include "win32/support/gdi.h"
#include "win32/support/imports.h"

using namespace test;

namespace {

int allocations_left = 0;

HGLOBAL WINAPI failing_alloc(UINT flags, SIZE_T bytes) {
  return allocations_left-- > 0 ? GlobalAlloc(flags, bytes) : nullptr;
}
HDC WINAPI no_dc(HWND) { return nullptr; }
HDC WINAPI no_memory_dc(HDC) { return nullptr; }
HDC WINAPI no_metafile_dc(LPCSTR) { return nullptr; }
HMETAFILE WINAPI no_metafile(UINT, const BYTE*) { return nullptr; }
HBITMAP WINAPI no_plain_bitmap(int, int, UINT, UINT, const void*) { return nullptr; }
LONG WINAPI no_read(HFILE, LPVOID, LONG) { return 0; }
HPALETTE WINAPI no_palette(const LOGPALETTE*) { return nullptr; }
HBITMAP WINAPI no_bitmap(HDC, const BITMAPINFOHEADER*, DWORD, const void*, const BITMAPINFO*, UINT) { return nullptr; }
HBITMAP WINAPI no_bitmap_indirect(const BITMAP*) { return nullptr; }
LONG WINAPI no_bits(HBITMAP, LONG, LPVOID) { return 0; }
void* no_scratch(size_t, size_t) { return nullptr; }
LPVOID WINAPI no_lock(HGLOBAL) { return nullptr; }
int writes_left = 0;
LONG WINAPI no_write(HFILE file, LPCSTR bytes, LONG count) { return writes_left-- > 0 ? _hwrite(file, bytes, count) : 0; }
LONG WINAPI failed_write(HFILE, LPCSTR, LONG) { return -1; }

// What each export works on, and how its result is thrown away.
struct Setting {
  Block dib = block_of(noise(20, 20, 8));
  Object<HBITMAP> bitmap = counting_bitmap(20, 20, 1);
  TempFolder folder;
  std::string file = folder.path("there.bmp"), target = folder.path("made.bmp");
  std::string metafile = folder.path("there.wmf"), enhanced = folder.path("there.emf"), clipboard = folder.path("there.clp");
  Setting() {
    SaveDIB(file.c_str(), dib.get());
    SaveDIBIntoMetaFile(metafile.c_str(), dib.get());
    SaveDIBIntoEnhMetaFile(enhanced.c_str(), dib.get());
    SaveClipboardFormat(clipboard.c_str(), bitmap.get());
  }
};

struct Export {
  const char* name;
  std::function<bool(Setting&)> call;  // runs it, frees what it gives, tells whether it gave anything
};

template <class Handle>
bool gave(Handle object) {
  return static_cast<bool>(Object<Handle>(object));
}

const Export kExports[] = {
    {"LoadDIBFromFile", [](Setting& s) { return static_cast<bool>(Block(LoadDIBFromFile(s.file.c_str()))); }},
    {"LoadBitmapFromFile", [](Setting& s) { return gave(LoadBitmapFromFile(s.file.c_str())); }},
    {"SaveDIB", [](Setting& s) { return SaveDIB(s.target.c_str(), s.dib.get()) != 0; }},
    {"SaveBitmap", [](Setting& s) { return SaveBitmap(s.target.c_str(), s.bitmap.get(), nullptr) != 0; }},
    {"CreateDIBPalette", [](Setting& s) { return gave(CreateDIBPalette(s.dib.get())); }},
    {"GetCurrentPalette", [](Setting&) { return gave(GetCurrentPalette()); }},
    {"GetSystemPalette",
     [](Setting&) {
       RGBQUAD colors[256];
       return GetSystemPalette(colors) != 0;
     }},
    {"ConvertBitmapToDIB", [](Setting& s) { return static_cast<bool>(Block(ConvertBitmapToDIB(s.bitmap.get(), nullptr))); }},
    {"ConvertDIBToBitmap", [](Setting& s) { return gave(ConvertDIBToBitmap(s.dib.get())); }},
    {"ConvertToMonochromeBitmap", [](Setting& s) { return gave(ConvertToMonochromeBitmap(s.bitmap.get())); }},
    {"DuplicateBitmap", [](Setting& s) { return gave(DuplicateBitmap(s.bitmap.get())); }},
    {"RotateDIB90", [](Setting& s) { return static_cast<bool>(Block(RotateDIB90(s.dib.get()))); }},
    {"FlipDIBVertical", [](Setting& s) { return static_cast<bool>(Block(FlipDIBVertical(s.dib.get()))); }},
    {"RotateBitmap90", [](Setting& s) { return gave(RotateBitmap90(s.bitmap.get())); }},
    {"RotateBitmap180", [](Setting& s) { return RotateBitmap180(s.bitmap.get()) != 0; }},
    {"InvertBitmap", [](Setting& s) { return InvertBitmap(s.bitmap.get()) != 0; }},
    {"LoadMetaFileIntoBitmap", [](Setting& s) { return gave(LoadMetaFileIntoBitmap(s.metafile.c_str())); }},
    {"LoadMetaFileIntoBitmap, enhanced", [](Setting& s) { return gave(LoadMetaFileIntoBitmap(s.enhanced.c_str())); }},
    {"SaveDIBIntoMetaFile", [](Setting& s) { return SaveDIBIntoMetaFile(s.target.c_str(), s.dib.get()) != 0; }},
    {"SaveBitmapIntoMetaFile", [](Setting& s) { return SaveBitmapIntoMetaFile(s.target.c_str(), s.bitmap.get()) != 0; }},
    {"SaveBitmapIntoEnhMetaFile",
     [](Setting& s) { return SaveBitmapIntoEnhMetaFile(s.target.c_str(), s.bitmap.get()) != 0; }},
    {"LoadASCIIFile", [](Setting& s) { return gave(LoadASCIIFile(s.file.c_str(), FALSE)); }},
    {"LoadClipboardFormat",
     [](Setting& s) { return gave(static_cast<HBITMAP>(LoadClipboardFormat(s.clipboard.c_str(), CF_DIB))); }},
    {"SaveClipboardFormat", [](Setting& s) { return SaveClipboardFormat(s.target.c_str(), s.bitmap.get()) != 0; }},
    {"LoadImageIntoDIB, metafile",
     [](Setting& s) { return static_cast<bool>(Block(LoadImageIntoDIB(s.metafile.c_str(), 1, nullptr))); }},
    {"SaveDIBInImageFormat, metafile",
     [](Setting& s) { return SaveDIBInImageFormat(s.target.c_str(), s.dib.get(), IMG_FORMAT_METAFILE, 0, 0) != 0; }},
};

// Runs every export a few times and expects as many objects and blocks after as before.
void expect_nothing_left(const char* circumstance) {
  for (const Export& e : kExports) {
    Setting setting;
    const auto run = [&] {
      for (int allowed : {1000, 3, 2, 1, 0}) {
        allocations_left = allowed;
        e.call(setting);
      }
    };
    run();  // whatever the system caches on first use
    const size_t objects = gdi_objects(), blocks = heap_blocks();
    for (int i = 0; i < 5; ++i) run();
    EXPECT_EQ(gdi_objects(), objects) << e.name << ", failing: " << circumstance;
    EXPECT_LT(heap_blocks(), blocks + 5) << e.name << ", failing: " << circumstance;
  }
}

TEST(NothingIsLeft, WhateverFails) {
  const ActiveWindow window;
  SetImgError(0);
  expect_nothing_left("nothing");
  const std::pair<const char*, void (*)()> failures[] = {
      {"GlobalAlloc", reinterpret_cast<void (*)()>(failing_alloc)},
      {"calloc", reinterpret_cast<void (*)()>(no_scratch)},
      {"GlobalLock", reinterpret_cast<void (*)()>(no_lock)},
      {"GetDC", reinterpret_cast<void (*)()>(no_dc)},
      {"CreateCompatibleDC", reinterpret_cast<void (*)()>(no_memory_dc)},
      {"CreatePalette", reinterpret_cast<void (*)()>(no_palette)},
      {"CreateDIBitmap", reinterpret_cast<void (*)()>(no_bitmap)},
      {"CreateBitmapIndirect", reinterpret_cast<void (*)()>(no_bitmap_indirect)},
      {"GetBitmapBits", reinterpret_cast<void (*)()>(no_bits)},
      {"CreateMetaFileA", reinterpret_cast<void (*)()>(no_metafile_dc)},
      {"SetMetaFileBitsEx", reinterpret_cast<void (*)()>(no_metafile)},
      {"CreateBitmap", reinterpret_cast<void (*)()>(no_plain_bitmap)},
      {"_hread", reinterpret_cast<void (*)()>(no_read)},
  };
  for (const auto& [import, function] : failures) {
    const Replacement replaced(import, function);
    expect_nothing_left(import);
  }
}

// Runs one export with one import replaced and returns the code it leaves; -1 when it succeeds.
template <class Function>
int code_after(const char* import, Function* function, const std::function<bool(Setting&)>& call) {
  Setting setting;
  SetImgError(30);
  const Replacement replaced(import, function);
  allocations_left = 0;
  return call(setting) ? -1 : ImgError();
}

HGLOBAL WINAPI rounding_alloc(UINT flags, SIZE_T bytes) { return GlobalAlloc(flags, bytes / 64 * 64 + 128); }

// The system may give more than it was asked for; files carry the surplus, pictures stay what they are.
TEST(RoomierBlocks, HoldTheSamePicture) {
  Setting setting;
  const Bytes dib = bytes_of(setting.dib.get());
  const Replacement replaced("GlobalAlloc", rounding_alloc);
  const Block loaded(LoadDIBFromFile(setting.file.c_str()));
  const Block turned(RotateDIB180(loaded.get()));
  const Block back(RotateDIB180(turned.get()));
  const auto rows = [](const Bytes& bytes) { return Bytes(bytes.begin() + 40, bytes.begin() + 40 + 1024 + 400); };
  EXPECT_GT(bytes_of(loaded.get()).size(), dib.size());
  EXPECT_EQ(rows(bytes_of(loaded.get())), rows(dib));
  EXPECT_EQ(rows(bytes_of(back.get())), rows(dib));
  ASSERT_TRUE(SaveDIB(setting.target.c_str(), back.get()));
  EXPECT_EQ(read_file(setting.target).size(), 14 + GlobalSize(back.get()));
}

TEST(Codes, AreTheStatedOnes) {
  const auto to_bitmap = [](Setting& s) { return gave(ConvertDIBToBitmap(s.dib.get())); };
  const auto turn = [](Setting& s) { return gave(RotateBitmap90(s.bitmap.get())); };
  const auto load = [](Setting& s) { return static_cast<bool>(Block(LoadDIBFromFile(s.file.c_str()))); };
  const auto save = [](Setting& s) { return SaveDIB(s.target.c_str(), s.dib.get()) != 0; };
  const auto duplicate = [](Setting& s) { return gave(DuplicateBitmap(s.bitmap.get())); };
  const auto monochrome = [](Setting& s) { return gave(ConvertToMonochromeBitmap(s.bitmap.get())); };
  constexpr int kUntouched = 30, kSucceeds = -1;
  for (const auto& call : std::vector<std::function<bool(Setting&)>>{turn, duplicate, monochrome})
    EXPECT_EQ(code_after("calloc", no_scratch, call), IMG_E_MEMORY);
  EXPECT_EQ(code_after("GetDC", no_dc, [](Setting&) { return gave(GetCurrentPalette()); }), IMG_E_CREATE_DC);
  EXPECT_EQ(code_after("GetDC", no_dc,
                       [](Setting&) {
                         RGBQUAD c[256];
                         return GetSystemPalette(c) != 0;
                       }),
            kUntouched);
  EXPECT_EQ(code_after("GetDC", no_dc, to_bitmap), kUntouched);
  EXPECT_EQ(code_after("CreatePalette", no_palette, [](Setting& s) { return gave(CreateDIBPalette(s.dib.get())); }),
            IMG_E_CREATE_PALETTE);
  EXPECT_EQ(code_after("CreateDIBitmap", no_bitmap, to_bitmap), IMG_E_CREATE_BITMAP);
  EXPECT_EQ(code_after("CreateBitmapIndirect", no_bitmap_indirect, turn), IMG_E_CREATE_BITMAP);
  EXPECT_EQ(code_after("GetBitmapBits", no_bits, turn), IMG_E_COPY_BITS);
  EXPECT_EQ(code_after("GetBitmapBits", no_bits, [](Setting& s) { return gave(DuplicateBitmap(s.bitmap.get())); }),
            IMG_E_COPY_BITS);
  EXPECT_EQ(code_after("GlobalAlloc", failing_alloc, load), kUntouched);
  EXPECT_EQ(code_after("GlobalAlloc", failing_alloc,
                       [](Setting& s) { return static_cast<bool>(Block(RotateDIB90(s.dib.get()))); }),
            kUntouched);
  for (int written : {0, 1}) {
    writes_left = written;
    EXPECT_EQ(code_after("_hwrite", no_write, save), IMG_E_FILE_IO) << "after " << written;
  }
  EXPECT_EQ(code_after("_hwrite", failed_write, save), kSucceeds) << "only a write of 0 bytes counts as failed";
}

TEST(Codes, ScreenWithoutAPaletteIsRemembered) {
  HDC screen = GetDC(nullptr);
  const bool has_palette = GetDeviceCaps(screen, SIZEPALETTE) != 0;
  ReleaseDC(nullptr, screen);
  if (has_palette) GTEST_SKIP();
  SetImgError(0);
  EXPECT_EQ(GetCurrentPalette(), nullptr);
  EXPECT_EQ(ImgError(), IMG_E_CREATE_PALETTE);
  RGBQUAD colors[256];
  EXPECT_FALSE(GetSystemPalette(colors));
  const Object<HBITMAP> bitmap = counting_bitmap(4, 4, 8);
  if (!bitmap) return;
  SetImgError(0);
  const Bytes dib = bytes_of(Block(ConvertBitmapToDIB(bitmap.get(), nullptr)).get());
  EXPECT_FALSE(dib.empty());
  EXPECT_EQ(ImgError(), IMG_E_CREATE_PALETTE) << "although the conversion succeeded";
}

}  // namespace
