// vorel compare: whether two pictures show the same, and where they do not.
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/page_work.h"
#include "cli/progress.h"
#include "cli/report.h"
#include "core/resolution.h"

namespace vorel::cli {
namespace {

using Json = nlohmann::ordered_json;
using programs::Picture;

struct Values {
  std::string first, second, drawing, pages;
  int threshold = 0;
  bool as_json = false, is_strict = false;
  SavingOptions saving;
};

// A page of a file without its pixels.
struct Facts {
  std::string label;
  int width = 0, height = 0, depth = 0, x_per_metre = 0, y_per_metre = 0;  // resolutions are 0 where unknown

  Facts(std::string name, const Picture& picture)
      : label(std::move(name)),
        width(picture.width()),
        height(picture.height()),
        depth(picture.depth()),
        x_per_metre(std::max(picture.header().x_per_metre, 0)),
        y_per_metre(std::max(picture.header().y_per_metre, 0)) {}

  bool has_size_of(const Facts& other) const { return width == other.width && height == other.height; }
  bool has_resolution_of(const Facts& other) const {
    return x_per_metre == other.x_per_metre && y_per_metre == other.y_per_metre;
  }
};

struct Pair {
  Facts a, b;
  programs::Comparison comparison;
  bool is_strict;

  bool has_same_form() const { return a.depth == b.depth && a.has_resolution_of(b); }
  bool is_equal() const { return comparison.different == 0 && a.has_size_of(b) && (has_same_form() || !is_strict); }
  bool is_plainly_equal() const { return is_equal() && has_same_form() && comparison.largest == 0; }
};

Json json_of(const Facts& facts) {
  const auto known = [](int per_metre) { return per_metre > 0 ? Json(per_metre) : Json(); };
  return {{"page", facts.label},
          {"width", facts.width},
          {"height", facts.height},
          {"depth", facts.depth},
          {"xPixelsPerMetre", known(facts.x_per_metre)},
          {"yPixelsPerMetre", known(facts.y_per_metre)}};
}

Json json_of(const Pair& pair) {
  const programs::Comparison& comparison = pair.comparison;
  return {{"a", json_of(pair.a)},
          {"b", json_of(pair.b)},
          {"equal", pair.is_equal()},
          {"comparedWidth", comparison.size.width},
          {"comparedHeight", comparison.size.height},
          {"different", comparison.different},
          {"largest", comparison.largest}};
}

std::string shown_dpi(const Facts& facts) {
  if (facts.x_per_metre == 0 || facts.y_per_metre == 0) return "none";
  return fmt::format("{:.5g} x {:.5g} dpi", facts.x_per_metre * kMetresPerInch, facts.y_per_metre * kMetresPerInch);
}

std::string sentence_of(const Pair& pair) {
  const auto& [a, b, comparison, is_strict] = pair;
  const bool has_same_size = a.has_size_of(b);
  std::vector<std::string> parts;
  if (pair.is_equal()) parts.emplace_back("equal");
  if (!has_same_size) {
    parts.push_back(fmt::format("sizes differ, {} x {} and {} x {} pixels", a.width, a.height, b.width, b.height));
  }
  if (comparison.different != 0 || !has_same_size) {
    const uint64_t pixels = uint64_t{1} * comparison.size.width * comparison.size.height;
    parts.push_back(fmt::format("{} of {} pixels {}differ", comparison.different, pixels,
                                has_same_size ? "" : "that both have at the upper left "));
  }
  if (comparison.largest != 0) parts.push_back(fmt::format("the largest difference is {}", comparison.largest));
  if (a.depth != b.depth) parts.push_back(fmt::format("depths are {} and {} bits per pixel", a.depth, b.depth));
  if (!a.has_resolution_of(b)) parts.push_back(fmt::format("resolutions are {} and {}", shown_dpi(a), shown_dpi(b)));
  return fmt::format("{} and {}: {}\n", a.label, b.label, fmt::join(parts, "; "));
}

// Pages are compared in pairs, as many as both files have.
class Files {
 public:
  Files(const Values& values, const Streams& streams)
      : values_(values),
        streams_(streams),
        a_(values.first, values.pages, streams),
        b_(values.second, values.pages, streams) {}

  void compare() {
    if (values_.drawing.empty()) return compare_all(nullptr);
    Target target(values_.drawing, values_.saving, streams_);
    target.open(paired(), {&a_, &b_});
    if (target.replaces(a_) || target.replaces(b_)) {
      throw Failure(ExitCode::kWrongUse, values_.drawing,
                    "the picture of the differences would replace one of the two; give --out another name");
    }
    target.write([&](const Target::Put& put) { compare_all(&put); });
  }

  bool are_equal() const { return a_.size() == b_.size() && std::ranges::all_of(pairs_, &Pair::is_equal); }

  Json json() const {
    Json pages = Json::array();
    for (const Pair& pair : pairs_) pages.push_back(json_of(pair));
    return {{"a", values_.first},    {"b", values_.second},   {"equal", are_equal()},     {"threshold", values_.threshold},
            {"pagesOfA", a_.size()}, {"pagesOfB", b_.size()}, {"pages", std::move(pages)}};
  }

  // Of several pages a line for each pair that is not plainly equal, and one for the files.
  std::string text() const {
    if (a_.size() == 1 && b_.size() == 1) return sentence_of(pairs_.front());
    const std::string names = fmt::format("{} and {}", a_.input().label(), b_.input().label());
    std::string text;
    for (const Pair& pair : pairs_)
      if (!pair.is_plainly_equal()) text += sentence_of(pair);
    const auto different = pairs_.size() - static_cast<size_t>(std::ranges::count_if(pairs_, &Pair::is_equal));
    if (a_.size() != b_.size()) text += fmt::format("{}: numbers of pages differ, {} and {}\n", names, a_.size(), b_.size());
    if (are_equal()) return text + fmt::format("{}: all {} pages are equal\n", names, pairs_.size());
    return text + fmt::format("{}: {} of {} pages differ\n", names, different, pairs_.size());
  }

 private:
  size_t paired() const { return std::min(a_.size(), b_.size()); }

  void compare_all(const Target::Put* put) {
    Progress progress(streams_, "page", static_cast<int>(paired()));
    for (size_t i = 0; i < paired(); ++i) {
      progress.step();
      const Page a = a_.load(i), b = b_.load(i);
      for (const Page* page : {&a, &b})
        for (const std::string& loss : page->losses) print_note(streams_.errors, page->label + ": " + loss);
      Page drawing{.label = a.label, .picture = {}};
      const auto comparison = about(a.label, [&] {
        return programs::compared(a.picture, b.picture, values_.threshold, put == nullptr ? nullptr : &drawing.picture);
      });
      pairs_.push_back({Facts(a.label, a.picture), Facts(b.label, b.picture), comparison, values_.is_strict});
      if (put != nullptr) (*put)(drawing);
    }
  }

  const Values& values_;
  const Streams& streams_;
  Source a_, b_;
  std::vector<Pair> pairs_;
};

ExitCode compare(const Values& values, const Streams& streams) {
  require_one_standard_input({values.first, values.second});
  Files files(values, streams);
  files.compare();
  if (values.drawing != "-") streams.output << (values.as_json ? dumped(files.json()) + "\n" : files.text());
  return files.are_equal() ? ExitCode::kDone : ExitCode::kDifferent;
}

Action declare(Arguments& arguments) {
  arguments.explain(
      "The exit code is 0 if A and B are equal and 1 if they differ; 2 and above are failures. Colours are compared, page\n"
      "by page: a page of 1 bit equals its copy of 24 bits. Other sizes and numbers of pages are differences; other\n"
      "depths and resolutions are mentioned and, with --strict, differences. Where sizes differ, the part that both have\n"
      "at the upper left is compared too. OUT is A in pale greys, with differing pixels in red.",
      "  vorel compare scan.tif copy.png\n"
      "  vorel compare before.tif after.tif --threshold 2 --out differences.png --numbered\n"
      "  vorel compare a.tif b.tif --page 1-3 --json");
  const auto values = std::make_shared<Values>();
  arguments.required("A", values->first, "a picture file; - is standard input");
  arguments.required("B", values->second, "the picture file to compare it with; - is standard input");
  arguments.option("--threshold", values->threshold, "N",
                   "differences of up to N in red, green and blue count as equal, 0 to 255 (default: 0)", {0, 255});
  declare_pages(arguments, values->pages, "both");
  arguments.flag("--strict", values->is_strict,
                 "other depths and resolutions are differences (default: they are only mentioned)");
  arguments.flag("--json", values->as_json, "print a JSON object with an entry for each pair of pages (default: text)");
  arguments.option("--out", values->drawing, "OUT", "draw the differences, into this file (default: do not)");
  values->saving.declare(arguments, {.strict = false});
  return [values](const Streams& streams) { return compare(*values, streams); };
}

}  // namespace

const Verb kCompare{"compare", "Tell whether two pictures are equal, and how many pixels differ.", declare};

}  // namespace vorel::cli
