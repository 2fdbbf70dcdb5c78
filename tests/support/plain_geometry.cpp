#include "support/plain_geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "support/picture.h"

namespace test {

namespace {

BITMAPINFOHEADER resized(BITMAPINFOHEADER header, int width, int height) {
  header.biWidth = width;
  header.biHeight = height;
  header.biSizeImage = static_cast<uint32_t>(stride_of(width, header.biBitCount) * static_cast<size_t>(height));
  return header;
}

int rounded(double value) { return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5); }

struct Point {
  double x, y;
};

void mix_resolutions(BITMAPINFOHEADER& header, int angle) {
  const int x = static_cast<int>(header.biXPelsPerMeter / 39.37), y = static_cast<int>(header.biYPelsPerMeter / 39.37);
  const int quarters = static_cast<int>(angle / 90.001);
  const double t = std::abs(angle - 90 * quarters) / 90.0;
  header.biXPelsPerMeter = static_cast<int>((x * (1 - t) + y * t) * 39.37 + 0.5);
  header.biYPelsPerMeter = static_cast<int>((y * (1 - t) + x * t) * 39.37 + 0.5);
}

}  // namespace

Bytes plain_rotation(const Bytes& dib, int angle, int method, int* corners) {
  const Picture source(dib);
  const double w = source.width, h = source.height;
  angle = (angle < 0 ? angle + 360 : angle) % 360;
  const double theta = angle * 0.01745329, sine = std::sin(theta), cosine = std::cos(theta);

  const Point unturned[] = {{-w / 2, -h / 2}, {w / 2, -h / 2}, {w / 2, h / 2}, {-w / 2, h / 2}};
  int x_max = 0, y_max = 0;
  for (const auto& [x, y] : unturned) {
    const Point corner = {x * cosine - y * sine, y * cosine + x * sine};
    x_max = std::max(x_max, rounded(corner.x));
    y_max = std::max(y_max, rounded(corner.y));
    if (corners == nullptr) continue;
    *corners++ = static_cast<int>(corner.x);
    *corners++ = static_cast<int>(corner.y);
  }
  const int width = 2 * x_max, height = 2 * y_max;
  BITMAPINFOHEADER header = resized(source.header, width, height);
  mix_resolutions(header, angle);
  Picture result = Picture::like(source, header);

  const auto mapped = [&](int x, int y) { return Point{x * cosine - y * -sine + w / 2, y * cosine + x * -sine + h / 2}; };
  const Point top_left = mapped(-x_max, -y_max), top_right = mapped(x_max - 1, -y_max),
              bottom_left = mapped(-x_max, y_max - 1);
  const Point column = {(top_right.x - top_left.x) / (width - 1), (top_right.y - top_left.y) / (width - 1)};
  const Point row = {(bottom_left.x - top_left.x) / (height - 1), (bottom_left.y - top_left.y) / (height - 1)};
  const int dx = rounded(std::abs(top_right.x - top_left.x)), dy = rounded(std::abs(top_right.y - top_left.y));
  const auto count = [&](int& error, int delta, double step, int& at) {
    error += 2 * delta;
    if (error <= width - 1) return;
    error -= 2 * (width - 1);
    at += step >= 0 ? 1 : -1;
  };

  Point start = top_left;
  for (int j = 0; j < height; ++j) {
    Point exact = start;
    int x = rounded(exact.x), y = rounded(exact.y), x_error = 0, y_error = 0;
    for (int k = 0; k < width; ++k) {
      if (x >= 0 && x < source.width && y >= 0 && y < source.height) result.set(k, j, source.pixel(x, y));
      if (method == 1) {
        count(x_error, dx, column.x, x);
        count(y_error, dy, column.y, y);
      } else {
        exact = {exact.x + column.x, exact.y + column.y};
        x = rounded(exact.x);
        y = rounded(exact.y);
      }
    }
    start = {start.x + row.x, start.y + row.y};
  }
  return result.bytes;
}

namespace {

// How far row or column `at` of `count` moves, in `unit`s of the offset.
int64_t shift_of(int64_t unit, int offset, int at, int count) {
  return unit * std::abs(offset) * (offset > 0 ? at : count - at) / count;
}

void skew_row(const Picture& source, Picture& result, int y, int64_t bits) {
  if (source.depth >= 8) bits = (bits + 7) / 8 * 8;
  int64_t byte = bits / 8;
  if (source.depth == 24) byte -= byte % 3;
  const int shift = source.depth == 4 ? static_cast<int>(bits % 8 / 4 * 4) : static_cast<int>(bits % 8);
  const auto add = [&](size_t at, int value) {
    if (at < result.stride) result.put(result.index(0, y) + at, result.at(result.index(0, y) + at) | value);
  };
  for (size_t i = 0; i < static_cast<size_t>((source.depth * source.width + 7) / 8); ++i) {
    const int pixels = source.at(source.index(0, y) + i);
    add(static_cast<size_t>(byte) + i, pixels >> shift);
    add(static_cast<size_t>(byte) + i + 1, pixels << (8 - shift));
  }
}

}  // namespace

Bytes plain_skew(const Bytes& dib, bool rows, int offset) {
  const Picture source(dib);
  const int grown = std::abs(offset);
  Picture result =
      Picture::like(source, resized(source.header, source.width + (rows ? grown : 0), source.height + (rows ? 0 : grown)));
  for (int y = 0; rows && y < source.height; ++y)
    skew_row(source, result, y, shift_of(source.depth, offset, y, source.height));
  for (int x = 0; !rows && x < source.width; ++x) {
    const auto up = static_cast<int>(shift_of(1, offset, x, source.width));
    for (int y = 0; y < source.height; ++y) result.set(x, up + y, source.pixel(x, y));
  }
  return result.bytes;
}

namespace {

using Color = std::array<uint8_t, 3>;  // blue, green, red

// The sample before a position, the one at it, and two behind it; what they weigh, the outer ones being taken away.
struct Taps {
  int first;
  std::array<int, 4> weights;
};

Taps linear_taps(int at, int old_size, int new_size) {
  const int64_t position = int64_t{at} * old_size;
  const auto second = static_cast<int>((position % new_size * 255 + new_size / 2) / new_size);
  return {static_cast<int>(position / new_size) - 1, {0, 255 - second, second, 0}};
}

Taps cubic_taps(int at, int old_size, int new_size) {
  const auto index = static_cast<int>(int64_t{at} * old_size / new_size);
  const double d = static_cast<double>(at) * old_size / new_size - index;
  const auto inner = [](double u) { return static_cast<int>(255 * (u * u * u - 2 * u * u + 1)); };
  const auto outer = [](double u) { return static_cast<int>(255 * (u * u * u - 5 * u * u + 8 * u - 4)); };
  return {index - 1, {outer(std::abs(d + 1)), inner(std::abs(d)), inner(std::abs(d - 1)), outer(std::abs(d - 2))}};
}

uint8_t weighed(const Taps& taps, auto&& sample) {
  int sum = 0;
  for (int i = 0; i < 4; ++i) {
    const int weight = taps.weights[static_cast<size_t>(i)];
    if (weight != 0) sum += (i % 3 == 0 ? -1 : 1) * ((weight * sample(taps.first + i) + 128) / 255);
  }
  return static_cast<uint8_t>(std::clamp(sum, 0, 255));
}

uint32_t nearest(const std::vector<Color>& table, Color color) {
  const auto distance = [&](const Color& entry) {
    int sum = 0;
    for (size_t i = 0; i < 3; ++i) sum += (entry[i] - color[i]) * (entry[i] - color[i]);
    return sum;
  };
  const auto less = [&](const Color& a, const Color& b) { return distance(a) < distance(b); };
  return static_cast<uint32_t>(std::min_element(table.begin(), table.end(), less) - table.begin());
}

// The first stored rows and columns in another size.
Bytes interpolated(const Picture& source, int old_width, int old_height, int width, int height, bool cubic, bool grey) {
  Picture result = Picture::like(source, resized(source.header, width, height));
  std::vector<Color> table(source.colors), shown(256);
  for (size_t i = 0; i < table.size(); ++i) {
    Color& color = table[i];
    for (int c = 0; c < 3; ++c) color[static_cast<size_t>(c)] = static_cast<uint8_t>(source.color(static_cast<int>(i), c));
    shown[i] = color;
    if (grey) shown[i].fill(static_cast<uint8_t>((color[0] + color[1] + color[2] + 1) / 3));
  }
  const auto sample = [&](int x, int y, size_t component) -> int {
    if (y < 0) return 0;
    x = std::clamp(x, 0, old_width - 1);
    y = std::min(y, old_height - 1);
    return source.depth == 24 ? source.at(source.index(x, y) + component) : shown[source.pixel(x, y)][component];
  };

  const auto taps = cubic ? cubic_taps : linear_taps;
  for (int j = 0; j < height; ++j) {
    Taps down = taps(j, old_height, height);
    if (!cubic && down.first + 1 == old_height - 1) down.weights = {0, 255, 0, 0};
    bool black_so_far = !grey;
    for (int i = 0; i < width; ++i) {
      const Taps across = taps(i, old_width, width);
      Color color;
      for (size_t c = 0; c < 3; ++c)
        color[c] = weighed(down, [&](int y) -> int { return weighed(across, [&](int x) { return sample(x, y, c); }); });
      black_so_far = black_so_far && color == Color{};
      const uint32_t true_color = color[0] | color[1] * 0x100u | color[2] * 0x10000u;
      result.set(i, j, source.depth == 24 ? true_color : black_so_far ? 0 : nearest(table, color));
    }
  }
  return result.bytes;
}

}  // namespace

Bytes plain_scaling(const Bytes& dib, bool cubic, int width, int height) {
  const Picture source(dib);
  return interpolated(source, source.width, source.height, width, height, cubic, false);
}

Bytes plain_magnification(const Bytes& dib, int width, int height, int x_factor, int y_factor, bool cubic) {
  const Picture source(dib);
  return interpolated(source, width, height, width * x_factor, height * y_factor, cubic, source.depth < 24);
}

Bytes plain_nearest(const Bytes& dib, int x, int y, int width, int height, int new_width, int new_height) {
  const Picture source(dib);
  BITMAPINFOHEADER header = source.header;
  header.biWidth = new_width;
  header.biHeight = new_height;
  const size_t stride = stride_of(new_width, source.depth);
  Picture result = Picture::like(source, header, stride + 16);
  const auto scaled = [](int at, int old_size, int new_size) {
    return static_cast<int>((4 * int64_t{new_size} + at * int64_t{8} * old_size) / (8 * int64_t{new_size}));
  };
  for (int i = 0; i < new_height; ++i) {
    const int row = scaled(i, height, new_height);
    if (row >= height) break;
    if (y + row >= source.height) continue;
    const int from = source.height - 1 - y - row, to = new_height - 1 - i;
    for (int k = 0; k < new_width && scaled(k, width, new_width) < width; ++k) {
      const int column = x + scaled(k, width, new_width);
      if (column < source.width) result.set(k, to, source.pixel(column, from));
    }
    // Rows of bits that keep their width come by bytes, one more than they need, and are cut to their length in that one.
    if (source.depth != 1 || width != new_width || source.width - x < width) continue;
    const int bytes = (width + 7) / 8, end = width % 8 == 0 ? 8 * bytes + 8 : 8 * bytes + width % 8;
    const int bits_there = 8 * std::min(static_cast<int>(source.stride), x / 8 + bytes + 1);
    for (int k = width; k < std::min(end, 8 * static_cast<int>(stride)) && x + k < bits_there; ++k)
      result.set(k, to, source.pixel(x + k, from));
  }
  return result.bytes;
}

}  // namespace test
