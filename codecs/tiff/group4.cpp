#include "tiff/group4.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

#include "core/row_bits.h"

namespace codec {
namespace {

struct Code {
  uint16_t bits = 0;
  uint8_t length = 0;
};

// Codes written as digits between spaces.
template <size_t kCount>
constexpr std::array<Code, kCount> codes(std::string_view text) {
  std::array<Code, kCount> codes{};
  size_t i = 0;
  for (const char digit : text) {
    if (digit == ' ') {
      ++i;
    } else {
      codes.at(i).bits = static_cast<uint16_t>(codes.at(i).bits << 1 | (digit - '0'));
      ++codes.at(i).length;
    }
  }
  if (i != kCount - 1) throw "wrong number of codes";
  return codes;
}

// The codes of runs of one colour: of 0 to 63 pixels, and of whole multiples of 64 in front of these.
constexpr int kShortRuns = 64, kLongRunUnit = 64, kLongestRun = 2'560;
constexpr size_t kLongRuns = kLongestRun / kLongRunUnit + 1, kSharedLongRuns = 13;
struct RunCodes {
  std::array<Code, kShortRuns> short_runs{};
  std::array<Code, kLongRuns> long_runs{};  // the first is empty
};

// The longest runs have the same codes in both colours.
constexpr RunCodes run_codes(std::string_view short_runs, std::string_view long_runs) {
  RunCodes result{.short_runs = codes<kShortRuns>(short_runs)};
  const auto own = codes<kLongRuns - kSharedLongRuns>(long_runs);
  const auto shared = codes<kSharedLongRuns>(
      "00000001000 00000001100 00000001101 000000010010 000000010011 000000010100 000000010101 000000010110 000000010111 "
      "000000011100 000000011101 000000011110 000000011111");
  std::ranges::copy(shared, std::ranges::copy(own, result.long_runs.begin()).out);
  return result;
}

constexpr RunCodes kWhite = run_codes(
    "00110101 000111 0111 1000 1011 1100 1110 1111 10011 10100 00111 01000 001000 000011 110100 110101 101010 "
    "101011 0100111 0001100 0001000 0010111 0000011 0000100 0101000 0101011 0010011 0100100 0011000 00000010 "
    "00000011 00011010 00011011 00010010 00010011 00010100 00010101 00010110 00010111 00101000 00101001 "
    "00101010 00101011 00101100 00101101 00000100 00000101 00001010 00001011 01010010 01010011 01010100 "
    "01010101 00100100 00100101 01011000 01011001 01011010 01011011 01001010 01001011 00110010 00110011 "
    "00110100",
    " 11011 10010 010111 0110111 00110110 00110111 01100100 01100101 01101000 01100111 011001100 011001101 "
    "011010010 011010011 011010100 011010101 011010110 011010111 011011000 011011001 011011010 011011011 "
    "010011000 010011001 010011010 011000 010011011");
constexpr RunCodes kBlack = run_codes(
    "0000110111 010 11 10 011 0011 0010 00011 000101 000100 0000100 0000101 0000111 00000100 00000111 000011000 "
    "0000010111 0000011000 0000001000 00001100111 00001101000 00001101100 00000110111 00000101000 00000010111 "
    "00000011000 000011001010 000011001011 000011001100 000011001101 000001101000 000001101001 000001101010 "
    "000001101011 000011010010 000011010011 000011010100 000011010101 000011010110 000011010111 000001101100 "
    "000001101101 000011011010 000011011011 000001010100 000001010101 000001010110 000001010111 000001100100 "
    "000001100101 000001010010 000001010011 000000100100 000000110111 000000111000 000000100111 000000101000 "
    "000001011000 000001011001 000000101011 000000101100 000001011010 000001100110 000001100111",
    " 0000001111 000011001000 000011001001 000001011011 000000110011 000000110100 000000110101 0000001101100 "
    "0000001101101 0000001001010 0000001001011 0000001001100 0000001001101 0000001110010 0000001110011 "
    "0000001110100 0000001110101 0000001110110 0000001110111 0000001010010 0000001010011 0000001010100 "
    "0000001010101 0000001011010 0000001011011 0000001100100 0000001100101");

constexpr Code kPass{0b0001, 4}, kHorizontal{0b001, 3}, kEndOfLine{1, 12};
// For a change that lies 3 pixels right of the change above, to 3 pixels left.
constexpr int kFarthest = 3;
constexpr auto kVertical = codes<2 * kFarthest + 1>("0000011 000011 011 1 010 000010 0000010");

// What ends a row's changes: the coder looks this far ahead.
constexpr size_t kEnds = 4;

constexpr int kWordBits = 64;

// Collects bits, the high one first. The bytes must have room.
class BitWriter {
 public:
  BitWriter(uint8_t* bytes, uint64_t pending, int pending_bits)
      : bytes_(bytes), pending_(pending), pending_bits_(pending_bits) {}

  void put(uint32_t bits, int length) {
    pending_ = pending_ << length | bits;
    pending_bits_ += length;
    if (pending_bits_ >= kUnitBits) {
      pending_bits_ -= kUnitBits;
      const uint32_t unit = __builtin_bswap32(static_cast<uint32_t>(pending_ >> pending_bits_));
      std::memcpy(bytes_, &unit, sizeof unit);
      bytes_ += sizeof unit;
    }
  }
  void put(Code code) { put(code.bits, code.length); }

  void put_run(const RunCodes& codes, int length) {
    for (; length >= kLongestRun + kLongRunUnit; length -= kLongestRun) put(codes.long_runs.back());
    const Code& multiple = codes.long_runs[static_cast<size_t>(length / kLongRunUnit)];
    const Code& rest = codes.short_runs[static_cast<size_t>(length % kLongRunUnit)];
    put(static_cast<uint32_t>(multiple.bits) << rest.length | rest.bits, multiple.length + rest.length);
  }

  uint8_t* bytes() const { return bytes_; }
  uint64_t pending() const { return pending_; }
  int pending_bits() const { return pending_bits_; }

 private:
  static constexpr int kUnitBits = 32;

  uint8_t* bytes_;
  uint64_t pending_;
  int pending_bits_;
};

}  // namespace

Group4Encoder::Group4Encoder(int width, bool white_bit)
    : width_(width),
      white_word_(white_bit ? ~uint64_t{0} : 0),
      above_(kEnds, width),
      changes_(static_cast<size_t>(width) + kEnds) {
  above_.resize(changes_.size());
}

void Group4Encoder::add_row(std::span<const uint8_t> row) {
  find_changes(row);
  encode_changes();
  std::swap(above_, changes_);
  above_count_ = count_;
}

void Group4Encoder::find_changes(std::span<const uint8_t> row) {
  int* next = changes_.data();
  uint64_t last = 0;  // the pixel before, at first white
  for (int64_t x = 0; x < width_; x += kWordBits) {
    const uint64_t black = vorel::pixels_at(row, static_cast<size_t>(x) / 8) ^ white_word_;
    uint64_t changed = black ^ (black >> 1 | last << (kWordBits - 1));
    last = black & 1;
    if (width_ - x < kWordBits) changed &= ~(~uint64_t{0} >> (width_ - x));
    while (changed != 0) {
      const int place = std::countl_zero(changed);
      *next++ = static_cast<int>(x) + place;
      changed ^= uint64_t{1} << (kWordBits - 1 - place);
    }
  }
  count_ = static_cast<size_t>(next - changes_.data());
  std::fill_n(next, kEnds, width_);
}

void Group4Encoder::encode_changes() {
  // A change takes at most 28 bits, a horizontal code and a run; the longest runs take 12 bits more each. Passes take 4 for two changes
  // above. The spare units have room for pending bits.
  const size_t most_bytes =
      (count_ + above_count_ + kEnds) * sizeof(uint32_t) + static_cast<size_t>(width_) / kLongestRun * 2;
  if (bytes_.size() - size_ < most_bytes)
    bytes_.resize(std::max(bytes_.size() + bytes_.size() / 2, bytes_.size() + most_bytes));
  BitWriter writer(bytes_.data() + size_, pending_, pending_bits_);

  const int* change = changes_.data();
  const int* above = above_.data();
  bool is_black = false;
  for (int start = 0; start < width_;) {
    if (above[1] < change[0]) {
      writer.put(kPass);
      start = above[1];
    } else if (const int offset = above[0] - change[0]; offset >= -kFarthest && offset <= kFarthest) {
      writer.put(kVertical[static_cast<size_t>(offset + kFarthest)]);
      start = *change++;
      is_black = !is_black;
      above = above == above_.data() ? above + 1 : above - 1;
    } else {
      writer.put(kHorizontal);
      writer.put_run(is_black ? kBlack : kWhite, change[0] - start);
      writer.put_run(is_black ? kWhite : kBlack, change[1] - change[0]);
      start = change[1];
      change += 2;
    }
    // The first change above to the other colour, right of the start.
    while (*above <= start && *above < width_) above += 2;
  }
  size_ = static_cast<size_t>(writer.bytes() - bytes_.data());
  pending_ = writer.pending();
  pending_bits_ = writer.pending_bits();
}

std::vector<uint8_t> Group4Encoder::finish() {
  bytes_.resize(size_ + 3 * sizeof(uint32_t));
  BitWriter writer(bytes_.data() + size_, pending_, pending_bits_);
  writer.put(kEndOfLine);
  writer.put(kEndOfLine);
  const int padding = -(writer.pending_bits()) & 7;
  writer.put(0, padding);
  const auto whole = static_cast<size_t>(writer.bytes() - bytes_.data());
  const int rest = writer.pending_bits();
  bytes_.resize(whole);
  for (int shift = rest - 8; shift >= 0; shift -= 8) bytes_.push_back(static_cast<uint8_t>(writer.pending() >> shift));
  return std::move(bytes_);
}

}  // namespace codec
