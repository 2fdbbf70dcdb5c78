#include "support/plain_tone.h"

#include <array>
#include <cmath>

#include "support/picture.h"

namespace test {

namespace {

int clamped(int value, int low, int high) { return std::min(std::max(value, low), high); }

void write_ramp(Picture& picture) {
  for (int k = 0; k < std::min<int>(256, static_cast<int>(picture.colors)); ++k) picture.set_color(k, k, k, k);
}

// The source itself, or an empty picture of the same header and size.
Picture target_of(const Picture& source, bool copied) {
  return copied ? Picture::empty(source.header, source.head + source.image_size()) : source;
}

}  // namespace

Bytes plain_histogram(const Bytes& dib, int x, int y) {
  const Picture source(dib);
  const int width = std::min(source.width, 256), height = std::min(source.height, 256);
  x = clamped(x, 0, source.width - width);
  y = clamped(y, 0, source.height - height);
  std::array<uint16_t, 256> counts{};
  for (int row = y; row < y + height; ++row)
    for (int column = x; column < x + width; ++column)
      ++counts[static_cast<size_t>(source.at(source.index(column, source.height - 1 - row)))];
  Bytes block(sizeof counts);
  std::memcpy(block.data(), counts.data(), block.size());
  return block;
}

Bytes plain_table(const Bytes& histogram, int contrast, int brightness) {
  uint32_t count = 0, sum = 0;
  for (uint32_t i = 0; i < histogram.size() / 2; ++i) {
    const uint32_t counter = histogram[2 * i] + histogram[2 * i + 1] * 256u;
    count += counter;
    sum += counter * i;
  }
  const double mean = count == 0 ? 128 : sum / count, c = contrast;
  Bytes table;
  for (int i = 0; i < 256; ++i) {
    const double level = std::trunc((i * (c + 255) - mean * c) * 0.00392156862745098 + brightness);
    table.push_back(static_cast<uint8_t>(std::min(std::max(level, 0.0), 255.0)));
  }
  return table;
}

Bytes plain_lookup(const Bytes& dib, const Bytes& table, bool copied) {
  const Picture source(dib);
  Picture result = target_of(source, copied);
  write_ramp(result);
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) {
      const int value = source.at(source.index(x, y));
      const int mean = (source.color(value, 0) + source.color(value, 1) + source.color(value, 2) + 1) / 3;
      result.put(result.index(x, y), table[static_cast<size_t>(mean)]);
    }
  return result.bytes;
}

Bytes plain_brightness(const Bytes& dib, int brightness, int contrast) {
  const Picture source(dib);
  const int added = brightness * 128 / 100, pivot = contrast * 128 / 100;
  const auto changed = [&](int value) {
    const double level = clamped(value + added, 0, 255) * (contrast + 100) * 0.01 - pivot;
    return level > 255 ? 255 : level < 0 ? 0 : static_cast<int>(level);
  };
  Picture result = target_of(source, true);
  result.copy(40, source, 40, source.colors * 4);
  if (source.depth == 24) {
    for (int y = 0; y < source.height; ++y)
      for (int x = 0; x < source.width; ++x)
        for (size_t i = 0; i < 3; ++i) result.put(result.index(x, y) + i, changed(source.at(source.index(x, y) + i)));
  } else {
    for (size_t i = 0; i < source.colors * 4; ++i)
      if (i % 4 != 3) result.put(40 + i, changed(source.at(40 + i)));
    result.copy(result.head, source, source.head, source.image_size());
  }
  return result.bytes;
}

Bytes plain_24_bits(const Bytes& dib) {
  const Picture source(dib);
  BITMAPINFOHEADER header = header_for(source.width, source.height, 24);
  const size_t stride = stride_of(source.width, 24), rows = static_cast<size_t>(source.height);
  header.biSizeImage = static_cast<uint32_t>(static_cast<uint16_t>(stride) * rows);
  header.biXPelsPerMeter = source.header.biXPelsPerMeter;
  header.biYPelsPerMeter = source.header.biYPelsPerMeter;
  Picture result = Picture::empty(header, sizeof header + stride * rows);
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x)
      for (int i = 0; i < 3; ++i)
        result.put(result.index(x, y) + static_cast<size_t>(i), source.color(source.at(source.index(x, y)), i));
  return result.bytes;
}

Bytes kernel_file(const std::vector<int>& kernel, size_t number_bytes) {
  Bytes bytes;
  for (int value : kernel)
    for (size_t i = 0; i < number_bytes; ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
  return bytes;
}

namespace {

struct Kernel {
  std::vector<int> coefficients;  // from the row above and the left neighbour on
  int divisor;
  bool is_clamping;
};

Kernel built_in(const PlainFilter& filter) {
  const bool three = filter.size == 3;
  const auto cells = static_cast<size_t>(filter.size * filter.size);
  switch (filter.type) {
    case 3: return {std::vector<int>(cells, 1), filter.size * filter.size, false};
    case 4:
      if (three) return {{1, 2, 1, 2, 4, 2, 1, 2, 1}, 16, false};
      return {{0, 1, 1, 1, 0, 1, 2, 4, 2, 1, 1, 4, 8, 4, 1, 1, 2, 4, 2, 1, 0, 1, 1, 1, 0}, 44, false};
    case 5:
      if (three) return {{0, -1, 0, -1, 5, -1, 0, -1, 0}, 1, true};
      return {{-1, -2, -1, -2, -1, -2, 1, 3, 1, -2, -1, 3, 9, 3, -1, -2, 1, 3, 1, -2, -1, -2, -1, -2, -1}, 1, true};
    default:
      if (three) return {{-1, -1, -1, -1, 9, -1, -1, -1, -1}, 1, true};
      return {{-1, -2, -4, -2, -1, -2, 1, 4, 1, -2, -4, 4, 17, 4, -4, -2, 1, 4, 1, -2, -1, -2, -4, -2, -1}, 1, true};
  }
}

Kernel kernel_of(const PlainFilter& filter) {
  if (filter.type > 2) return built_in(filter);
  Kernel kernel{filter.kernel, filter.kernel.back(), false};
  kernel.coefficients.pop_back();
  int positive = 0, negative = 0;
  for (int c : kernel.coefficients) (c > 0 ? positive : negative) += std::abs(c);
  kernel.is_clamping = positive != 0 && negative != 0;
  if (kernel.divisor == 0) kernel.divisor = positive != negative ? positive - negative : 1;
  if (kernel.divisor < 0) {
    kernel.divisor = -kernel.divisor;
    for (int& c : kernel.coefficients) c = -c;
  }
  return kernel;
}

// The sum around a pixel of a plane with value(x, y) at each; rows are counted as they are stored.
template <class Value>
int sum_around(int x, int y, int width, int height, const PlainFilter& filter, const Kernel& kernel, Value value) {
  const int half = filter.size / 2;
  int sum = 0;
  for (int i = 0; i < filter.size; ++i) {
    const int row = clamped(y + half - i, 0, height - 1);
    const int* line = &kernel.coefficients[static_cast<size_t>(i * filter.size)];
    for (int j = 0; j < filter.size; ++j) sum += line[j] * value(clamped(x + j - half, 0, width - 1), row);
    if (filter.size == 5 && (filter.type == 4 || filter.type == 6) && width > 1) {
      if (x == 0) sum += line[4] * value(1, row);
      if (x == 2) sum += line[0] * value(1, row);
    }
  }
  return sum;
}

int shift_of(int divisor) {
  for (int shift = 0; shift <= 6; ++shift)
    if (divisor == 1 << shift) return shift;
  return -1;
}

}  // namespace

Bytes plain_convolution(const Bytes& dib, bool copied, const PlainFilter& filter) {
  const Picture source(dib);
  const Kernel kernel = kernel_of(filter);
  Picture result = target_of(source, copied);
  write_ramp(result);
  const int shift = shift_of(kernel.divisor);
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) {
      int sum = sum_around(x, y, source.width, source.height, filter, kernel,
                           [&](int column, int row) { return source.at(source.index(column, row)); });
      if (kernel.is_clamping) sum = clamped(sum, 0, 255);
      const auto quotient = shift >= 0 ? static_cast<uint32_t>(sum) >> shift : static_cast<uint32_t>(sum / kernel.divisor);
      result.put(result.index(x, y), static_cast<int>(quotient & 0xFF));
    }
  return result.bytes;
}

Bytes plain_color_convolution(const Bytes& dib, bool copied, int intensity_mode, const PlainFilter& filter) {
  const Picture source(dib);
  const Kernel kernel = kernel_of(filter);
  Picture result = target_of(source, copied);
  const int shift = shift_of(kernel.divisor);
  const auto intensity = [&](int x, int y) {
    const size_t i = source.index(x, y);
    const int blue = source.at(i), green = source.at(i + 1), red = source.at(i + 2);
    return intensity_mode == 1 ? (8 * blue + 15 * green + 3 * red) / 26 : (blue + green + red) / 3;
  };
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) {
      const auto sum = static_cast<int16_t>(sum_around(x, y, source.width, source.height, filter, kernel, intensity));
      const int quotient = shift >= 0 ? sum >> shift : sum / static_cast<int16_t>(kernel.divisor);
      const auto change = static_cast<int16_t>(quotient - intensity(x, y));
      for (size_t i = 0; i < 3; ++i)
        result.put(result.index(x, y) + i, clamped(source.at(source.index(x, y) + i) + change, 0, 255));
    }
  return result.bytes;
}

namespace {

int luminance(int blue, int green, int red, bool weighted) {
  return weighted ? (8 * red + 15 * green + 3 * blue) / 26 : (blue + green + red) / 3;
}

// How much spare there is behind the rows of a result that can be smoothed.
size_t slack_of(int width) { return (static_cast<size_t>(width) * 40 + 155) / 32 * 4; }

const std::vector<int> kSpread[] = {{255}, {8, 31, 8, 31, 99, 31, 8, 31, 8}, {0,  3, 7, 3,  0,  3,  16, 25, 16, 3, 7, 25, 39,
                                                                              25, 7, 3, 16, 25, 16, 3,  0,  3,  7, 3, 0}};

// A row goes on with its first four pixels to the left, and to the right with the last four bits of its last byte.
bool bit(const Picture& source, int x, int y, bool inverted) {
  const int bits = (source.width + 7) / 8 * 8;
  x = x < 0 ? x + 4 : x >= bits ? x - 4 : x;
  return (source.at(source.index(x, y)) >> (7 - x % 8) & 1) != inverted;
}

void expand(const Picture& source, int grade, bool inverted, Picture& result) {
  if (grade == 2) grade = source.height < 4 ? 0 : source.height < 6 ? 1 : 2;
  const int side = 2 * grade + 1;
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) {
      int sum = 0;
      for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; ++j)
          if (bit(source, x + j - grade, std::max(y - 2 * grade + i, 0), inverted))
            sum += kSpread[grade][static_cast<size_t>(i * side + j)];
      result.put(result.index(x, y), sum);
    }
}

}  // namespace

Bytes plain_gray(const Bytes& dib, int grade, bool weighted) {
  const Picture source(dib);
  const bool has_pixel_values = source.depth == 4 || source.depth == 8;
  BITMAPINFOHEADER header = source.header;
  header.biBitCount = source.depth == 4 ? 4 : 8;
  header.biClrUsed = source.depth == 4 ? 16 : 256;
  header.biSizeImage =
      static_cast<uint32_t>(stride_of(source.width, header.biBitCount)) * static_cast<uint32_t>(source.height);
  const size_t slack = has_pixel_values ? 0 : slack_of(source.width);
  Picture result = Picture::empty(header, 40 + 4 * header.biClrUsed + header.biSizeImage + slack);
  if (has_pixel_values) {
    for (int k = 0; k < static_cast<int>(std::min(source.colors, result.colors)); ++k) {
      const int gray = luminance(source.color(k, 0), source.color(k, 1), source.color(k, 2), weighted);
      result.set_color(k, gray, gray, gray);
    }
    result.copy(result.head, source, source.head, header.biSizeImage);
    return result.bytes;
  }
  write_ramp(result);
  if (source.depth == 1) {
    expand(source, grade, false, result);
    return result.bytes;
  }
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) {
      const size_t i = source.index(x, y);
      result.put(result.index(x, y), luminance(source.at(i), source.at(i + 1), source.at(i + 2), weighted));
    }
  return result.bytes;
}

Bytes plain_mono_gray(const Bytes& dib, int grade) {
  const Picture source(dib);
  const auto product = [&](int k) { return source.color(k, 0) * source.color(k, 1) * source.color(k, 2); };
  BITMAPINFOHEADER header = header_for(source.width, source.height, 8);
  header.biSizeImage = static_cast<uint32_t>(stride_of(source.width, 8)) * static_cast<uint32_t>(source.height);
  header.biXPelsPerMeter = source.header.biXPelsPerMeter;
  header.biYPelsPerMeter = source.header.biYPelsPerMeter;
  Picture result = Picture::empty(header, 1064 + header.biSizeImage + slack_of(source.width));
  for (int k = 0; k < 256; ++k) result.set_color(k, 255 - k, 255 - k, 255 - k);
  expand(source, grade, product(0) < product(1), result);
  return result.bytes;
}

namespace {

// Bits and bytes around a pixel are found by their distance in the block, whatever row they belong to.
int bit_at(const Picture& source, size_t position) { return source.at(position / 8) >> (7 - position % 8) & 1; }

void clean_bits(const Picture& source, int level, bool full, Picture& result) {
  const int threshold = level * 8 / 100;
  const int end = source.width % 8 == 0 ? source.width : source.width - 1;
  for (int y = 1; y < source.height - 1; ++y)
    for (int x = 1; x < end; ++x) {
      const size_t line = source.stride * 8, position = source.index(0, y) * 8 + static_cast<size_t>(x);
      int set = bit_at(source, position - 1) + bit_at(source, position + 1);
      for (const size_t row : {position - line, position + line})
        set += bit_at(source, row - 1) + bit_at(source, row) + bit_at(source, row + 1);
      if ((!full && set >= 4) || set == threshold) continue;
      const int mask = 0x80 >> position % 8, others = result.at(position / 8) & ~mask;
      result.put(position / 8, set > threshold ? others | mask : others);
    }
}

void rank_bytes(const Picture& source, int level, bool full, Picture& result) {
  const int rank = std::min(level * 9 / 100, 8);
  for (int y = 1; y < source.height - 1; ++y)
    for (int x = 1; x < source.width - 1; ++x) {
      const size_t i = source.index(x, y), s = source.stride;
      if (!full && source.at(i) >= 5 && source.at(i) <= 250) continue;
      std::array<int, 8> neighbors{};
      size_t count = 0;
      for (const size_t j : {i + 1, i - 1, i + s + 1, i + s - 1, i - s + 1, i - s - 1, i + s, i - s})
        neighbors[count++] = source.at(j);
      std::sort(neighbors.begin(), neighbors.end());
      result.put(i, neighbors[static_cast<size_t>(rank - 1)]);
    }
}

}  // namespace

Bytes plain_cleaning(const Bytes& dib, int level, bool full) {
  const Picture source(dib);
  if (source.depth != 1 && source.depth != 8) return {};
  for (int k = 0; k < 1 << source.depth; ++k)
    if (source.color(k, 0) != source.color(k, 1) || source.color(k, 1) != source.color(k, 2)) return {};
  const int adjusted = source.color(0, 0) == 0 ? 120 - level : level;
  Picture result = source;
  if (source.depth == 1)
    clean_bits(source, adjusted, full, result);
  else
    rank_bytes(source, 120 - adjusted, full, result);
  return result.bytes;
}

}  // namespace test
