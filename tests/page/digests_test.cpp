// Digests of results for random pages and files: they detect a change of any pixel or measure, on every build. After an intended
// change the digests that a failure prints replace those in digests.inc.
#include <gtest/gtest.h>
#include <sstream>

#include "common/bitmap_file.h"
#include "common/forms.h"
#include "common/operations.h"
#include "common/page/content.h"
#include "common/page/ink_map.h"
#include "common/page/orientation.h"
#include "common/page/slant.h"
#include "common/page/specks.h"
#include "common/page/threshold.h"
#include "common/page/turn.h"
#include "common/pnm_file.h"
#include "common/problem.h"
#include "common/reductions.h"
#include "page/drawn_page.h"
#include "support/dib.h"
#include "support/random.h"

using namespace test;
using namespace vorel;
using namespace vorel::programs;

namespace {

void add(Digest& digest, const Picture& picture) {
  const std::span<uint8_t> bytes = picture.bytes();
  digest.add(picture.is_compressed() ? bytes : bytes.first(bytes.size() - picture.image_bytes().size()));
  if (!picture.is_compressed()) for_each_row(picture, [&](std::span<uint8_t> row) { digest.add(row); });
}

struct Page {
  Random& random;
  Size largest = {260, 200};
  std::vector<int> depths = {1, 4, 8, 24};

  // Slanted lines of stems, boxes that may reach the edges, and noise.
  Picture drawn() const {
    const Size size = {random.between(1, largest.width), random.between(1, largest.height)};
    const int depth = depths[static_cast<size_t>(random.between(0, static_cast<int>(depths.size()) - 1))];
    const int per_metre = random.one_of({0, 500, 3937, 5906});
    const Resolution resolution = {per_metre, random.once_in(3) ? per_metre / 2 : per_metre};
    Picture page = blank_page(size, depth, random.one_of({Table::kGray, Table::kColor}), resolution);
    const uint32_t white = depth > 8 ? 0xFFFFFF : (1u << depth) - 1;
    const int slope = random.between(-20, 20);  // percent
    const int period = random.between(6, 14), specks = random.one_of({3, 40, 100'000}), phase = random.between(0, 6);
    std::array<Rect, 3> boxes;
    for (Rect& box : boxes)
      box = {random.between(-20, size.width), random.between(-20, size.height), random.between(0, 59),
             random.between(0, 39)};
    if (random.once_in(3)) boxes[0] = {0, 0, random.between(10, 60), size.height};  // a scanner's dark edge
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) {
        const int down = (y * 100 + x * slope + 100'000) / 100 % period, across = (x + phase) % 5;
        const bool is_stem = (across < 2 && down > 1 && down < period / 2 + (x / 5 % 3 == 0 ? 2 : 0)) && x > 9 && y > 9;
        const bool is_boxed = std::ranges::any_of(boxes, [&](const Rect& box) {
          return x >= box.x && x < box.x + box.width && y >= box.y && y < box.y + box.height;
        });
        const uint32_t noise = static_cast<uint32_t>(random.between(0, (1 << 24) - 1)) & white;
        const uint32_t pixel = random.once_in(specks) ? noise : is_stem || is_boxed ? noise & white >> 2 : white;
        with_depth(depth, [&](auto bits) { Pixel<bits>::store(page.pixels().row_from_top(y).data(), x, pixel); });
      }
    return page;
  }
};

using Operation = void (*)(Random&, Digest&);

// A page in any form that operations accept: compressed, top-down, with 16 or 32 bits.
Picture any_form(Random& random, const std::vector<int>& depths = {1, 4, 8, 24}) {
  Picture page = Page{random, {260, 200}, depths}.drawn();
  if (page.depth() == 24 && random.once_in(2)) {
    Picture other = blank_like(page, {page.width(), page.height()}, random.one_of({16, 32}));
    for_each_row(other, [&](std::span<uint8_t> row) { random.fill(row); });
    page = std::move(other);
  }
  if (random.once_in(3)) page.set_rows_order(true);
  const bool has_codes = !page.is_top_down() && (page.depth() == 4 || page.depth() == 8) && random.once_in(2);
  return has_codes ? Picture(CompressDIB(page.get())) : std::move(page);
}

Size any_size(Random& random) { return {random.between(1, 300), random.between(1, 300)}; }
Background any_background(Random& random) { return random.one_of({Background::kBlack, Background::kWhite}); }

// Parameters come before pictures: the order in which arguments are evaluated depends on the compiler.
void turn(Random& random, Digest& digest) {
  const double degrees = random.between(-20000, 20000) / 111.0;
  const Canvas canvas = random.one_of({Canvas::kWhole, Canvas::kSame});
  const Background background = any_background(random);
  add(digest, turned_by(Page{random}.drawn(), degrees, background, canvas));
}

void turn_on_a_grid(Random& random, Digest& digest) {
  const int degrees = random.one_of({0, 90, 180, 270, 13, -45}), pixels = random.between(-50, 50);
  const Shear shear = random.one_of({Shear::kColumns, Shear::kRows});
  const Background background = any_background(random);
  add(digest, turned(any_form(random), degrees, background));
  add(digest, mirrored_left_right(any_form(random)));
  add(digest, mirrored_top_bottom(any_form(random)));
  add(digest, skewed(any_form(random), shear, pixels, background));
}

void scale(Random& random, Digest& digest) {
  for (const Resampling resampling :
       {Resampling::kArea, Resampling::kArea, Resampling::kLinear, Resampling::kCubic, Resampling::kNearest}) {
    const Size size = any_size(random);
    add(digest, scaled(any_form(random), size, resampling));
  }
}

void reduce(Random& random, Digest& digest) {
  const Picture page = Page{random}.drawn();
  const Reductions reductions(page);
  const Size size = any_size(random);
  const Rect part = {random.between(0, size.width - 1), random.between(0, size.height - 1), random.between(1, 90),
                     random.between(1, 90)};
  const Rect inside = {part.x, part.y, std::min(part.width, size.width - part.x),
                       std::min(part.height, size.height - part.y)};
  std::vector<uint32_t> pixels(static_cast<size_t>(inside.width) * static_cast<size_t>(inside.height));
  reductions.draw(size, inside, pixels);
  for (const uint32_t pixel : pixels) digest.add_number(pixel);
  digest.add_number(reductions.bytes());
}

void cut_up(Random& random, Digest& digest) {
  Picture page = Page{random}.drawn();
  const int x = random.between(0, page.width() - 1), y = random.between(0, page.height() - 1);
  const int width = random.between(1, page.width() - x), height = random.between(1, page.height() - y);
  add(digest, cropped(page.copy(), {x, y, width, height}));
  if (page.height() < 2) return;
  const int line = random.between(1, page.height() - 1);
  const Halves halves = cut(std::move(page), line);
  add(digest, halves.above), add(digest, halves.below);
}

void color(Random& random, Digest& digest) {
  const int brightness = random.between(-100, 100), contrast = random.between(-100, 100);
  const int smoothing = random.between(0, 2), level = random.between(20, 100);
  const Corner corner = {random.between(0, 89), random.between(0, 89)};
  const GrayWeights weights = random.one_of({GrayWeights::kEqual, GrayWeights::kByColor});
  const Filter filter = random.one_of({Filter::kBox, Filter::kBlur, Filter::kSharpen});
  const Cleaning cleaning = random.one_of({Cleaning::kAll, Cleaning::kGentle});
  add(digest, negative(any_form(random)));
  add(digest, gray(any_form(random), weights, smoothing));
  add(digest, toned(any_form(random, {4, 8, 24}), brightness, contrast));
  add(digest, looked_up(any_form(random, {8}), brightness, contrast));
  add(digest, looked_up(any_form(random, {8}), brightness, contrast, corner));
  add(digest, filtered(any_form(random), {.filter = filter, .intensity = weights}));
  add(digest, cleaned(Page{random, {260, 200}, {1, 8}}.drawn(), level, cleaning));
}

void change_form(Random& random, Digest& digest) {
  for (Picture (*change)(Picture) : {expanded, upright, workable, with_whole_table, in_true_color})
    add(digest, change(any_form(random)));
  add(digest, luminance_of(workable(any_form(random))));
}

void take_few_colors(Random& random, Digest& digest) {
  for (const DitherMethod& method : dither_methods()) {
    const int bits = method.most_bits == 8 ? random.one_of({1, 4, 8}) : random.one_of({1, 4});
    add(digest, dithered(in_true_color(any_form(random)), method, bits));
  }
  const auto method =
      random.one_of({programs::Halftone::kThreshold, programs::Halftone::kDiffusion, programs::Halftone::kOrdered});
  const int brightness = random.between(-255, 255);
  add(digest, halftoned(any_form(random, {4, 8, 24}), method, brightness));
}

void combine_and_compare(Random& random, Digest& digest) {
  const Picture base = any_form(random), overlay = any_form(random);
  std::optional<Picture> mask;
  if (random.once_in(2)) {
    mask = blank_page({overlay.width(), overlay.height()}, 1, Table::kGray, {});
    for_each_row(*mask, [&](std::span<uint8_t> row) { random.fill(row); });
  }
  const Corner at = {random.between(-50, base.width()), random.between(-50, base.height())};
  const Mixing mixing = random.one_of({Mixing::kReplace, Mixing::kOr, Mixing::kXor});
  const Picture both = combined(base.copy(), overlay.copy(), std::move(mask), at, mixing);
  add(digest, both);
  Picture drawing;
  const int threshold = random.one_of({0, 0, 20});
  const Comparison comparison = compared(base, random.once_in(2) ? both : overlay, threshold, &drawing);
  digest.add_number(comparison.different), digest.add_number(comparison.largest);
  add(digest, drawing);
  for (const uint64_t count : count_levels(workable(base.copy()))) digest.add_number(count);
}

void find_content(Random& random, Digest& digest) {
  const Picture page = Page{random, {900, 900}}.drawn();
  InkMap map = ink_map(page, {random.one_of({cell_side(page), 4, 8, 16}), random.one_of({1, 2, 8})});
  const InkMap coarse = coarser(map, {map.cell().width * 2, map.cell().height * 4});
  const std::vector<uint8_t> borders = dark_borders(coarse);
  remove_cells(map, coarse, borders);
  digest.add(borders);
  for (int y = 0; y < map.height(); ++y) digest.add(map.row(y));
  digest.add_number(ink_percent(page, random.between(0, 19) / 100.0));
  if (const auto box = content_box(page, {random.one_of({0, 20, 400}), random.one_of({0, 20, 400})}))
    for (const int side : {box->x, box->y, box->width, box->height}) digest.add_number(side);
}

void find_lines(Random& random, Digest& digest) {
  const Picture page = Page{random, {900, 900}}.drawn();
  const Slant slant = find_slant(page);
  digest.add_number(slant.degrees), digest.add_number(slant.uncertainty), digest.add_number(slant.confidence),
      digest.add_number(slant.goes_down);
  const Orientation orientation = find_orientation(page);
  digest.add_number(orientation.confidence), digest.add_number(orientation.turn), digest.add_number(orientation.lines);
}

void make_black_and_white(Random& random, Digest& digest) {
  const Picture page = Page{random}.drawn();
  const int level = random.between(-1, 257), window = random.between(0, 59) * 2 + 1;
  const double k = random.between(0, 59) / 100.0;
  const Size most = {random.between(1, 9), random.between(1, 9)};
  const SpeckColors colors = random.one_of({SpeckColors::kInk, SpeckColors::kPaper, SpeckColors::kBoth});
  digest.add_number(otsu_level(page));
  add(digest, thresholded(page.copy(), level));
  add(digest, thresholded(page.copy(), Sauvola{.window = window, .k = k}));
  const Despeckled done = despeckled(Page{random, {260, 200}, {1}}.drawn(), most, colors);
  add(digest, done.picture), digest.add_number(done.specks), digest.add_number(done.pixels);
}

// Headers of every size that bitmaps have, some of them damaged, in front of random colours and rows.
void read_bitmaps(Random& random, Digest& digest) {
  const int header_bytes = random.one_of({12, 16, 40, 52, 56, 64, 108, 124}), height = random.one_of({1, 2, 3, 5, -1, -4});
  const auto depth = static_cast<uint16_t>(random.one_of({1, 4, 8, 16, 24, 32}));
  BITMAPINFOHEADER header = header_for(random.between(1, 20), height, depth);
  const uint32_t masks_or_codes = depth == 16 || depth == 32 ? random.one_of({3u, 6u}) : depth == 4 ? 2 : depth == 8 ? 1 : 0;
  header.biCompression = random.once_in(2) ? masks_or_codes : random.once_in(20) ? 3 : 0;
  header.biClrUsed = static_cast<uint32_t>(random.one_of({0, 0, 0, 1, 3, 200, 300}));
  Bytes dib = with_header(header, Bytes(static_cast<size_t>(random.between(0, 2500))));
  random.fill(std::span(dib).subspan(sizeof header));
  const uint32_t masks[2][4] = {{0xF800, 0x7E0, 0x1F, 0}, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}};
  if (dib.size() > 56) std::memcpy(dib.data() + 40, masks[depth == 32], static_cast<size_t>(random.one_of({12, 16})));
  const uint16_t old_header[] = {static_cast<uint16_t>(header.biWidth), static_cast<uint16_t>(std::abs(height)), 1, depth};
  if (header_bytes == 12 && dib.size() > 12) std::memcpy(dib.data() + 4, old_header, sizeof old_header);
  dib[0] = static_cast<uint8_t>(header_bytes);
  if (random.once_in(3)) dib[static_cast<size_t>(random.between(0, 59)) % dib.size()] = random.byte();
  const Bytes file = random.once_in(4) ? dib : file_of(dib, static_cast<uint32_t>(random.one_of({0, 0, 0, 54, 200, 1170})));
  const std::string bytes(file.begin(), file.end());
  std::istringstream stream(bytes);
  digest.add_number(begins_as_bitmap(stream));
  const BitmapFacts facts = inspect_bitmap(stream, bytes.size());
  digest.add_number(facts.has_masks), digest.add_number(facts.has_opacity), digest.add_number(facts.colors.value_or(9));
  add(digest, read_bitmap(stream, bytes.size()));
}

void read_maps(Random& random, Digest& digest) {
  const int kind = random.between(1, 6), most = random.one_of({1, 9, 255, 256, 65'535});
  std::string file;
  for (int page = 0; page < 2; ++page) {
    file += "P" + std::to_string(kind) + random.one_of({" ", "\n# note\n", "\t"});
    file += std::to_string(random.between(1, 20));
    file += random.one_of({" ", " #\n", "\r\n"});
    file += std::to_string(random.between(1, 5)) + "\n";
    if (kind % 3 != 1) file += std::to_string(most) + "\n";
    for (int i = random.once_in(4) ? random.between(0, 300) : 700; i > 0; --i) {
      const int sample = random.between(0, random.once_in(200) ? 70'000 : kind % 3 == 1 ? 1 : most);
      if (kind > 3)
        file += static_cast<char>(random.between(0, std::min(most, 255)));
      else
        file += std::to_string(sample) + random.one_of({" ", "\n", " # \n"});
    }
  }
  std::istringstream stream(file);
  digest.add_number(begins_as_pnm(stream));
  for (const uint64_t start : find_pnm_pages(stream, file.size())) {
    digest.add_number(start), digest.add_number(inspect_pnm(stream, file.size(), start).most);
    add(digest, read_pnm(stream, file.size(), start));
  }
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
        digest.add_number(static_cast<int>(problem.fault()));
      }
    }
    EXPECT_EQ(digest.value, row.digest) << "row " << &row - rows << ": 0x" << std::hex << digest.value;
  }
}

}  // namespace
