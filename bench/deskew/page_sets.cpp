#include "page_sets.h"

#include <array>
#include <cmath>
#include <numbers>

#include "page_maker.h"

namespace vorel::bench {
namespace {

constexpr double kA4Width = 595, kA4Height = 842;

struct Fonts {
  std::vector<std::string> paths = PageMaker::fonts();
  const std::string& operator[](int i) const { return paths.at(static_cast<size_t>(i) % paths.size()); }
};
const Fonts& fonts() {
  static const Fonts found;
  return found;
}

ScanFaults random_faults(PageMaker& page) {
  ScanFaults faults;
  switch (page.below(5)) {
    case 0: faults.specks = page.uniform(0.0002, 0.01); break;
    case 1: faults = {.blur = 1, .grain = page.uniform(0.05, 0.2), .threshold = page.uniform(0.3, 0.6)}; break;
    case 2: faults = {.grain = page.uniform(0.1, 0.25), .specks = 0.0005, .threshold = page.uniform(0.4, 0.6)}; break;
    default: break;
  }
  return faults;
}

constexpr ScanFaults kUsual = {.grain = 0.1, .specks = 0.0002};

// ---- Other kinds ----

using Draw = void (*)(PageMaker& page);

void form(PageMaker& page) {
  for (int row = 0; row < 24; ++row) {
    const double y = 90 + row * 28;
    page.stroke({{60, y}, {535, y}}, 0.75);
    page.text(fonts()[1], 8, {64, y - 8}, page.words(1) + ":");
    if (page.below(3) == 0) page.text(fonts()[4], 10, {210, y - 8}, page.words(2));
  }
  for (const double x : {60.0, 200.0, 420.0, 535.0}) page.stroke({{x, 62}, {x, 734}}, 0.75);
}

void table(PageMaker& page) {
  for (int row = 0; row < 50; ++row)
    for (int column = 0; column < 7; ++column)
      page.text(fonts()[1], 7, {60.0 + column * 70, 80.0 + row * 13}, std::to_string(page.below(100'000)));
}

void unequal_columns(PageMaker& page) {  // with lines at different heights
  page.paragraphs(fonts()[0], 9, 1.15, {50, 80}, 230, 640, true);
  page.paragraphs(fonts()[1], 8, 1.4, {310, 86}, 230, 600, false);
}

void few_words(PageMaker& page) {
  for (int i = 0; i < 4; ++i) page.text(fonts()[i], 11, {page.uniform(60, 300), page.uniform(80, 760)}, page.words(4));
}

void one_line(PageMaker& page) { page.text(fonts()[0], 11, {80, 400}, page.words(11)); }

void title(PageMaker& page) {
  page.text(fonts()[6], 40, {90, 260}, "Annual Report");
  page.text(fonts()[1], 18, {90, 300}, "for members and friends");
}

void letter(PageMaker& page) {
  page.text(fonts()[6], 16, {380, 80}, "Smith and Sons");
  for (int i = 0; i < 4; ++i) page.text(fonts()[1], 10, {70, 140.0 + i * 13}, page.words(3));
  page.paragraphs(fonts()[0], 11, 1.25, {70, 260}, 450, 180, false);
  std::vector<PagePoint> signature;
  for (int i = 0; i < 60; ++i) signature.push_back({90 + i * 2.0, 500 + 14 * std::sin(i * 0.7) * std::cos(i * 0.13)});
  page.stroke(signature, 1);
}

void handwriting(PageMaker& page) {
  for (double y = 100; y < 740; y += 34) {
    const double drift = page.uniform(-0.01, 0.01);
    for (double x = 60; x < 500;) {
      std::vector<PagePoint> word;
      const double end = x + page.uniform(25, 80), pace = page.uniform(0.9, 1.4), size = page.uniform(4, 6);
      const bool has_loop = page.below(2) == 0;
      for (double t = 0; x < end; t += 0.25, x += 0.25 * pace) {
        const double tall = has_loop && std::fmod(t, 11) < 2.5 ? 2 : 1;
        word.push_back({x + 1.6 * std::cos(t), y + drift * x - size * tall * (0.5 + 0.5 * std::sin(t))});
      }
      page.stroke(word, 1.1);
      x += page.uniform(8, 16);
    }
  }
}

void text_and_photo(PageMaker& page) {
  page.photo({60, 80}, 475, 420, 85);
  page.paragraphs(fonts()[11], 9, 1.3, {60, 520}, 475, 230, true);
}

void full_text(PageMaker& page) { page.paragraphs(fonts()[0], 11, 1.2, {60, 70}, 475, 700, true); }

void sideways(PageMaker& page) {  // lines of text go down: drawn letter by letter they would need another turn
  full_text(page);
}

void staves(PageMaker& page) {
  for (double y = 90; y < 720; y += 70) {
    for (int line = 0; line < 5; ++line) page.stroke({{60, y + line * 6.0}, {535, y + line * 6.0}}, 0.5);
    for (double x = 80; x < 520; x += page.uniform(12, 30)) {
      const double at = y + 3 * page.below(9);
      page.box({x, at - 2.5}, 7, 5);
      page.stroke({{x + 6.5, at}, {x + 6.5, at - 20}}, 0.8);
    }
  }
}

void chart(PageMaker& page) {
  page.stroke({{100, 120}, {100, 600}}, 1);
  page.stroke({{100, 600}, {500, 600}}, 1);
  for (int bar = 0; bar < 9; ++bar) {
    const double tall = page.uniform(60, 420);
    page.box({120.0 + bar * 42, 600 - tall}, 24, tall);
    page.text(fonts()[1], 8, {120.0 + bar * 42, 612}, std::to_string(2000 + bar));
  }
}

void photo(PageMaker& page) { page.photo({-50, -50}, 700, 950, 65); }

void blank(PageMaker&) {}

void map(PageMaker& page) {
  for (int i = 0; i < 60; ++i) {
    std::vector<PagePoint> line = {{page.uniform(0, 595), page.uniform(0, 842)}};
    double angle = page.uniform(0, 2 * std::numbers::pi);
    for (int k = 0; k < 80; ++k, angle += page.uniform(-0.3, 0.3))
      line.push_back({line.back().x + 5 * std::cos(angle), line.back().y + 5 * std::sin(angle)});
    page.stroke(line, 0.8);
  }
}

void circles(PageMaker& page) {
  for (int i = 0; i < 25; ++i) {
    std::vector<PagePoint> circle;
    const PagePoint middle = {page.uniform(100, 500), page.uniform(100, 740)};
    const double radius = page.uniform(10, 90);
    for (int k = 0; k <= 90; ++k)
      circle.push_back({middle.x + radius * std::cos(k * std::numbers::pi / 45),
                        middle.y + radius * std::sin(k * std::numbers::pi / 45)});
    page.stroke(circle, 1);
  }
}

struct Kind {
  const char* name;
  Draw draw;
  bool has_direction;
  ScanFaults faults;
  bool has_border;
};
constexpr Kind kKinds[] = {
    {"form with rules", form, true, kUsual, false},
    {"table of numbers", table, true, kUsual, false},
    {"columns with unequal lines", unequal_columns, true, kUsual, false},
    {"few words", few_words, true, kUsual, false},
    {"one line", one_line, true, kUsual, false},
    {"title", title, true, kUsual, false},
    {"letter with signature", letter, true, kUsual, false},
    {"handwriting", handwriting, true, kUsual, false},
    {"large photo and text", text_and_photo, true, kUsual, false},
    {"dark borders", full_text, true, kUsual, true},
    {"few words, dark borders", few_words, true, kUsual, true},
    {"noisy text", full_text, true, {.blur = 1, .grain = 0.3, .specks = 0.05}, false},
    {"lines of text going down", sideways, true, kUsual, false},
    {"music", staves, true, kUsual, false},
    {"bar chart", chart, true, kUsual, false},
    {"photo alone", photo, false, kUsual, false},
    {"blank", blank, false, {}, false},
    {"blank with specks", blank, false, {.specks = 0.002}, false},
    {"blank with dark borders", blank, false, kUsual, true},
    {"map", map, false, kUsual, false},
    {"circles", circles, false, kUsual, false},
};
constexpr int kPagesOfKind = 6;
constexpr double kSlants[kPagesOfKind] = {0, -0.8, 2.35, -6.6, 11.2, -14.3};
constexpr int kResolutions[kPagesOfKind] = {300, 200, 300, 400, 300, 150};

}  // namespace

TestPage text_page(int number) {
  static constexpr int kDpi[] = {150, 200, 240, 300, 300, 300, 400, 600};
  const auto seed = static_cast<uint32_t>(number) * 7919 + 17;
  std::mt19937 random(seed);
  const auto uniform = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
  const int dpi = kDpi[random() % std::size(kDpi)];
  const double degrees = random() % 2 == 0 ? uniform(-3, 3) : uniform(-15, 15);
  PageMaker page(kA4Width, kA4Height, dpi, degrees, seed);

  const std::string& font = fonts()[static_cast<int>(random() % 64)];
  const double size = uniform(8, 14), spacing = uniform(1.05, 2), margin = uniform(40, 90);
  const int columns = 1 + static_cast<int>(random() % 3);
  double top = uniform(50, 120), bottom = kA4Height - uniform(50, 300);
  if (random() % 3 == 0) {
    page.text(fonts()[static_cast<int>(random() % 64)], size * 2, {margin, top}, page.words(3));
    top += size * 2;
  }
  if (random() % 3 == 0) {
    const double height = uniform(80, 220);
    page.photo({margin, top}, uniform(0.4, 1) * (kA4Width - 2 * margin), height, dpi >= 300 ? 85 : 45);
    top += height + size;
  }
  const double gap = 18, width = (kA4Width - 2 * margin - gap * (columns - 1)) / columns;
  for (int column = 0; column < columns; ++column)
    page.paragraphs(font, size, spacing, {margin + column * (width + gap), top}, width, bottom - top, random() % 2 == 0);
  if (random() % 4 == 0) page.stroke({{margin, bottom + size * 2}, {kA4Width - margin, bottom + size * 2}}, 0.75);
  const ScanFaults faults = random_faults(page);
  const bool is_clean = faults.grain == 0 && faults.specks == 0;
  return {(is_clean ? "clean " : "noisy ") + std::to_string(dpi), degrees, page.scanned(faults)};
}

int other_pages() { return static_cast<int>(std::size(kKinds)) * kPagesOfKind; }

TestPage other_page(int number) {
  const Kind& kind = kKinds[number / kPagesOfKind];
  const int variant = number % kPagesOfKind, dpi = kResolutions[variant];
  const bool goes_down = kind.draw == sideways;
  const double degrees = kSlants[variant];
  PageMaker page(goes_down ? kA4Height : kA4Width, kA4Height, dpi, degrees + (goes_down ? 90 : 0),
                 static_cast<uint32_t>(number) + 1);
  kind.draw(page);
  if (kind.has_border) page.dark_border(dpi / 3, dpi / 8, dpi / 10, dpi / 2);
  TestPage made{kind.name, {}, page.scanned(kind.faults)};
  if (kind.has_direction) made.degrees = degrees;
  return made;
}

}  // namespace vorel::bench
