#include <algorithm>
#include <array>
#include <vector>

#include "kernels/bilevel/channels.h"
#include "kernels/bilevel/diffusion.h"
#include "kernels/bilevel/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

using Row = ErrorRow<int16_t>;
using Rows = ErrorRows<int16_t>;

constexpr int kChannels = 3;

// What three rows of bits make of a row of 4 bits per pixel: red in bit 3, green in bit 2, blue in bit 1.
void merge_bits(const std::array<std::vector<uint8_t>, kChannels>& bits, std::span<uint8_t> row, int width) {
  const auto bit = [&](size_t channel, int x) { return bits[channel][static_cast<size_t>(x / 8)] >> (7 - x % 8) & 1; };
  for (int x = 0; x < width; ++x) {
    const int pixel = bit(0, x) << 3 | bit(1, x) << 2 | bit(2, x) << 1;
    row[static_cast<size_t>(x / 2)] |= static_cast<uint8_t>(x % 2 == 0 ? pixel << 4 : pixel);
  }
}

// Runs a method that makes bits over the channels that a result needs: luminance for 1 bit, else red, green and blue.
class BitRows {
 public:
  explicit BitRows(DibView result) : result_(result) { bits_.fill(std::vector<uint8_t>(row_bytes(1, result.width()))); }

  int channels() const { return result_.depth() == 1 ? 1 : kChannels; }

  void make(int y, auto&& run) {
    if (result_.depth() == 1) return run(0, result_.row(y).data());
    for (int channel = 0; channel < kChannels; ++channel) {
      auto& bits = bits_[static_cast<size_t>(channel)];
      std::ranges::fill(bits, uint8_t{0});
      run(channel, bits.data());
    }
    merge_bits(bits_, result_.row(y), result_.width());
  }

 private:
  DibView result_;
  std::array<std::vector<uint8_t>, kChannels> bits_;
};

// ---- Floyd and Steinberg; Jarvis, Judice and Ninke ----

struct Errors {
  Row current, below, further;

  explicit Errors(size_t width) : current(width), below(width), further(width) {}
  Rows rows() { return {current.data(), below.data(), further.data()}; }
};

constexpr int kMostRed = 7, kMostGreen = 7;

// Makes numbers eight reds, eight greens and four blues, pixel by pixel.
template <class Method, int kMostBlue>
void index_row(std::vector<Errors>& errors, int width, uint8_t* indices) {
  const Rows red = errors[0].rows(), green = errors[1].rows(), blue = errors[2].rows();
  const auto quantized = [](const Rows& rows, int x, int step, int most) {
    const int value = rows.current[x], level = std::clamp(value / step, 0, most);
    const int error = static_cast<int16_t>(value - level * step);
    if (error != 0) Method::spread(rows, x, error);
    return level;
  };
  for (int x = 0; x < width; ++x) {
    const int r = quantized(red, x, 32, kMostRed), g = quantized(green, x, 32, kMostGreen),
              b = quantized(blue, x, 64, kMostBlue);
    indices[x] = static_cast<uint8_t>(r << 5 | g << 2 | b);
  }
}

// How a method makes rows of bits and of indices, and what it carries to the next row.
struct FourNeighbors {
  using ForBits = FloydSteinberg<0>;
  using ForIndices = FloydSteinberg<1>;
  static constexpr int kMostBlue = 3;

  // What is left of red goes on in all colours. Callers count on it.
  static void advance(std::vector<Errors>& errors, int channels) {
    for (int channel = 0; channel < channels; ++channel) errors[static_cast<size_t>(channel)].current.copy(errors[0].below);
  }
};

struct TwelveNeighbors {
  using ForBits = JarvisJudiceNinke<1, 3>;
  using ForIndices = ForBits;
  static constexpr int kMostBlue = 4;  // one more than there are: it counts as the lowest green

  static void advance(std::vector<Errors>& errors, int channels) {
    for (int channel = 0; channel < channels; ++channel) {
      Errors& rows = errors[static_cast<size_t>(channel)];
      rows.current.copy(rows.below);
      rows.below.copy(rows.further);
    }
  }
};

void read_channels(Channels& source, int y, int result_depth) {
  result_depth == 1 ? source.read_luminance(y) : source.read(y);
}

template <class Method>
void diffuse(Channels& source, DibView result) {
  BitRows bits(result);
  std::vector<Errors> errors(static_cast<size_t>(bits.channels()), Errors(source.width()));
  for (int y = 0; y < result.height(); ++y) {
    read_channels(source, y, result.depth());
    for (int channel = 0; channel < bits.channels(); ++channel)
      errors[static_cast<size_t>(channel)].current.add(source.plane(channel));
    if (result.depth() == 8) {
      index_row<typename Method::ForIndices, Method::kMostBlue>(errors, result.width(), result.row(y).data());
    } else {
      bits.make(y, [&](int channel, uint8_t* row) {
        threshold_row<typename Method::ForBits>(errors[static_cast<size_t>(channel)].rows(), result.width(), row);
      });
    }
    Method::advance(errors, bits.channels());
  }
}

// ---- Blocks of two by two ----

constexpr int kBlock = 4;
using Block = std::array<int, kBlock>;

// How many of a block are brighter than each, the earlier of two alike counting as brighter - but of the middle two alike, the later.
Block ranks_of(const Block& w) {
  const int b01 = w[1] > w[0], b02 = w[2] > w[0], b03 = w[3] > w[0], b12 = w[2] > w[1], b13 = w[3] > w[1], b23 = w[3] > w[2];
  Block ranks = {b01 + b02 + b03, 1 - b01 + b12 + b13, 2 - b02 - b12 + b23, 3 - b03 - b13 - b23};
  const int low = std::max(std::min(w[0], w[1]), std::min(w[2], w[3])),
            high = std::min(std::max(w[0], w[1]), std::max(w[2], w[3]));
  const int flip = low == high ? 3 : 0;  // of ranks 1 and 2
  for (int& rank : ranks) rank ^= rank == 1 || rank == 2 ? flip : 0;
  return ranks;
}

// Moves the light of each block of two by two pixels to its brightest ones, and what does not make them white to the block to the
// right, by half where it is sharpened.
template <bool kHalves>
void redistribute_row(int16_t* current, int16_t* below, int width, uint8_t* bits) {
  RowWriter<1> writer(bits, 0);
  int carried = 0;
  Block block = {0, current[0], 0, below[0]};
  for (int x = 0; x < width; ++x) {
    block = {block[1], current[x + 1], block[3], below[x + 1]};
    const int sum = block[0] + block[1] + block[2] + block[3] + carried;
    if (sum >= kBlock * kWhite) {
      block.fill(kWhite);  // paper, mostly: no need to rank
    } else {
      const Block ranks = ranks_of(block);
      for (size_t i = 0; i < kBlock; ++i) block[i] = std::clamp(sum - kWhite * ranks[i], 0, kWhite);
    }
    const bool is_white = block[0] == kWhite;
    writer.put(is_white ? 1 : 0);
    carried = is_white ? 0 : kHalves ? block[0] / 2 : block[0];
    below[x] = static_cast<int16_t>(block[2]);
  }
  current[width] = static_cast<int16_t>(block[1]);
  below[width] = static_cast<int16_t>(block[3]);
}

template <bool kHalves>
void redistribute(Channels& source, DibView result) {
  struct Pair {
    Row current, below;
  };
  const size_t width = source.width();
  BitRows bits(result);
  std::vector<Pair> pairs(static_cast<size_t>(bits.channels()), Pair{Row(width), Row(width)});
  const auto pair = [&](int channel) -> Pair& { return pairs[static_cast<size_t>(channel)]; };
  const auto load = [&](Row& row, int channel) { std::ranges::copy(source.plane(channel), row.data()); };
  const auto work = [&](int y) {
    bits.make(y, [&](int channel, uint8_t* row) {
      redistribute_row<kHalves>(pair(channel).current.data(), pair(channel).below.data(), result.width(), row);
    });
    for (int channel = 0; channel < bits.channels(); ++channel) pair(channel).current.copy(pair(channel).below);
  };

  // The first row meets itself before it meets the second. Its bits of that time are written over.
  read_channels(source, 0, result.depth());
  for (int channel = 0; channel < bits.channels(); ++channel) {
    load(pair(channel).current, channel);
    load(pair(channel).below, channel);
  }
  work(0);
  std::ranges::fill(result.row(0), uint8_t{0});
  for (int y = 0; y < result.height(); ++y) {
    if (y + 1 < result.height()) {
      read_channels(source, y + 1, result.depth());
      for (int channel = 0; channel < bits.channels(); ++channel) load(pair(channel).below, channel);
    }
    work(y);
  }
}

}  // namespace

void dither(ConstDibView picture, std::span<const Rgb> colors, DibView result, Dithering method) {
  Channels source(picture, colors);
  switch (method) {
    case Dithering::kFloydSteinberg: return diffuse<FourNeighbors>(source, result);
    case Dithering::kJarvisJudiceNinke: return diffuse<TwelveNeighbors>(source, result);
    case Dithering::kSmooth: return redistribute<false>(source, result);
    case Dithering::kSharp: return redistribute<true>(source, result);
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
