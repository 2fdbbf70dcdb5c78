// GDI objects for tests: made, looked at, counted.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>
#include <windows.h>

#include "support/dib.h"

namespace test {

// Bitmaps and palettes, deleted with their scope.
template <class Handle>
class Object {
 public:
  explicit Object(Handle handle) : handle_(handle) {}
  Object(Object&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Object& operator=(Object&&) = delete;
  ~Object() {
    if (handle_ != nullptr) DeleteObject(handle_);
  }
  explicit operator bool() const { return handle_ != nullptr; }
  Handle get() const { return handle_; }

 private:
  Handle handle_;
};

inline BITMAP facts_of(HBITMAP bitmap) {
  BITMAP facts{};
  GetObject(bitmap, sizeof facts, &facts);
  return facts;
}

inline Bytes bits_of(HBITMAP bitmap) {
  const BITMAP facts = facts_of(bitmap);
  Bytes bits(static_cast<size_t>(facts.bmPlanes * facts.bmHeight * facts.bmWidthBytes));
  GetBitmapBits(bitmap, static_cast<LONG>(bits.size()), bits.data());
  return bits;
}

// A device bitmap of counting bytes; the bits that only pad its rows are zero.
inline Object<HBITMAP> counting_bitmap(int width, int height, int depth) {
  const int width_bytes = (width * depth + 15) / 16 * 2;
  Bytes bits(static_cast<size_t>(width_bytes * height));
  for (int y = 0; y < height; ++y)
    for (int bit = 0; bit < width * depth; ++bit) {
      const auto value = static_cast<uint8_t>(37 * (y * width_bytes + bit / 8) + 11);
      bits[static_cast<size_t>(y * width_bytes + bit / 8)] |= static_cast<uint8_t>(value & (0x80 >> bit % 8));
    }
  return Object<HBITMAP>(CreateBitmap(width, height, 1, static_cast<UINT>(depth), bits.data()));
}

// GDI objects of this process, counted in the table that the system shares with every process.
inline size_t gdi_objects() {
  struct Entry {
    uint64_t object;
    uint32_t owner;
    uint16_t unique;
    uint8_t type, flags;
    uint64_t user;
  };
  static_assert(sizeof(Entry) == 24);
  constexpr size_t kEntries = 65'536;
  const uint8_t* process_block;
#ifdef _WIN64
  constexpr size_t kTableInProcessBlock = 0xF8;
  __asm__("movq %%gs:0x60, %0" : "=r"(process_block));
#else
  constexpr size_t kTableInProcessBlock = 0x94;
  __asm__("movl %%fs:0x30, %0" : "=r"(process_block));
#endif
  const Entry* table = *reinterpret_cast<const Entry* const*>(process_block + kTableInProcessBlock);
  size_t count = 0;
  for (size_t i = 0; i < kEntries; ++i) count += table[i].type != 0;
  return count;
}

// A visible window that is the active one of this thread.
class ActiveWindow {
 public:
  ActiveWindow()
      : window_(CreateWindowA("STATIC", "test", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50, nullptr, nullptr, nullptr, nullptr)) {
    SetActiveWindow(window_);
  }
  ActiveWindow(const ActiveWindow&) = delete;
  ActiveWindow& operator=(const ActiveWindow&) = delete;
  ~ActiveWindow() { DestroyWindow(window_); }

  HWND get() const { return window_; }

 private:
  HWND window_;
};

}  // namespace test
