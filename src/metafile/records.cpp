#include "metafile/records.h"

#include <cstring>

#include "metafile/header.h"

namespace vorel {
namespace {

constexpr uint16_t kInMemory = 1;

// A record begins with its length in words of 16 bits and the number of its function.
constexpr size_t kShortestRecord = 6;

uint64_t length_of_record(std::span<const uint8_t> record) {
  uint32_t words;
  std::memcpy(&words, record.data(), sizeof words);
  return uint64_t{words} * 2;
}

// Where the records end that lie whole in the bytes from an offset on. A length that is too short ends them too.
size_t end_of_whole_records(std::span<const uint8_t> bytes, size_t offset) {
  while (bytes.size() - offset >= kShortestRecord) {
    const uint64_t length = length_of_record(bytes.subspan(offset));
    if (length < kShortestRecord || length > bytes.size() - offset) break;
    offset += static_cast<size_t>(length);
  }
  return offset;
}

}  // namespace

std::span<uint8_t> playable_windows_metafile(std::span<uint8_t> metafile) {
  if (metafile.size() < kWindowsHeaderBytes) return {};
  const size_t end = end_of_whole_records(metafile, kWindowsHeaderBytes);
  WindowsMetafileHeader header;
  std::memcpy(&header, metafile.data(), sizeof header);
  header.type = kInMemory;
  header.words = static_cast<uint32_t>(end / 2);
  std::memcpy(metafile.data(), &header, sizeof header);
  return metafile.first(end);
}

}  // namespace vorel
