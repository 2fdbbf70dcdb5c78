#include "page_maker.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <ft2build.h>
#include <map>
#include <numbers>
#include <stdexcept>

#include FT_FREETYPE_H

#include "core/gray.h"
#include "core/resolution.h"

namespace vorel::bench {
namespace {

constexpr const char* kWords[] = {
    "the",    "of",      "and",     "to",       "in",      "that",     "was",    "his",    "he",        "it",       "with",
    "is",     "for",     "as",      "had",      "you",     "not",      "be",     "her",    "on",        "at",       "by",
    "which",  "have",    "or",      "from",     "this",    "him",      "but",    "all",    "she",       "they",     "were",
    "my",     "are",     "me",      "one",      "their",   "so",       "an",     "said",   "them",      "we",       "who",
    "would",  "been",    "will",    "no",       "when",    "there",    "if",     "more",   "out",       "up",       "into",
    "do",     "any",     "your",    "what",     "has",     "man",      "could",  "other",  "than",      "our",      "some",
    "very",   "time",    "upon",    "about",    "may",     "its",      "only",   "now",    "like",      "little",   "then",
    "can",    "made",    "should",  "did",      "us",      "such",     "great",  "before", "must",      "two",      "these",
    "see",    "know",    "over",    "much",     "down",    "after",    "first",  "good",   "men",       "own",      "never",
    "most",   "old",     "shall",   "day",      "where",   "those",    "came",   "come",   "himself",   "way",      "work",
    "life",   "without", "go",      "make",     "well",    "through",  "being",  "long",   "say",       "might",    "people",
    "paper",  "journey", "quickly", "property", "happy",   "question", "simply", "beyond", "knowledge", "typical",  "length",
    "height", "depth",   "margin",  "column",   "quality", "weighing", "figure", "number", "shelf",     "judgement"};

uint8_t byte_of(double share) { return static_cast<uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255)); }

}  // namespace

struct PageMaker::Fonts {
  Fonts() {
    if (FT_Init_FreeType(&library) != 0) throw std::runtime_error("FreeType does not start");
  }
  ~Fonts() {
    for (const auto& [path, face] : faces) FT_Done_Face(face);
    FT_Done_FreeType(library);
  }

  FT_Face face(const std::string& path) {
    FT_Face& found = faces[path];
    if (found == nullptr && FT_New_Face(library, path.c_str(), 0, &found) != 0) throw std::runtime_error("no font: " + path);
    return found;
  }

  // In points.
  double width_of(const std::string& path, double size, const std::string& text) {
    const FT_Face of = face(path);
    FT_Set_Transform(of, nullptr, nullptr);
    FT_Set_Char_Size(of, 0, std::lround(size * 64), 72, 72);
    double sum = 0;
    for (const char letter : text)
      if (FT_Load_Char(of, static_cast<FT_ULong>(letter), FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) == 0)
        sum += static_cast<double>(of->glyph->linearHoriAdvance) / 65'536;
    return sum;
  }

  FT_Library library = nullptr;
  std::map<std::string, FT_Face> faces;
};

PageMaker::PageMaker(double width, double height, int dpi, double degrees, uint32_t seed)
    : width_(static_cast<int>(std::lround(width * dpi / 72))),
      height_(static_cast<int>(std::lround(height * dpi / 72))),
      dpi_(dpi),
      page_width_(width),
      page_height_(height),
      sine_(std::sin(degrees * std::numbers::pi / 180)),
      cosine_(std::cos(degrees * std::numbers::pi / 180)),
      ink_(static_cast<size_t>(width_) * static_cast<size_t>(height_)),
      random_(seed),
      fonts_(std::make_unique<Fonts>()) {}

PageMaker::~PageMaker() = default;

std::vector<std::string> PageMaker::fonts() {
  static constexpr const char* kFonts[] = {"opentype/urw-base35/NimbusRoman-Regular.otf",
                                           "opentype/urw-base35/NimbusSans-Regular.otf",
                                           "opentype/urw-base35/C059-Roman.otf",
                                           "opentype/urw-base35/P052-Italic.otf",
                                           "opentype/urw-base35/NimbusMonoPS-Regular.otf",
                                           "opentype/urw-base35/URWBookman-Light.otf",
                                           "opentype/urw-base35/NimbusSans-Bold.otf",
                                           "opentype/urw-base35/NimbusRoman-Italic.otf",
                                           "opentype/urw-base35/URWGothic-Book.otf",
                                           "opentype/urw-base35/NimbusSansNarrow-Regular.otf",
                                           "truetype/dejavu/DejaVuSans.ttf",
                                           "truetype/dejavu/DejaVuSerif.ttf",
                                           "truetype/dejavu/DejaVuSansMono.ttf",
                                           "truetype/dejavu/DejaVuSerif-Bold.ttf"};
  std::vector<std::string> found;
  for (const char* name : kFonts) {
    const std::string path = std::string("/usr/share/fonts/") + name;
    if (std::filesystem::exists(path)) found.push_back(path);
  }
  return found;
}

PagePoint PageMaker::to_pixels(PagePoint at) const {
  const double x = (at.x - page_width_ / 2) * dpi_ / 72, y = (at.y - page_height_ / 2) * dpi_ / 72;
  return {width_ / 2.0 + x * cosine_ - y * sine_, height_ / 2.0 + x * sine_ + y * cosine_};
}

PagePoint PageMaker::to_page(double x, double y) const {
  x = (x - width_ / 2.0) * 72 / dpi_;
  y = (y - height_ / 2.0) * 72 / dpi_;
  return {page_width_ / 2 + x * cosine_ + y * sine_, page_height_ / 2 - x * sine_ + y * cosine_};
}

void PageMaker::ink(int x, int y, double amount) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  uint8_t& pixel = ink_[static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x)];
  pixel = std::max(pixel, byte_of(amount));
}

double PageMaker::text(const std::string& font, double size, PagePoint at, const std::string& text) {
  const FT_Face face = fonts_->face(font);
  FT_Set_Char_Size(face, 0, std::lround(size * 64), static_cast<FT_UInt>(dpi_), static_cast<FT_UInt>(dpi_));
  const auto fixed = [](double value) { return static_cast<FT_Fixed>(std::lround(value * 65'536)); };
  FT_Matrix matrix = {fixed(cosine_), fixed(sine_), fixed(-sine_), fixed(cosine_)};  // y goes up
  const double start = at.x;
  for (const char letter : text) {
    const PagePoint pen = to_pixels(at);
    const double left_edge = std::floor(pen.x), top_edge = std::floor(pen.y);
    FT_Vector delta = {std::lround((pen.x - left_edge) * 64), std::lround((top_edge - pen.y) * 64)};
    FT_Set_Transform(face, &matrix, &delta);
    if (FT_Load_Char(face, static_cast<FT_ULong>(letter), FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP | FT_LOAD_RENDER) != 0)
      continue;
    const FT_GlyphSlot glyph = face->glyph;
    const int left = static_cast<int>(left_edge) + glyph->bitmap_left, top = static_cast<int>(top_edge) - glyph->bitmap_top;
    for (int y = 0; y < static_cast<int>(glyph->bitmap.rows); ++y)
      for (int x = 0; x < static_cast<int>(glyph->bitmap.width); ++x)
        ink(left + x, top + y, glyph->bitmap.buffer[y * glyph->bitmap.pitch + x] / 255.0);
    at.x += static_cast<double>(glyph->linearHoriAdvance) / 65'536 * 72 / dpi_;
  }
  return at.x - start;
}

std::string PageMaker::words(int count) {
  std::string line;
  bool begins_sentence = below(6) == 0;
  for (int i = 0; i < count; ++i) {
    std::string word = kWords[below(static_cast<int>(std::size(kWords)))];
    if (below(40) == 0) word = std::to_string(below(2000));
    if (begins_sentence || below(14) == 0) word[0] = static_cast<char>(std::toupper(word[0]));
    begins_sentence = below(12) == 0;
    if (begins_sentence)
      word += '.';
    else if (below(11) == 0)
      word += ',';
    line += (i == 0 ? "" : " ") + word;
  }
  return line;
}

void PageMaker::paragraphs(const std::string& font, double size, double spacing, PagePoint at, double width, double height,
                           bool is_justified) {
  struct Word {
    std::string letters;
    double width;
  };
  const double space = fonts_->width_of(font, size, " "), bottom = at.y + height;
  for (double y = at.y + size; y <= bottom; y += size * spacing * 0.5) {
    double indent = size;
    for (int lines = 2 + below(9); lines > 0 && y <= bottom; --lines, y += size * spacing, indent = 0) {
      std::vector<Word> line;
      double used = indent;
      for (;;) {
        const std::string word = words(1);
        const double wide = fonts_->width_of(font, size, word);
        if (used + wide > width) break;
        line.push_back({word, wide});
        used += wide + space;
      }
      const bool is_last = lines == 1;
      if (is_last) line.resize(std::min(line.size(), line.size() / 2 + 1));
      const bool is_stretched = is_justified && !is_last && line.size() > 1;
      const double gap = space + (is_stretched ? (width - used + space) / static_cast<double>(line.size() - 1) : 0);
      double x = at.x + indent;
      for (const Word& word : line) {
        text(font, size, {x, y}, word.letters);
        x += word.width + gap;
      }
    }
  }
}

void PageMaker::segment(PagePoint a, PagePoint b, double radius) {
  const double wide = b.x - a.x, high = b.y - a.y, length = std::max(std::hypot(wide, high), 1e-9);
  const double reach = radius + 1, slope = std::abs(wide) > 1e-6 ? high / wide : 1e6;
  for (int x = static_cast<int>(std::max(0.0, std::min(a.x, b.x) - reach));
       x <= std::min(width_ - 1.0, std::max(a.x, b.x) + reach); ++x) {
    const double middle = a.y + (x + 0.5 - a.x) * slope, half = (reach + 1) * (1 + std::abs(slope));
    const double top = std::max({0.0, std::min(a.y, b.y) - reach, middle - half});
    const double bottom = std::min({height_ - 1.0, std::max(a.y, b.y) + reach, middle + half});
    for (int y = static_cast<int>(top); y <= bottom; ++y) {
      const double px = x + 0.5 - a.x, py = y + 0.5 - a.y;
      const double along = std::clamp((px * wide + py * high) / length, 0.0, length);
      const double away = std::hypot(px - along * wide / length, py - along * high / length);
      if (away < radius + 0.5) ink(x, y, radius + 0.5 - away);
    }
  }
}

void PageMaker::stroke(const std::vector<PagePoint>& points, double thickness) {
  for (size_t i = 1; i < points.size(); ++i)
    segment(to_pixels(points[i - 1]), to_pixels(points[i]), std::max(thickness * dpi_ / 72 / 2, 0.5));
}

void PageMaker::box(PagePoint at, double width, double height) {
  for (int y = 0; y < height_; ++y)
    for (int x = 0; x < width_; ++x) {
      const PagePoint page = to_page(x + 0.5, y + 0.5);
      if (page.x >= at.x && page.y >= at.y && page.x < at.x + width && page.y < at.y + height) ink(x, y, 1);
    }
}

void PageMaker::photo(PagePoint at, double width, double height, double screen_lpi) {
  std::array<double, 12> waves;
  for (double& wave : waves) wave = uniform(-1, 1);
  const double turn = 2 * std::numbers::pi, pitch = 72 / screen_lpi * std::numbers::sqrt2;
  for (int y = 0; y < height_; ++y)
    for (int x = 0; x < width_; ++x) {
      const PagePoint page = to_page(x + 0.5, y + 0.5);
      const double u = (page.x - at.x) / width, v = (page.y - at.y) / height;
      if (u < 0 || v < 0 || u >= 1 || v >= 1) continue;
      double tone = 0.5;
      for (size_t i = 0; i < waves.size(); i += 4)
        tone += 0.25 * std::sin(9 * (waves[i] * u + waves[i + 1] * v) + 6 * waves[i + 2]) * waves[i + 3];
      const double s = (page.x + page.y) / pitch, t = (page.x - page.y) / pitch;  // at 45 degrees
      const double dot = 0.5 + 0.25 * (std::cos(turn * s) + std::cos(turn * t));
      ink(x, y, tone > dot ? 1 : 0);
    }
}

void PageMaker::dark_border(int left, int top, int right, int bottom) {
  for (int y = 0; y < height_; ++y)
    for (int x = 0; x < width_; ++x)
      if (x < left || y < top || x >= width_ - right || y >= height_ - bottom) ink(x, y, 1);
}

void PageMaker::blur(int radius) {
  const auto along = [&](int count, int length, size_t step, size_t across) {
    std::vector<uint8_t> line(static_cast<size_t>(length));
    for (int i = 0; i < count; ++i) {
      uint8_t* const first = ink_.data() + static_cast<size_t>(i) * across;
      for (size_t k = 0; k < line.size(); ++k) line[k] = first[k * step];
      for (int k = 0; k < length; ++k) {
        int sum = 0, number = 0;
        for (int n = std::max(0, k - radius); n <= std::min(length - 1, k + radius); ++n, ++number)
          sum += line[static_cast<size_t>(n)];
        first[static_cast<size_t>(k) * step] = static_cast<uint8_t>(sum / number);
      }
    }
  };
  along(height_, width_, 1, static_cast<size_t>(width_));
  along(width_, height_, static_cast<size_t>(width_), 1);
}

void PageMaker::degrade(const ScanFaults& faults) {
  if (faults.blur >= 1) blur(static_cast<int>(faults.blur));
  if (faults.grain > 0)
    for (uint8_t& pixel : ink_) {
      // The sum of four bytes of a random number is close enough to a normal distribution.
      constexpr double kMean = 510, kDeviation = 147.8;
      const auto bits = static_cast<uint32_t>(random_());
      const uint32_t sum = (bits & 255) + (bits >> 8 & 255) + (bits >> 16 & 255) + (bits >> 24);
      pixel = byte_of(pixel / 255.0 + (sum - kMean) / kDeviation * faults.grain);
    }
  const auto count = static_cast<size_t>(faults.specks * static_cast<double>(ink_.size()));
  for (size_t i = 0; i < count; ++i) {
    uint8_t& pixel = ink_[random_() % ink_.size()];
    pixel = static_cast<uint8_t>(pixel < 128 ? 255 : 0);
  }
}

programs::Picture PageMaker::scanned(const ScanFaults& faults) {
  degrade(faults);
  constexpr std::array<Rgb, 2> kColors = {Rgb{0, 0, 0, 0}, Rgb{255, 255, 255, 0}};
  DibHeader header{.width = width_, .height = height_, .depth = 1};
  header.x_per_metre = header.y_per_metre = per_metre(dpi_);
  programs::Picture page = programs::Picture::blank(header, kColors);
  const uint8_t threshold = byte_of(faults.threshold);
  for (int y = 0; y < height_; ++y) {
    const uint8_t* const from = ink_.data() + static_cast<size_t>(y) * static_cast<size_t>(width_);
    uint8_t* const to = page.pixels().row_from_top(y).data();
    for (int x = 0; x < width_; ++x)
      if (from[x] < threshold) to[x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
  }
  return page;
}

programs::Picture PageMaker::scanned_gray(const ScanFaults& faults) {
  degrade(faults);
  std::array<Rgb, 256> ramp;
  write_gray_ramp(ramp);
  DibHeader header{.width = width_, .height = height_, .depth = 8};
  header.x_per_metre = header.y_per_metre = per_metre(dpi_);
  programs::Picture page = programs::Picture::blank(header, ramp);
  for (int y = 0; y < height_; ++y) {
    const uint8_t* const from = ink_.data() + static_cast<size_t>(y) * static_cast<size_t>(width_);
    std::transform(from, from + width_, page.pixels().row_from_top(y).data(),
                   [](uint8_t amount) { return static_cast<uint8_t>(245 - amount * 215 / 255); });
  }
  return page;
}

}  // namespace vorel::bench
