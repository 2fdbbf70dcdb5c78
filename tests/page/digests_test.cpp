// Digests of results on random pages: a change of any pixel or measure shows, on every build. After a wanted change the lines that a
// failure prints replace those of digests.inc.
#include <cmath>
#include <gtest/gtest.h>
#include <random>

#include "common/forms.h"
#include "common/operations.h"
#include "common/page/content.h"
#include "common/page/ink_map.h"
#include "common/page/orientation.h"
#include "common/page/slant.h"
#include "common/page/specks.h"
#include "common/page/threshold.h"
#include "common/page/turn.h"
#include "common/problem.h"
#include "common/reductions.h"
#include "page/drawn_page.h"

using namespace test;
using namespace vorel;
using namespace vorel::programs;

namespace {

class Random {
 public:
  explicit Random(unsigned seed) : numbers_(seed) {}
  int below(int end) { return static_cast<int>((numbers_() >> 8) % static_cast<unsigned>(end)); }
  int from_to(int first, int last) { return first + below(last - first + 1); }
  bool one_in(int count) { return below(count) == 0; }
  template <class Value>
  Value one_of(std::initializer_list<Value> values) {
    return values.begin()[below(static_cast<int>(values.size()))];
  }

 private:
  std::minstd_rand numbers_;
};

class Digest {
 public:
  void add(const Picture& picture) {
    const std::span<uint8_t> bytes = picture.bytes();
    add_bytes(bytes.data(), picture.is_compressed() ? bytes.size() : bytes.size() - picture.image_bytes().size());
    if (!picture.is_compressed()) for_each_row(picture, [&](std::span<uint8_t> row) { add_bytes(row.data(), row.size()); });
  }
  // Of measures the digits that mathematical libraries agree on.
  void add(double measure) {
    const int64_t millionths = std::llround(measure * 1e6);
    add_bytes(&millionths, 1);
  }
  template <class Value>
  void add_bytes(const Value* values, size_t count) {
    add_text({reinterpret_cast<const char*>(values), count * sizeof(Value)});
  }
  uint64_t value() const { return value_; }

 private:
  void add_text(std::string_view text) {
    for (const char byte : text) value_ = (value_ ^ static_cast<uint8_t>(byte)) * 0x100000001B3;
  }

  uint64_t value_ = 0xCBF29CE484222325;
};

struct Page {
  Random& random;
  Size largest = {260, 200};
  std::vector<int> depths = {1, 4, 8, 24};

  // Slanted lines of stems, boxes that may reach the edges, and noise.
  Picture drawn() const {
    const Size size = {random.from_to(1, largest.width), random.from_to(1, largest.height)};
    const int depth = depths[static_cast<size_t>(random.below(static_cast<int>(depths.size())))];
    const int per_metre = random.one_of({0, 500, 3937, 5906});
    const Resolution resolution = {per_metre, random.one_in(3) ? per_metre / 2 : per_metre};
    Picture page = blank_page(size, depth, random.one_of({Table::kGray, Table::kColor}), resolution);
    const uint32_t white = depth > 8 ? 0xFFFFFF : (1u << depth) - 1;
    const double slope = random.from_to(-20, 20) / 100.0;
    const int period = random.from_to(6, 14), specks = random.one_of({3, 40, 100'000}), phase = random.below(7);
    std::array<Rect, 3> boxes;
    for (Rect& box : boxes)
      box = {random.from_to(-20, size.width), random.from_to(-20, size.height), random.below(60), random.below(40)};
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) {
        const int down = static_cast<int>(y + x * slope + 1000) % period, across = (x + phase) % 5;
        const bool is_stem = (across < 2 && down > 1 && down < period / 2 + (x / 5 % 3 == 0 ? 2 : 0)) && x > 9 && y > 9;
        const bool is_boxed = std::ranges::any_of(boxes, [&](const Rect& box) {
          return x >= box.x && x < box.x + box.width && y >= box.y && y < box.y + box.height;
        });
        const uint32_t noise = static_cast<uint32_t>(random.below(1 << 24)) & white;
        const uint32_t pixel = random.one_in(specks) ? noise : is_stem || is_boxed ? noise & white >> 2 : white;
        with_depth(depth, [&](auto bits) { Pixel<bits>::store(page.pixels().row_from_top(y).data(), x, pixel); });
      }
    return page;
  }
};

using Operation = void (*)(Random&, Digest&);

// A picture of one of all forms that operations take: codes, rows from the top, 16 and 32 bits, short tables.
Picture any_form(Random& random, const std::vector<int>& depths = {1, 4, 8, 24}) {
  Picture page = Page{random, {260, 200}, depths}.drawn();
  if (page.depth() == 24 && random.one_in(2)) {
    Picture other = blank_like(page, {page.width(), page.height()}, random.one_of({16, 32}));
    for_each_row(other, [&](std::span<uint8_t> row) {
      for (uint8_t& byte : row) byte = static_cast<uint8_t>(random.below(256));
    });
    page = std::move(other);
  }
  if (random.one_in(3)) page.set_rows_order(true);
  const bool has_codes = !page.is_top_down() && (page.depth() == 4 || page.depth() == 8) && random.one_in(2);
  return has_codes ? Picture(CompressDIB(page.get())) : std::move(page);
}

Size any_size(Random& random) { return {random.from_to(1, 300), random.from_to(1, 300)}; }
Background any_background(Random& random) { return random.one_of({Background::kBlack, Background::kWhite}); }

void turn(Random& random, Digest& digest) {
  const double degrees = random.from_to(-20000, 20000) / 111.0;
  const Canvas canvas = random.one_of({Canvas::kWhole, Canvas::kSame});
  digest.add(turned_by(Page{random}.drawn(), degrees, any_background(random), canvas));
}

void turn_on_a_grid(Random& random, Digest& digest) {
  digest.add(turned(any_form(random), random.one_of({0, 90, 180, 270, 13, -45}), any_background(random)));
  digest.add(mirrored_left_right(any_form(random)));
  digest.add(mirrored_top_bottom(any_form(random)));
  digest.add(skewed(any_form(random), random.one_of({Shear::kColumns, Shear::kRows}), random.from_to(-50, 50),
                    any_background(random)));
}

void scale(Random& random, Digest& digest) {
  for (const Resampling resampling :
       {Resampling::kArea, Resampling::kArea, Resampling::kLinear, Resampling::kCubic, Resampling::kNearest})
    digest.add(scaled(any_form(random), any_size(random), resampling));
}

void reduce(Random& random, Digest& digest) {
  const Picture page = Page{random}.drawn();
  const Reductions reductions(page);
  const Size size = any_size(random);
  const Rect part = {random.below(size.width), random.below(size.height), random.from_to(1, 90), random.from_to(1, 90)};
  const Rect inside = {part.x, part.y, std::min(part.width, size.width - part.x),
                       std::min(part.height, size.height - part.y)};
  std::vector<uint32_t> pixels(static_cast<size_t>(inside.width) * static_cast<size_t>(inside.height));
  reductions.draw(size, inside, pixels);
  digest.add_bytes(pixels.data(), pixels.size());
  digest.add(static_cast<double>(reductions.bytes()));
}

void cut_up(Random& random, Digest& digest) {
  Picture page = Page{random, {260, 200}}.drawn();
  const Rect piece = {random.below(page.width()), random.below(page.height()), random.from_to(1, 200),
                      random.from_to(1, 200)};
  digest.add(cropped(page.copy(), {piece.x, piece.y, std::min(piece.width, page.width() - piece.x),
                                   std::min(piece.height, page.height() - piece.y)}));
  if (page.height() < 2) return;
  const int line = random.from_to(1, page.height() - 1);
  const Halves halves = cut(std::move(page), line);
  digest.add(halves.above), digest.add(halves.below);
}

void color(Random& random, Digest& digest) {
  const int brightness = random.from_to(-100, 100), contrast = random.from_to(-100, 100);
  const GrayWeights weights = random.one_of({GrayWeights::kEqual, GrayWeights::kByColor});
  digest.add(negative(any_form(random)));
  digest.add(gray(any_form(random), weights, random.below(3)));
  digest.add(toned(any_form(random, {4, 8, 24}), brightness, contrast));
  digest.add(looked_up(any_form(random, {8}), brightness, contrast));
  digest.add(looked_up(any_form(random, {8}), brightness, contrast, Corner{random.below(90), random.below(90)}));
  digest.add(filtered(any_form(random),
                      {.filter = random.one_of({Filter::kBox, Filter::kBlur, Filter::kSharpen}), .intensity = weights}));
  digest.add(cleaned(Page{random, {260, 200}, {1, 8}}.drawn(), random.from_to(20, 100),
                     random.one_of({Cleaning::kAll, Cleaning::kGentle})));
}

void change_form(Random& random, Digest& digest) {
  for (Picture (*change)(Picture) : {expanded, upright, workable, with_whole_table, in_true_color})
    digest.add(change(any_form(random)));
  digest.add(luminance_of(workable(any_form(random))));
}

void take_few_colors(Random& random, Digest& digest) {
  for (const DitherMethod& method : dither_methods())
    digest.add(dithered(in_true_color(any_form(random)), method,
                        method.most_bits == 8 ? random.one_of({1, 4, 8}) : random.one_of({1, 4})));
  digest.add(halftoned(any_form(random, {4, 8, 24}),
                       random.one_of({Halftone::kThreshold, Halftone::kDiffusion, Halftone::kOrdered}),
                       random.from_to(-255, 255)));
}

void combine_and_compare(Random& random, Digest& digest) {
  const Picture base = any_form(random), overlay = any_form(random);
  std::optional<Picture> mask;
  if (random.one_in(2)) {
    mask = blank_page({overlay.width(), overlay.height()}, 1, Table::kGray, {});
    for_each_row(*mask, [&](std::span<uint8_t> row) {
      for (uint8_t& byte : row) byte = static_cast<uint8_t>(random.below(256));
    });
  }
  const Corner at = {random.from_to(-50, base.width()), random.from_to(-50, base.height())};
  const Picture both = combined(base.copy(), overlay.copy(), std::move(mask), at,
                                random.one_of({Mixing::kReplace, Mixing::kOr, Mixing::kXor}));
  digest.add(both);
  Picture drawing;
  const Comparison comparison = compared(base, random.one_in(2) ? both : overlay, random.one_of({0, 0, 20}), &drawing);
  digest.add(static_cast<double>(comparison.different)), digest.add(comparison.largest);
  digest.add(drawing);
  const LevelCounts counts = count_levels(workable(base.copy()));
  for (const uint64_t count : counts) digest.add(static_cast<double>(count));
}

void find_content(Random& random, Digest& digest) {
  const Picture page = Page{random, {900, 900}}.drawn();
  InkMap map = ink_map(page, {cell_side(page), random.one_of({1, 2, 8})});
  const InkMap coarse = coarser(map, {map.cell().width * 2, map.cell().height * 4});
  const std::vector<uint8_t> borders = dark_borders(coarse);
  remove_cells(map, coarse, borders);
  digest.add_bytes(borders.data(), borders.size());
  for (int y = 0; y < map.height(); ++y) digest.add_bytes(map.row(y).data(), map.row(y).size());
  digest.add(ink_percent(page, random.below(20) / 100.0));
  if (const auto box = content_box(page, {random.below(30), random.below(30)}))
    for (const int side : {box->x, box->y, box->width, box->height}) digest.add(side);
}

void find_lines(Random& random, Digest& digest) {
  const Picture page = Page{random, {900, 900}}.drawn();
  const Slant slant = find_slant(page);
  for (const double measure : {slant.degrees, slant.uncertainty, slant.confidence, slant.goes_down ? 1.0 : 0.0})
    digest.add(measure);
  const Orientation orientation = find_orientation(page);
  for (const double measure : {orientation.confidence, double(orientation.turn), double(orientation.lines)})
    digest.add(measure);
}

void make_black_and_white(Random& random, Digest& digest) {
  const Picture page = Page{random}.drawn();
  digest.add(otsu_level(page));
  digest.add(thresholded(page.copy(), random.from_to(-1, 257)));
  digest.add(thresholded(page.copy(), Sauvola{.window = random.below(60) * 2 + 1, .k = random.below(60) / 100.0}));
  const Despeckled done = despeckled(Page{random, {260, 200}, {1}}.drawn(), {random.from_to(1, 9), random.from_to(1, 9)},
                                     random.one_of({SpeckColors::kInk, SpeckColors::kPaper, SpeckColors::kBoth}));
  digest.add(done.picture), digest.add(double(done.specks)), digest.add(double(done.pixels));
}

TEST(PageDigests, AreAsRecorded) {
  const struct {
    Operation operation;
    int pages;
    uint64_t digest;
  } rows[] = {
#include "page/digests.inc"
  };
  for (const auto& row : rows) {
    Random random(1);
    Digest digest;
    for (int i = 0; i < row.pages; ++i) {
      try {
        row.operation(random, digest);
      } catch (const Problem& problem) {
        digest.add(static_cast<double>(problem.fault()));
      }
    }
    EXPECT_EQ(digest.value(), row.digest) << "row " << &row - rows << ": 0x" << std::hex << digest.value();
  }
}

}  // namespace
