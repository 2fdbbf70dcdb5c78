// Owning types for DIBs.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>

#include <vorel32.h>

namespace vorel {

struct FreeGlobal {
  void operator()(HGLOBAL block) const { GlobalFree(block); }
};
using Dib = std::unique_ptr<void, FreeGlobal>;

// The bytes of a DIB, locked for a scope. Throws std::bad_alloc for a block that has none.
class DibLock {
 public:
  explicit DibLock(const Dib& dib) : block_(dib.get()), data_(static_cast<uint8_t*>(GlobalLock(block_))) {
    if (data_ == nullptr) throw std::bad_alloc();
  }
  DibLock(const DibLock&) = delete;
  DibLock& operator=(const DibLock&) = delete;
  ~DibLock() { GlobalUnlock(block_); }

  std::span<uint8_t> bytes() const { return {data_, GlobalSize(block_)}; }
  BITMAPINFOHEADER header() const {
    BITMAPINFOHEADER header;
    std::memcpy(&header, data_, sizeof header);
    return header;
  }
  std::span<uint8_t> pixels() const { return bytes().subspan(sizeof(BITMAPINFOHEADER) + PaletteSize(data_)); }

 private:
  HGLOBAL block_;
  uint8_t* data_;
};

// A copy of a DIB of at most 8 bits whose colour table is as long as the depth has colours, as most of the library takes it to be.
Dib with_whole_table(const Dib& dib);

}  // namespace vorel
