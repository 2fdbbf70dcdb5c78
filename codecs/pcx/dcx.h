// DCX files: a directory, then PCX pictures.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "common/dib.h"
#include "common/file.h"

namespace codec {

class DcxDirectory {
 public:
  struct Extent {
    uint64_t offset = 0, size = 0;
  };

  // The signature, 1023 offsets and the 0 that ends them.
  static constexpr size_t kBytes = 4100;

  // One more offset and the 0 that ends them: the bytes behind the last offset need not be 0.
  static constexpr size_t kEntryBytes = 8;

  // Takes the first kBytes of a file, or the whole file if it is shorter. Throws Failure.
  explicit DcxDirectory(std::span<const uint8_t> start);

  int page_count() const { return static_cast<int>(offsets_.size()); }

  // The bytes of a page, up to the start of another or to the end of the file. Throws Failure.
  Extent page(int number, uint64_t file_bytes) const;

  // The offset of kEntryBytes for one more page. Throws Failure if there is no room.
  uint64_t free_entry() const;

 private:
  std::vector<uint32_t> offsets_;
};

// Throw Failure. A page that cannot be added in full is not added at all.
void make_dcx(const char* path);
void add_dcx_page(const char* path, const SourceDib& dib);

}  // namespace codec
