#include "pcx/dcx.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "common/byte_source.h"
#include "common/entry.h"
#include "pcx/pcx.h"

namespace codec {
namespace {

constexpr uint32_t kSignature = 0x3ADE68B1;
constexpr size_t kMostPages = 1023;

}  // namespace

DcxDirectory::DcxDirectory(std::span<const uint8_t> start) {
  std::array<uint32_t, kBytes / sizeof(uint32_t)> words{};
  const size_t bytes = std::min(start.size(), kBytes), count = bytes / sizeof(uint32_t);
  if (bytes != 0) std::memcpy(words.data(), start.data(), bytes);
  if (words[0] != kSignature) fail(IMG_E_FORMAT);
  const auto entries = std::span(words).first(count).subspan(1);
  const auto end = std::ranges::find(entries, 0u);
  if (end == entries.end() && entries.size() < kMostPages) fail(IMG_E_FORMAT);
  offsets_.assign(entries.begin(), end);
  offsets_.resize(std::min(offsets_.size(), kMostPages));
}

DcxDirectory::Extent DcxDirectory::page(int number, uint64_t file_bytes) const {
  if (number < 1 || number > page_count()) fail(IMG_E_PARAMETER);
  const uint64_t begin = offsets_[static_cast<size_t>(number) - 1];
  uint64_t end = file_bytes;
  for (const uint64_t offset : offsets_)
    if (offset > begin) end = std::min(end, offset);
  if (begin >= end) fail(IMG_E_FORMAT);
  return {begin, end - begin};
}

uint64_t DcxDirectory::free_entry() const {
  if (offsets_.size() == kMostPages) fail(IMG_E_PARAMETER);
  const uint64_t entry = sizeof kSignature + offsets_.size() * sizeof(uint32_t);
  // Other programs may reserve less room in front of their first page.
  const auto first_page = std::ranges::min_element(offsets_);
  if (first_page != offsets_.end() && *first_page < entry + kEntryBytes) fail(IMG_E_PARAMETER);
  return entry;
}

void make_dcx(const char* path) {
  std::array<uint32_t, DcxDirectory::kBytes / sizeof(uint32_t)> words{kSignature};
  OutputFile file(path);
  file.write(bytes_of(words));
  file.complete();
}

void add_dcx_page(const char* path, const SourceDib& dib) {
  const PcxWriter page(dib);
  const DcxDirectory directory(InputFile(path).read(0, DcxDirectory::kBytes));
  const uint64_t entry = directory.free_entry();
  OutputFile file(path, OutputFile::Mode::kAdd);
  // A file without pages gets room for a whole directory, in case it has less.
  const uint64_t directory_end = directory.page_count() == 0 ? DcxDirectory::kBytes : entry + DcxDirectory::kEntryBytes;
  const uint64_t begin = std::max(file.found_size(), directory_end);
  if (begin > std::numeric_limits<uint32_t>::max()) fail(IMG_E_PARAMETER);
  file.seek(begin);
  page.write(file);
  file.flush();
  // The directory changes last, once the page is complete.
  file.seek(entry);
  file.write(bytes_of(std::array{static_cast<uint32_t>(begin), 0u}));
  file.complete();
}

}  // namespace codec
