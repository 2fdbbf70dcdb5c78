#include "tiff/directories.h"

#include <array>
#include <optional>
#include <unordered_set>

namespace codec {
namespace {

// Byte order and widths of the classic format and of the one for large files.
class Numbers {
 public:
  explicit Numbers(Bytes& bytes) : bytes_(bytes) {
    std::array<uint8_t, 2> order{};
    bytes_.read(0, order);
    is_big_endian_ = order[0] == 'M';
    if (order[0] != order[1] || (order[0] != 'I' && order[0] != 'M')) fail(IMG_E_FORMAT);
    const uint64_t version = number(2, 2).value_or(0);
    if (version != 42 && version != 43) fail(IMG_E_FORMAT);
    is_large_ = version == 43;
  }

  uint64_t first_link() const { return is_large_ ? 8 : 4; }
  std::optional<uint64_t> directory_at(uint64_t link) const { return number(link, is_large_ ? 8 : 4); }

  // The offset of the link to the next directory. None if the directory is invalid.
  std::optional<uint64_t> link_after(uint64_t directory) const {
    constexpr uint64_t kMostEntries = 65'535;
    const size_t count_bytes = is_large_ ? 8 : 2;
    const auto count = number(directory, count_bytes);
    if (!count || *count == 0 || *count > kMostEntries) return std::nullopt;
    const uint64_t link = directory + count_bytes + *count * (is_large_ ? 20 : 12);
    return link <= bytes_.size() ? std::optional(link) : std::nullopt;
  }

 private:
  std::optional<uint64_t> number(uint64_t offset, size_t width) const {
    std::array<uint8_t, 8> digits{};
    if (bytes_.read(offset, std::span(digits).first(width)) != width) return std::nullopt;
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) value = value << 8 | digits[is_big_endian_ ? i : width - 1 - i];
    return value;
  }

  Bytes& bytes_;
  bool is_big_endian_ = false, is_large_ = false;
};

}  // namespace

DirectoryChain follow_directories(Bytes& bytes, size_t most) {
  const Numbers numbers(bytes);
  std::unordered_set<uint64_t> seen;
  std::optional<uint64_t> link = numbers.first_link();
  while (true) {
    const auto directory = numbers.directory_at(*link);
    if (directory == 0) return {seen.size(), true};
    if (!directory || seen.size() == most || seen.contains(*directory)) break;
    link = numbers.link_after(*directory);
    if (!link) break;
    seen.insert(*directory);
  }
  return {seen.size(), false};
}

}  // namespace codec
