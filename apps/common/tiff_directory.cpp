#include "common/tiff_directory.h"

#include <algorithm>
#include <array>
#include <bit>

namespace vorel::programs {
namespace {

enum Type : uint32_t {
  kByte = 1,
  kText = 2,
  kShort = 3,
  kLong = 4,
  kRatio = 5,
  kSignedByte = 6,
  kBytes = 7,
  kSignedShort = 8,
  kSignedLong = 9,
  kSignedRatio = 10,
  kDirectory = 13,
  kLong8 = 16,
  kDirectory8 = 18
};

size_t size_of(uint32_t type) {
  switch (type) {
    case kByte:
    case kText:
    case kSignedByte:
    case kBytes: return 1;
    case kShort:
    case kSignedShort: return 2;
    case kLong:
    case kSignedLong:
    case kDirectory: return 4;
    case kRatio:
    case kSignedRatio:
    case kLong8:
    case kDirectory8: return 8;
    default: return 0;
  }
}

// Of two's complement numbers of `size` bytes.
double signed_value(uint64_t value, size_t size) {
  const auto unused = static_cast<int>(8 * (8 - size));
  return static_cast<double>(std::bit_cast<int64_t>(value << unused) >> unused);
}

}  // namespace

uint64_t TiffDirectory::Source::number(uint64_t at, size_t size) const {
  std::array<char, 8> bytes{};
  stream->clear();
  if (at <= uint64_t{INT64_MAX} - bytes.size()) {
    stream->seekg(static_cast<std::streamoff>(at));
    stream->read(bytes.data(), static_cast<std::streamsize>(size));
  } else {
    stream->setstate(std::ios::failbit);
  }
  if (!*stream) return 0;
  uint64_t result = 0;
  for (size_t i = 0; i < size; ++i) result = result << 8 | static_cast<uint8_t>(bytes[is_big_endian ? i : size - 1 - i]);
  return result;
}

TiffDirectory::TiffDirectory(const Source& source, uint64_t at) : source_(source) {
  const size_t place_size = source.place_size();
  const uint64_t entries = source.entries(at);
  at += source.count_size();
  for (uint64_t i = 0; i < entries; ++i, at += source.entry_size()) {
    Entry entry = {static_cast<uint32_t>(source.number(at, 2)), static_cast<uint32_t>(source.number(at + 2, 2)),
                   source.number(at + 4, place_size), at + 4 + place_size};
    if (!*source.stream) return;
    const size_t size = size_of(entry.type);
    if (size == 0 || entry.count > UINT64_MAX / size) continue;
    if (entry.count * size > place_size) entry.at = source.number(entry.at, place_size);
    entries_.push_back(entry);
  }
}

uint64_t TiffDirectory::Source::entries(uint64_t at) const {
  constexpr uint64_t kMost = 4096;  // beyond any file that is not damaged
  const uint64_t count = number(at, count_size());
  return count <= kMost ? count : 0;
}

std::optional<TiffDirectory> TiffDirectory::of_page(std::istream& stream, int page) {
  constexpr uint64_t kLittleEndian = 0x4949, kBigEndian = 0x4D4D, kClassic = 42, kWide = 43;
  Source source = {&stream, false, false};
  const uint64_t order = source.number(0, 2);
  source.is_big_endian = order == kBigEndian;
  const uint64_t version = source.number(2, 2);
  source.is_wide = version == kWide;
  if ((order != kLittleEndian && order != kBigEndian) || (version != kClassic && version != kWide)) return std::nullopt;
  uint64_t at = source.is_wide ? source.number(8, 8) : source.number(4, 4);
  for (; page > 1 && at != 0; --page)
    at = source.number(at + source.count_size() + source.entries(at) * source.entry_size(), source.place_size());
  return at != 0 ? std::optional(TiffDirectory(source, at)) : std::nullopt;
}

const TiffDirectory::Entry* TiffDirectory::find(uint32_t tag) const {
  const auto found = std::ranges::find(entries_, tag, &Entry::tag);
  return found == entries_.end() ? nullptr : &*found;
}

std::optional<TiffDirectory> TiffDirectory::below(uint32_t tag) const {
  const auto at = number(tag);
  if (!at || *at < 1) return std::nullopt;
  return TiffDirectory(source_, static_cast<uint64_t>(*at));
}

std::optional<double> TiffDirectory::number(uint32_t tag, uint32_t index) const {
  const Entry* const entry = find(tag);
  if (entry == nullptr || index >= entry->count || entry->type == kText) return std::nullopt;
  const size_t size = size_of(entry->type);
  const bool is_signed =
      entry->type == kSignedByte || entry->type == kSignedShort || entry->type == kSignedLong || entry->type == kSignedRatio;
  const auto read = [&](uint64_t at, size_t bytes) {
    const uint64_t value = source_.number(at, bytes);
    return is_signed ? signed_value(value, bytes) : static_cast<double>(value);
  };
  const uint64_t at = entry->at + uint64_t{index} * size;
  double value = 0;
  if (entry->type == kRatio || entry->type == kSignedRatio) {
    const double below = read(at + 4, 4);
    value = below == 0 ? 0 : read(at, 4) / below;
  } else {
    value = read(at, size);
  }
  return *source_.stream ? std::optional(value) : std::nullopt;
}

uint64_t TiffDirectory::count(uint32_t tag) const {
  const Entry* const entry = find(tag);
  return entry == nullptr ? 0 : entry->count;
}

std::string TiffDirectory::text(uint32_t tag) const {
  constexpr uint64_t kLongest = 1000;
  const Entry* const entry = find(tag);
  if (entry == nullptr || entry->type != kText || entry->at > uint64_t{INT64_MAX}) return {};
  std::string text(static_cast<size_t>(std::min(entry->count, kLongest)), '\0');
  source_.stream->clear();
  source_.stream->seekg(static_cast<std::streamoff>(entry->at));
  source_.stream->read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(source_.stream->gcount()));
  return text;
}

}  // namespace vorel::programs
