// Makes the sample pictures of the demo, from nothing and always the same: a scanned-looking page at 1 bit and at 8 bits of
// grey, and a colour chart at 24, 8 and 4 bits. Integers only, so that every machine makes the same bytes.
// usage: make_samples FOLDER
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <vorel32.h>

namespace {

struct Color {
  int red, green, blue;
};

// A picture in full colour, row 0 at the top.
struct Picture {
  int width, height;
  std::vector<Color> pixels;

  Picture(int w, int h, Color fill) : width(w), height(h), pixels(static_cast<size_t>(w) * static_cast<size_t>(h), fill) {}
  Color& at(int x, int y) { return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)]; }
  bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
};

// The same numbers everywhere (minimal standard generator of Park and Miller).
class Random {
 public:
  explicit Random(uint32_t seed) : state_(seed) {}
  int below(int limit) {
    state_ = static_cast<uint32_t>(uint64_t{state_} * 48'271 % 2'147'483'647);
    return static_cast<int>(state_ % static_cast<uint32_t>(limit));
  }

 private:
  uint32_t state_;
};

// ---- Saving at a depth ----

using Palette = std::vector<Color>;

Palette gray_ramp(int levels) {
  Palette palette;
  for (int i = 0; i < levels; ++i)
    palette.push_back({i * 255 / (levels - 1), i * 255 / (levels - 1), i * 255 / (levels - 1)});
  return palette;
}

Palette color_cube() {
  Palette palette;
  for (int i = 0; i < 256; ++i) palette.push_back({(i >> 5) * 36, (i >> 2 & 7) * 36, (i & 3) * 85});
  return palette;
}

Palette standard_colors() {
  Palette palette;
  for (int i = 0; i < 7; ++i) palette.push_back({(i & 1) * 128, (i >> 1 & 1) * 128, (i >> 2 & 1) * 128});
  palette.push_back({192, 192, 192});
  palette.push_back({128, 128, 128});
  for (int i = 1; i < 8; ++i) palette.push_back({(i & 1) * 255, (i >> 1 & 1) * 255, (i >> 2 & 1) * 255});
  return palette;
}

int distance(Color a, Color b) {
  const int red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
  return red * red + green * green + blue * blue;
}

unsigned nearest(const Palette& palette, Color color) {
  const auto closer = [&](Color a, Color b) { return distance(a, color) < distance(b, color); };
  return static_cast<unsigned>(std::min_element(palette.begin(), palette.end(), closer) - palette.begin());
}

void put_pixel(uint8_t* row, int x, int depth, const Palette& palette, Color color) {
  if (depth == 24) {
    row[x * 3] = static_cast<uint8_t>(color.blue);
    row[x * 3 + 1] = static_cast<uint8_t>(color.green);
    row[x * 3 + 2] = static_cast<uint8_t>(color.red);
  } else {
    const int bit = x * depth;
    row[bit / 8] = static_cast<uint8_t>(row[bit / 8] | nearest(palette, color) << (8 - depth - bit % 8));
  }
}

bool save(Picture& picture, int depth, const Palette& palette, int dpi, const std::string& path) {
  const int stride = (picture.width * depth + 31) / 32 * 4;
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = picture.width;
  header.biHeight = picture.height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<uint16_t>(depth);
  header.biSizeImage = static_cast<uint32_t>(stride * picture.height);
  header.biXPelsPerMeter = header.biYPelsPerMeter = (dpi * 10'000 + 127) / 254;
  header.biClrUsed = static_cast<uint32_t>(palette.size());

  const size_t table = palette.size() * 4;
  HGLOBAL dib = GlobalAlloc(GHND, sizeof header + table + header.biSizeImage);
  auto* bytes = static_cast<uint8_t*>(GlobalLock(dib));
  if (bytes == nullptr) return false;
  std::memcpy(bytes, &header, sizeof header);
  for (size_t i = 0; i < palette.size(); ++i) {
    const Color color = palette[i];
    const uint8_t entry[] = {static_cast<uint8_t>(color.blue), static_cast<uint8_t>(color.green),
                             static_cast<uint8_t>(color.red), 0};
    std::memcpy(bytes + sizeof header + i * 4, entry, 4);
  }
  for (int y = 0; y < picture.height; ++y) {
    uint8_t* row = bytes + sizeof header + table + static_cast<size_t>(picture.height - 1 - y) * static_cast<size_t>(stride);
    for (int x = 0; x < picture.width; ++x) put_pixel(row, x, depth, palette, picture.at(x, y));
  }
  GlobalUnlock(dib);
  const bool saved = SaveDIB(path.c_str(), dib) != 0;
  GlobalFree(dib);
  std::printf("%s%s\n", path.c_str(), saved ? "" : " could not be saved");
  return saved;
}

// ---- A page ----

void dot(Picture& page, int x, int y, int size, Color ink) {
  for (int dy = 0; dy < size; ++dy)
    for (int dx = 0; dx < size; ++dx)
      if (page.contains(x + dx, y + dy)) page.at(x + dx, y + dy) = ink;
}

void stroke(Picture& page, int x0, int y0, int x1, int y1, int pen, Color ink) {
  const int steps = std::max({std::abs(x1 - x0), std::abs(y1 - y0), 1});
  for (int i = 0; i <= steps; ++i) dot(page, x0 + (x1 - x0) * i / steps, y0 + (y1 - y0) * i / steps, pen, ink);
}

// A letter of nobody's alphabet: a few strokes between the nine corners of its box.
void letter(Picture& page, int x, int y, int size, Random& random, Color ink) {
  const auto corner_x = [&](int corner) { return x + corner % 3 * size * 3 / 10; };
  const auto corner_y = [&](int corner) { return y + corner / 3 * size / 2; };
  int from = random.below(9);
  for (int strokes = 3 + random.below(2); strokes > 0; --strokes) {
    const int to = (from + 1 + random.below(8)) % 9;
    stroke(page, corner_x(from), corner_y(from), corner_x(to), corner_y(to), std::max(2, size / 9), ink);
    from = to;
  }
}

// Lines of words, drifting down to the right as a page does that was fed at an angle.
void text(Picture& page, int left, int top, int right, int bottom, int size, Random& random, Color ink) {
  for (int y = top; y + size < bottom; y += size * 17 / 10) {
    const int line_end = random.below(6) == 0 ? left + (right - left) / 2 : right;
    int letters_left = 3 + random.below(7);
    for (int x = left; x + size < line_end; x += size * 8 / 10) {
      if (letters_left-- > 0) {
        letter(page, x, y + x / 180, size, random, ink);
      } else {
        letters_left = 2 + random.below(8);
      }
    }
  }
}

void frame(Picture& page, int x0, int y0, int x1, int y1, int pen, Color ink) {
  stroke(page, x0, y0, x1, y0, pen, ink);
  stroke(page, x0, y1, x1, y1, pen, ink);
  stroke(page, x0, y0, x0, y1, pen, ink);
  stroke(page, x1, y0, x1, y1, pen, ink);
}

// An A4 page at so many dots per inch.
Picture page_of_text(int dpi, Color paper, Color ink) {
  Picture page(dpi * 827 / 100, dpi * 1169 / 100, paper);
  Random random(2026);
  const int margin = dpi * 8 / 10;
  const int right = page.width - margin;
  text(page, margin, margin, right, margin + dpi / 2, dpi / 4, random, ink);
  text(page, margin, margin + dpi * 7 / 10, right, dpi * 5, dpi / 10, random, ink);
  frame(page, margin, dpi * 52 / 10, right, dpi * 7, std::max(1, dpi / 100), ink);
  for (int i = 1; i < 4; ++i)
    stroke(page, margin + (right - margin) * i / 4, dpi * 52 / 10, margin + (right - margin) * i / 4, dpi * 7, 2, ink);
  text(page, margin, dpi * 73 / 10, right, page.height - margin, dpi / 10, random, ink);
  return page;
}

void add_specks(Picture& page, int count, Color ink) {
  Random random(7);
  for (int i = 0; i < count; ++i) dot(page, random.below(page.width), random.below(page.height), 1 + random.below(3), ink);
}

// Uneven light and the grain of the sensor.
void add_scanner_light(Picture& page) {
  Random random(99);
  for (int y = 0; y < page.height; ++y)
    for (int x = 0; x < page.width; ++x) {
      const int shade = 40 * x / page.width + 25 * y / page.height + random.below(9);
      Color& pixel = page.at(x, y);
      pixel.red = pixel.green = pixel.blue = std::clamp(pixel.red - shade, 0, 255);
    }
}

// ---- A colour chart ----

Color rainbow(int position, int length) {
  const int phase = position * 6 * 255 / length;
  const int rising = phase % 255, falling = 255 - rising;
  switch (phase / 255) {
    case 0: return {255, rising, 0};
    case 1: return {falling, 255, 0};
    case 2: return {0, 255, rising};
    case 3: return {0, falling, 255};
    case 4: return {rising, 0, 255};
    default: return {255, 0, falling};
  }
}

Picture color_chart() {
  Picture chart(1200, 800, {255, 255, 255});
  Random random(5);
  for (int y = 0; y < chart.height; ++y)
    for (int x = 0; x < chart.width; ++x) {
      Color& pixel = chart.at(x, y);
      if (y < 200) {  // every hue, darker towards the bottom
        const Color hue = rainbow(x, chart.width);
        pixel = {hue.red * (200 - y) / 200, hue.green * (200 - y) / 200, hue.blue * (200 - y) / 200};
      } else if (y < 300) {  // grey, smooth and in steps
        const int level = y < 250 ? x * 255 / (chart.width - 1) : x / 75 * 17;
        pixel = {level, level, level};
      } else if (y < 550) {  // fine texture: rings that get closer, and grain
        const int dx = x - 600, dy = y - 425;
        const int ring = (dx * dx + dy * dy) / 400 % 2;
        const int grain = random.below(60);
        pixel = ring != 0 ? Color{200 + grain / 2, 160 + grain, 90 + grain} : Color{20 + grain, 60 + grain, 110 + grain};
      } else {  // edges: discs over stripes
        const int cell = x % 200 - 100, dy = y - 675;
        const bool inside = cell * cell + dy * dy < 90 * 90;
        const bool stripe = (x + y) / 10 % 2 == 0;
        pixel = inside ? rainbow(x / 200, 6) : stripe ? Color{235, 235, 225} : Color{60, 60, 70};
      }
    }
  return chart;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: make_samples FOLDER\n");
    return 2;
  }
  const std::string folder = std::string(arguments[1]) + "/";
  const Color black{0, 0, 0}, white{255, 255, 255};

  Picture page = page_of_text(300, white, black);
  add_specks(page, 900, black);
  Picture gray_page = page_of_text(150, {238, 238, 238}, {45, 45, 45});
  add_scanner_light(gray_page);
  Picture chart = color_chart();

  bool all = save(page, 1, {black, white}, 300, folder + "page-1bit.bmp");
  all &= save(gray_page, 8, gray_ramp(256), 150, folder + "page-8bit-grey.bmp");
  all &= save(chart, 24, {}, 150, folder + "chart-24bit.bmp");
  all &= save(chart, 8, color_cube(), 150, folder + "chart-8bit.bmp");
  all &= save(chart, 4, standard_colors(), 150, folder + "chart-4bit.bmp");
  return all ? 0 : 1;
}
