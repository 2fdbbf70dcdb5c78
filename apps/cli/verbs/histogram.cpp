// vorel histogram: how often each grey occurs.
#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/pixels.h"
#include "cli/verbs/saving_options.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

constexpr int kLevels = 256, kPictureHeight = 128;

struct Arguments {
  std::string input, picture;
  int page = 1;
  bool as_json = false;
  SavingOptions saving;
};

struct Facts {
  LevelCounts counts;
  uint64_t pixels = 0;
  double mean = 0;
};

Facts facts_of(const Picture& picture) {
  Facts facts{.counts = count_levels(picture)};
  double sum = 0;
  for (size_t level = 0; level < kLevels; ++level) {
    facts.pixels += facts.counts[level];
    sum += static_cast<double>(facts.counts[level]) * static_cast<double>(level);
  }
  facts.mean = sum / static_cast<double>(facts.pixels);
  return facts;
}

void print_json(std::ostream& output, const std::string& name, const Facts& facts) {
  const nlohmann::ordered_json json = {
      {"file", name}, {"pixels", facts.pixels}, {"mean", facts.mean}, {"counts", facts.counts}};
  output << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void print_text(std::ostream& output, const std::string& name, const Facts& facts) {
  output << fmt::format("{}\n  pixels  {}\n  mean    {:.2f}\n  level   count\n", name, facts.pixels, facts.mean);
  for (size_t level = 0; level < kLevels; ++level)
    if (facts.counts[level] != 0) output << fmt::format("  {:5}   {}\n", level, facts.counts[level]);
}

// Bars in black on white, the longest as high as the picture.
Picture drawn(const Facts& facts, const std::string& label) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = kLevels;
  header.biHeight = kPictureHeight;
  header.biPlanes = 1;
  header.biBitCount = 1;
  header.biClrUsed = 2;
  constexpr size_t kTable = 2 * sizeof(RGBQUAD);
  header.biSizeImage = static_cast<uint32_t>(stored_row_bytes(header) * row_count(header));
  Picture picture{
      .label = label, .header = header, .dib = Dib(GlobalAlloc(GHND, sizeof header + kTable + header.biSizeImage))};
  if (!picture.dib) throw std::bad_alloc();
  const DibLock lock(picture.dib);
  std::memcpy(lock.bytes().data(), &header, sizeof header);
  std::ranges::fill(lock.bytes().subspan(sizeof header + sizeof(RGBQUAD), 3), uint8_t{0xFF});
  std::ranges::fill(lock.pixels(), uint8_t{0xFF});
  Pixels pixels(lock);
  const uint64_t most = *std::ranges::max_element(facts.counts);
  for (int level = 0; level < kLevels; ++level) {
    const uint64_t count = facts.counts[static_cast<size_t>(level)];
    const auto length = static_cast<int>((count * kPictureHeight + most - 1) / most);  // whatever occurs is seen
    for (int y = kPictureHeight - length; y < kPictureHeight; ++y) pixels.set(level, y, 0);
  }
  return picture;
}

ExitCode tell(const Arguments& arguments, const Streams& streams) {
  Picture picture = load_picture(Input(arguments.input, streams.input), arguments.page);
  prepare(picture, Reach::kMovesPixels);
  const Facts facts = facts_of(picture);
  if (!arguments.picture.empty()) {
    Picture bars = drawn(facts, arguments.picture);
    write_picture(Output(arguments.picture, arguments.saving.overwrite, streams.output), bars,
                  arguments.saving.saving_for(arguments.picture));
  }
  if (arguments.picture == "-") return ExitCode::kDone;
  if (arguments.as_json)
    print_json(streams.output, arguments.input, facts);
  else
    print_text(streams.output, arguments.input, facts);
  return ExitCode::kDone;
}

Action declare(CLI::App& app) {
  app.footer(
      "The grey of a pixel is (blue + green + red + 1) / 3. IN may have 1, 4, 8 or 24 bits per pixel.\n\n"
      "Examples:\n"
      "  vorel histogram scan.png\n"
      "  vorel histogram scan.png --json\n"
      "  vorel histogram scan.png --picture bars.png");
  const auto arguments = std::make_shared<Arguments>();
  declare_argument(app, "IN", arguments->input, "the picture file to read; - is standard input");
  declare_page(app, arguments->page);
  app.add_flag("--json", arguments->as_json, "print a JSON object with a count for each level (default: text)");
  app.add_option("--picture", arguments->picture, "draw it too, into this file (default: do not)")->option_text("OUT");
  arguments->saving.declare(app);
  return [arguments](const Streams& streams) { return tell(*arguments, streams); };
}

}  // namespace

const Verb kHistogram{"histogram", "Tell how often each grey occurs, in words, as JSON or as a picture.", declare};

}  // namespace vorel::cli
