#include "support/plain_bilevel.h"

#include <array>

#include "support/picture.h"

namespace test {

namespace {

// Entries from some way before the first pixel of a row to some way after its last.
template <class Number>
struct ErrorRow {
  std::vector<Number> cells;

  explicit ErrorRow(int width) : cells(static_cast<size_t>(width + 20)) {}
  Number& operator[](int x) { return cells[static_cast<size_t>(x + 8)]; }
  void add(int x, int value) { (*this)[x] = static_cast<Number>((*this)[x] + value); }
  void set(int x, int value) { (*this)[x] = static_cast<Number>(value); }
  void take(ErrorRow& other, int width) {
    for (int x = 0; x < width; ++x) (*this)[x] = other[x];
  }
};

// The rows of one channel: the current one and those that follow.
template <class Number>
using Rows = std::array<ErrorRow<Number>, 3>;

int luminance(int red, int green, int blue) { return (30 * red + 59 * green + 11 * blue) / 100; }

Picture empty_result(const Picture& source, int bits) {
  BITMAPINFOHEADER header = header_for(source.width, source.height, bits);
  const size_t rows = stride_of(source.width, bits) * static_cast<size_t>(source.height);
  header.biSizeImage = static_cast<uint32_t>(rows);
  header.biXPelsPerMeter = source.header.biXPelsPerMeter;
  header.biYPelsPerMeter = source.header.biYPelsPerMeter;
  header.biClrUsed = 1u << bits;
  return Picture::empty(header, sizeof header + (size_t{4} << bits) + rows);
}

void write_table(Picture& result) {
  for (int i = 0; i < 1 << result.depth; ++i) {
    if (result.depth == 1) result.set_color(i, 255 * i, 255 * i, 255 * i);
    if (result.depth == 8) result.set_color(i, (i & 3) * 85, (i >> 2 & 7) * 36, (i >> 5) * 36);
    if (result.depth != 4) continue;
    result.set_color(i, (i & 2) != 0 ? 255 : 0, (i & 4) != 0 ? 255 : 0, (i & 8) != 0 ? 255 : 0);
    result.put(static_cast<size_t>(43 + 4 * i), (i & 1) != 0 ? 255 : 0);
  }
}

struct Dither {
  Picture source;
  PlainDither kind;
  int bits, channels = bits == 1 ? 1 : 3;
  int unit = source.depth == 4 ? 8 : 4, plane_width = (source.width + unit - 1) / unit * unit;
  Picture result = empty_result(source, bits);
  std::array<std::vector<int>, 3> planes{};
  std::vector<Rows<int16_t>> rows{};

  Bytes run();
  void extract(int y);
  void write(int x, int y, int channel, int level);
  void diffuse(int y, int channel);
  void advance(int channel);
  void redistribute(int y, int channel, bool is_written);
  void run_redistribution();
};

void Dither::extract(int y) {
  const size_t table = source.depth == 24 ? 0 : size_t{4} << source.depth;
  const size_t row = sizeof source.header + table + static_cast<size_t>(y) * source.stride;
  for (int x = 0; x < plane_width; ++x) {
    const auto column = static_cast<size_t>(x);
    std::array<int, 3> color{};
    for (int c = 0; c < 3; ++c) {
      int& level = color[static_cast<size_t>(c)];
      if (source.depth == 24) level = x < source.width ? source.at(row + 3 * column + static_cast<size_t>(2 - c)) : 0;
      if (source.depth == 8) level = source.color(source.at(row + column), 2 - c);
      if (source.depth == 4) level = source.color(source.at(row + column / 2) >> (x % 2 == 0 ? 4 : 0) & 15, 2 - c);
    }
    if (bits == 1) color[0] = luminance(color[0], color[1], color[2]);
    for (size_t c = 0; c < 3; ++c) planes[c][column] = color[c];
  }
}

void Dither::write(int x, int y, int channel, int level) {
  const int shift = bits == 1      ? 7 - x % 8
                    : bits == 4    ? 3 - channel + (x % 2 == 0 ? 4 : 0)
                    : channel == 0 ? 5
                    : channel == 1 ? 2
                                   : 0;
  const size_t i = result.head + static_cast<size_t>(y) * result.stride + static_cast<size_t>(x * bits / 8);
  result.put(i, result.at(i) | level << shift);
}

void Dither::diffuse(int y, int channel) {
  auto& [current, first, second] = rows[static_cast<size_t>(channel)];
  for (int x = 0; x < plane_width; ++x) current.add(x, planes[static_cast<size_t>(channel)][static_cast<size_t>(x)]);
  for (int x = 0; x < source.width; ++x) {
    const int v = current[x], step = bits < 8 ? 255 : channel == 2 ? 64 : 32;
    const int highest = channel < 2 ? 7 : kind == PlainDither::jarvis ? 4 : 3;
    const int level = bits < 8 ? (v > 128 ? 1 : 0) : std::min(std::max(v / step, 0), highest);
    const int e = v - level * step;
    write(x, y, channel, level);
    if (e == 0) continue;
    if (kind == PlainDither::floyd_steinberg) {
      current.add(x + 1, e * 7 / 16);
      for (int i = 0; const int weight : {3, 5, 1}) first.set(x - (bits == 8 ? 2 : 1) + i++, e * weight / 16);
    } else {
      for (int i = 1; const int weight : {7, 5}) current.add(x + i++, e * weight / 48);
      for (int i = -2; const int weight : {3, 5, 7, 5, 3}) first.add(x + i++, e * weight / 48);
      for (int i = -2; const int weight : {1, 3, 5, 1, 3}) second.set(x + i++, e * weight / 48);
    }
  }
}

void Dither::advance(int channel) {
  auto& [current, first, second] = rows[static_cast<size_t>(channel)];
  if (kind == PlainDither::floyd_steinberg) {
    current.take(rows[0][1], plane_width);
  } else {
    current.take(first, plane_width);
    first.take(second, plane_width);
  }
}

std::array<size_t, 4> ranked(const std::array<int, 4>& w) {
  size_t brightest = 0, darkest = 0;
  for (size_t i = 1; i < 4; ++i) {
    if (w[i] > w[brightest]) brightest = i;
    if (w[i] <= w[darkest]) darkest = i;
  }
  std::array<size_t, 2> others{};
  for (size_t i = 0, count = 0; i < 4; ++i)
    if (i != brightest && i != darkest) others[count++] = i;
  if (w[others[0]] <= w[others[1]]) std::swap(others[0], others[1]);
  return {brightest, others[0], others[1], darkest};
}

void Dither::redistribute(int y, int channel, bool is_written) {
  auto& current = rows[static_cast<size_t>(channel)][0];
  auto& following = rows[static_cast<size_t>(channel)][1];
  int carry = 0, negative = 0;
  for (int x = 0; x < source.width; ++x) {
    std::array<int, 4> w = {current[x], current[x + 1], following[x], following[x + 1]};
    int sum = static_cast<int16_t>(w[0] + w[1] + w[2] + w[3] + negative + carry);
    negative = std::min(sum, 0);
    sum = std::max(sum, 0);
    int left = sum / 255;
    const std::array<size_t, 4> order = ranked(w);
    for (size_t i : order) {
      w[i] = left > 0 ? 255 : left == 0 ? sum % 255 : 0;
      --left;
    }
    if (is_written) write(x, y, channel, w[0] == 255 ? 1 : 0);
    carry = w[0] == 255 ? 0 : w[0];
    if (kind == PlainDither::sharp) carry /= 2;
    current.set(x, w[0]);
    current.set(x + 1, w[1]);
    following.set(x, w[2]);
    following.set(x + 1, w[3]);
  }
}

void Dither::run_redistribution() {
  const auto for_channels = [&](auto work) {
    for (int c = 0; c < channels; ++c) work(c, rows[static_cast<size_t>(c)]);
  };
  const auto store = [&](int channel, ErrorRow<int16_t>& row) {
    for (int x = 0; x < plane_width; ++x) row.set(x, planes[static_cast<size_t>(channel)][static_cast<size_t>(x)]);
  };
  extract(0);
  for_channels([&](int c, Rows<int16_t>& of) {
    store(c, of[0]);
    store(c, of[1]);
    redistribute(0, c, false);
    of[0].take(of[1], plane_width);
  });
  if (source.height > 1) extract(1);
  for (int y = 0; y < source.height; ++y) {
    for_channels([&](int c, Rows<int16_t>& of) {
      if (y != source.height - 1) store(c, of[1]);
      redistribute(y, c, true);
      of[0].take(of[1], plane_width);
    });
    if (y < source.height - 2) extract(y + 2);
  }
}

Bytes Dither::run() {
  for (auto& plane : planes) plane.resize(static_cast<size_t>(plane_width));
  const ErrorRow<int16_t> row(plane_width);
  rows.assign(3, {row, row, row});
  write_table(result);
  if (kind == PlainDither::smooth || kind == PlainDither::sharp) {
    run_redistribution();
    return result.bytes;
  }
  for (int y = 0; y < source.height; ++y) {
    extract(y);
    for (int c = 0; c < channels; ++c) diffuse(y, c);
    for (int c = 0; c < channels; ++c) advance(c);
  }
  return result.bytes;
}

// ---- Halftoning

using Matrix = std::vector<std::vector<int>>;

Matrix doubled(const Matrix& matrix) {
  const size_t n = matrix.size();
  Matrix result(2 * n, std::vector<int>(2 * n));
  for (size_t i = 0; i < 2 * n; ++i)
    for (size_t j = 0; j < 2 * n; ++j) result[i][j] = 4 * matrix[i % n][j % n] + (i < n ? (j < n ? 0 : 2) : (j < n ? 3 : 1));
  return result;
}

// Luminances of a whole picture, rows of `stride` entries.
struct Luminances {
  size_t stride;
  std::vector<int> values;
};

Luminances luminances(const Picture& source) {
  const auto height = static_cast<size_t>(source.height);
  Luminances result{source.depth == 4 ? 2 * source.stride : source.stride, {}};
  result.values.resize(result.stride * height);
  const auto indexed = [&](int i) { return luminance(source.color(i, 2), source.color(i, 1), source.color(i, 0)); };
  if (source.depth == 24) {
    const auto width = static_cast<size_t>((source.width + 3) / 4 * 4);
    for (size_t i = 0; i < width * height; ++i) {
      const size_t from = source.head + i / width * source.stride + i % width * 3;
      result.values[i] = luminance(source.at(from + 2), source.at(from + 1), source.at(from));
    }
  } else {
    for (size_t i = 0; i < result.values.size(); ++i)
      result.values[i] = indexed(source.depth == 8 ? source.at(source.head + i)
                                                   : source.at(source.head + i / 2) >> (i % 2 == 0 ? 4 : 0) & 15);
  }
  return result;
}

void diffuse_all(const Luminances& light, Picture& result) {
  const int stride = static_cast<int>(light.stride);
  const ErrorRow<int32_t> row(stride);
  auto [current, first, second] = Rows<int32_t>{row, row, row};
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x)
      current.add(x, light.values[static_cast<size_t>(y) * light.stride + static_cast<size_t>(x)]);
    for (int x = 0; x < result.width; ++x) {
      const int e = current[x] > 128 ? current[x] - 255 : current[x];
      if (current[x] > 128) result.set(x, y, 1);
      if (e == 0) continue;
      for (int i = 1; const int weight : {7, 5}) current.add(x + i++, e * weight / 48);
      for (int i = -2; const int weight : {3, 5, 7, 5, 3}) first.add(x + i++, e * weight / 48);
      for (int i = -2; const int weight : {1, 3, 5, 3, 1}) second.set(x + i++, e * weight / 48);
    }
    current.take(first, stride);
    first.take(second, stride);
  }
}

}  // namespace

Bytes plain_dither(const Bytes& dib, PlainDither kind, int bits) { return Dither{Picture(dib), kind, bits}.run(); }

Bytes plain_halftone(const Bytes& dib, int method, int brightness) {
  const Picture source(dib);
  Picture result = empty_result(source, 1);
  write_table(result);
  const Matrix thresholds = doubled(doubled({{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}}));
  Luminances light = luminances(source);
  for (int& value : light.values)
    value = static_cast<int>(std::min<int64_t>(std::max<int64_t>(int64_t{value} + brightness, 0), 255));
  if (method == 1) diffuse_all(light, result);
  for (int y = 0; method != 1 && y < result.height; ++y)
    for (int x = 0; x < result.width; ++x) {
      const auto row = static_cast<size_t>(y), column = static_cast<size_t>(x);
      const int threshold = method == 0 ? 128 : thresholds[row % 16][column % 16];
      if (light.values[row * light.stride + column] > threshold) result.set(x, y, 1);
    }
  return result.bytes;
}

}  // namespace test
