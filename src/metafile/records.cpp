#include "metafile/records.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "metafile/header.h"

namespace vorel {
namespace {

template <class Integer>
Integer number_at(std::span<const uint8_t> bytes, size_t offset) {
  Integer value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

// ---- Windows metafiles ----

// A record is its length in words of 16 bits, its function and parameters.
constexpr size_t kShortestRecord = 6;
constexpr uint16_t kInMemory = 1;

constexpr uint16_t kSelectClipRegion = 0x012C, kSelectObject = 0x012D, kDeleteObject = 0x01F0, kSelectPalette = 0x0234;
constexpr uint16_t kFunctionsOfAnObject[] = {kSelectClipRegion, kSelectObject, kDeleteObject, kSelectPalette};

// The object that a record is about is its first parameter.
bool names_objects_of(std::span<const uint8_t> record, uint16_t objects) {
  const auto function = number_at<uint16_t>(record, 4);
  if (std::ranges::find(kFunctionsOfAnObject, function) == std::end(kFunctionsOfAnObject)) return true;
  return record.size() >= kShortestRecord + 2 && number_at<uint16_t>(record, 6) < objects;
}

// The first record of some; empty if it is not whole.
std::span<const uint8_t> first_record(std::span<const uint8_t> records) {
  if (records.size() < kShortestRecord) return {};
  const uint64_t length = uint64_t{number_at<uint32_t>(records, 0)} * 2;
  if (length < kShortestRecord || length > records.size()) return {};
  return records.first(static_cast<size_t>(length));
}

// ---- Enhanced metafiles ----

// A record is its type, its length in bytes and parameters, all in units of four bytes.
constexpr size_t kShortestEnhancedRecord = 8;
constexpr uint32_t kEnhancedStockObject = 0x80000000;

enum EnhancedRecord : uint32_t {
  kEnhancedEnd = 14,
  kEnhancedSelectObject = 37,
  kEnhancedCreatePen = 38,
  kEnhancedCreateBrush = 39,
  kEnhancedDeleteObject = 40,
  kEnhancedSelectPalette = 48,
  kEnhancedCreatePalette = 49,
  kEnhancedSetPaletteEntries = 50,
  kEnhancedResizePalette = 51,
  kEnhancedCreateFont = 82,
  kEnhancedCreateBilevelBrush = 93,
  kEnhancedCreatePatternBrush = 94,
  kEnhancedCreateExtendedPen = 95,
};
constexpr uint32_t kRecordsOfAnObject[] = {
    kEnhancedSelectObject,  kEnhancedCreatePen,          kEnhancedCreateBrush,        kEnhancedDeleteObject,
    kEnhancedSelectPalette, kEnhancedCreatePalette,      kEnhancedSetPaletteEntries,  kEnhancedResizePalette,
    kEnhancedCreateFont,    kEnhancedCreateBilevelBrush, kEnhancedCreatePatternBrush, kEnhancedCreateExtendedPen};

bool names_enhanced_objects_of(std::span<const uint8_t> record, uint16_t objects) {
  if (std::ranges::find(kRecordsOfAnObject, number_at<uint32_t>(record, 0)) == std::end(kRecordsOfAnObject)) return true;
  if (record.size() < kShortestEnhancedRecord + 4) return false;
  const auto object = number_at<uint32_t>(record, 8);
  return (object & kEnhancedStockObject) != 0 || object < objects;
}

std::span<const uint8_t> first_enhanced_record(std::span<const uint8_t> records) {
  if (records.size() < kShortestEnhancedRecord) return {};
  const auto length = number_at<uint32_t>(records, 4);
  if (length < kShortestEnhancedRecord || length % 4 != 0 || length > records.size()) return {};
  return records.first(length);
}

}  // namespace

std::span<uint8_t> playable_windows_metafile(std::span<uint8_t> metafile) {
  if (metafile.size() < kWindowsHeaderBytes) return {};
  auto header = number_at<WindowsMetafileHeader>(metafile, 0);
  size_t end = kWindowsHeaderBytes, records = 0;
  for (;; ++records) {
    const auto record = first_record(metafile.subspan(end));
    if (record.empty() || !names_objects_of(record, header.objects)) break;
    end += record.size();
  }
  header.type = kInMemory;
  header.words = static_cast<uint32_t>(end / 2);
  // With room for an object of each record: one without a place would never be deleted.
  header.objects = static_cast<uint16_t>(std::min<size_t>(std::max<size_t>(header.objects, records), UINT16_MAX));
  std::memcpy(metafile.data(), &header, sizeof header);
  return metafile.first(end);
}

bool is_playable_enhanced_metafile(std::span<const uint8_t> metafile) {
  if (metafile.size() < kEnhancedHeaderBytes) return false;
  const uint16_t objects = number_at<EnhancedHeader>(metafile, 0).objects;
  for (auto rest = metafile; !rest.empty();) {
    const auto record = first_enhanced_record(rest);
    if (record.empty() || !names_enhanced_objects_of(record, objects)) return false;
    if (number_at<uint32_t>(record, 0) == kEnhancedEnd) return true;
    rest = rest.subspan(record.size());
  }
  return true;
}

}  // namespace vorel
