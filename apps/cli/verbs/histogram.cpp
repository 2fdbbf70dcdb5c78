// vorel histogram: how often each grey occurs.
#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/page_work.h"
#include "cli/report.h"
#include "common/forms.h"
#include "core/pixel.h"

namespace vorel::cli {
namespace {

using Json = nlohmann::ordered_json;
using programs::LevelCounts;
using programs::Picture;

constexpr int kLevels = 256, kPictureHeight = 128;

struct Values {
  std::string input, picture, pages;
  bool as_json = false;
  SavingOptions saving;
};

struct Facts {
  LevelCounts counts;
  uint64_t pixels = 0;
  double mean = 0;
};

Facts facts_of(const Picture& picture) {
  Facts facts{.counts = programs::count_levels(picture)};
  double sum = 0;
  for (size_t level = 0; level < kLevels; ++level) {
    facts.pixels += facts.counts[level];
    sum += static_cast<double>(facts.counts[level]) * static_cast<double>(level);
  }
  facts.mean = sum / static_cast<double>(facts.pixels);
  return facts;
}

Json json_of(const std::string& name, const Facts& facts) {
  return {{"file", name}, {"pixels", facts.pixels}, {"mean", facts.mean}, {"counts", facts.counts}};
}

std::string text_of(const std::string& name, const Facts& facts) {
  std::string text = fmt::format("{}\n  pixels  {}\n  mean    {:.2f}\n  level   count\n", name, facts.pixels, facts.mean);
  for (size_t level = 0; level < kLevels; ++level)
    if (facts.counts[level] != 0) text += fmt::format("  {:5}   {}\n", level, facts.counts[level]);
  return text;
}

// Bars in black on white, the longest as high as the picture.
Picture drawn(const Facts& facts) {
  DibHeader header{.width = kLevels, .height = kPictureHeight, .depth = 1};
  const Rgb black_and_white[] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  Picture picture = Picture::blank(header, black_and_white);
  const DibView pixels = picture.pixels();
  const uint64_t most = *std::ranges::max_element(facts.counts);
  for (int level = 0; level < kLevels; ++level) {
    const uint64_t count = facts.counts[static_cast<size_t>(level)];
    const auto length = static_cast<int>((count * kPictureHeight + most - 1) / most);  // whatever occurs is seen
    for (int y = length; y < kPictureHeight; ++y) Pixel<1>::store(pixels.row(y).data(), level, 1);
  }
  return picture;
}

// Counts each page and hands it on.
void count_all(const Source& source, const std::function<void(size_t index, const Facts& facts)>& take) {
  for (size_t i = 0; i < source.size(); ++i) {
    Page page = source.load(i);
    take(i, about(page.label, [&] { return facts_of(programs::workable(std::move(page.picture))); }));
  }
}

ExitCode tell(const Values& values, const Streams& streams) {
  const Source source(values.input, values.pages, streams);
  std::vector<Facts> all;
  const auto note = [&](size_t, const Facts& facts) { all.push_back(facts); };
  if (values.picture.empty()) {
    count_all(source, note);
  } else {
    Target target(values.picture, values.saving, streams);
    target.open(source.size(), {&source});
    target.write([&](const Target::Put& put) {
      count_all(source, [&](size_t index, const Facts& facts) {
        note(index, facts);
        Page page{source.label(index), drawn(facts)};
        put(page);
      });
    });
  }
  if (values.picture == "-") return ExitCode::kDone;
  const auto name = [&](size_t index) { return all.size() == 1 ? values.input : source.label(index); };
  if (values.as_json) {
    Json list = Json::array();
    for (size_t i = 0; i < all.size(); ++i) list.push_back(json_of(name(i), all[i]));
    streams.output << dumped(list.size() == 1 ? list[0] : list) << '\n';
    return ExitCode::kDone;
  }
  for (size_t i = 0; i < all.size(); ++i) streams.output << text_of(name(i), all[i]);
  return ExitCode::kDone;
}

Action declare(Arguments& arguments) {
  arguments.explain("The grey of a pixel is (blue + green + red + 1) / 3. Of several pages JSON is an array of objects.",
                    "  vorel histogram scan.png\n"
                    "  vorel histogram scan.png --json\n"
                    "  vorel histogram scan.png --picture bars.png");
  const auto values = std::make_shared<Values>();
  declare_input(arguments, values->input);
  declare_pages(arguments, values->pages);
  arguments.flag("--json", values->as_json, "print a JSON object with a count for each level (default: text)");
  arguments.option("--picture", values->picture, "OUT", "draw it too, into this file (default: do not)");
  values->saving.declare(arguments);
  return [values](const Streams& streams) { return tell(*values, streams); };
}

}  // namespace

const Verb kHistogram{"histogram", "Tell how often each grey occurs, in words, as JSON or as a picture.", declare};

}  // namespace vorel::cli
