// Prints tables of errors and times in finding the slant of pages, beside Leptonica and ImageMagick's -deskew.
// usage: deskew_bench [--magick] [--every N] [--list]
//   --magick  runs ImageMagick's convert too, which takes seconds a page
//   --every   takes one page in N
//   --list    prints each page
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <leptonica/allheaders.h>
#include <map>
#include <optional>
#include <sys/resource.h>
#include <sys/time.h>

#include "common/page/slant.h"
#include "page_sets.h"

namespace {

using namespace vorel::bench;
using vorel::programs::Picture;

struct Answer {
  std::optional<double> degrees;  // clockwise; empty if the page is to be left alone
  double milliseconds = 0;
};

// A 1-bit page as a portable bitmap, in which black is 1.
std::string portable_bitmap(const Picture& page) {
  std::string bytes = fmt::format("P4\n{} {}\n", page.width(), page.height());
  for (int y = 0; y < page.height(); ++y)
    for (const uint8_t byte : page.pixels().row_from_top(y)) bytes.push_back(static_cast<char>(~byte));
  return bytes;
}

// Processor time of this process and of the children that it waited for.
double processor_milliseconds() {
  double sum = 0;
  for (const int whose : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(whose, &usage);
    for (const timeval& part : {usage.ru_utime, usage.ru_stime})
      sum += 1e3 * static_cast<double>(part.tv_sec) + 1e-3 * static_cast<double>(part.tv_usec);
  }
  return sum;
}

template <class Work>
double milliseconds(Work work) {
  const double start = processor_milliseconds();
  work();
  return processor_milliseconds() - start;
}

Answer ours(const Picture& page) {
  vorel::programs::Slant slant;
  Answer answer{.degrees = {}, .milliseconds = milliseconds([&] { slant = vorel::programs::find_slant(page); })};
  if (slant.is_sure() && slant.is_worth_turning()) answer.degrees = slant.degrees;
  return answer;
}

// Searches its default range of 7 degrees, or our range if `is_wide`. Its own deskewing also requires a confidence of 3.
Answer leptonica(const Picture& page, bool is_wide) {
  const std::string bytes = portable_bitmap(page);
  PIX* pix = pixReadMem(reinterpret_cast<const l_uint8*>(bytes.data()), bytes.size());
  l_float32 angle = 0, confidence = 0;
  int failed = 0;
  Answer answer{.degrees = {}, .milliseconds = milliseconds([&] {
                                 failed = is_wide ? pixFindSkewSweepAndSearch(pix, &angle, &confidence, 4, 2, 16, 1, 0.01F)
                                                  : pixFindSkew(pix, &angle, &confidence);
                               })};
  pixDestroy(&pix);
  constexpr float kLeastConfidence = 3;
  if (failed == 0 && confidence >= kLeastConfidence && angle != 0) answer.degrees = -angle;
  return answer;
}

// A page that takes half a minute of the processor counts as left alone.
Answer magick(const Picture& page) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "deskew_bench.pbm";
  std::ofstream(path, std::ios::binary) << portable_bitmap(page);
  Answer answer;
  answer.milliseconds = milliseconds([&] {
    FILE* const pipe =
        popen(("ulimit -t 30; convert " + path.string() + " -deskew 40% -format '%[deskew:angle]' info: 2>&1").c_str(), "r");
    double angle = 0;
    if (std::fscanf(pipe, "%lf", &angle) == 1 && angle != 0) answer.degrees = -angle;
    pclose(pipe);
  });
  std::filesystem::remove(path);
  return answer;
}

struct Finder {
  const char* name;
  std::function<Answer(const Picture&)> find;
};

// The slant left after turning. Pages without a direction begin with a slant of 0.
struct Tally {
  std::vector<double> errors;
  int worse = 0, turned = 0;
  double milliseconds = 0;

  void add(const TestPage& page, const Answer& answer) {
    const double before = page.degrees.value_or(0), after = before - answer.degrees.value_or(0);
    errors.push_back(std::abs(after));
    worse += std::abs(after) > std::abs(before) + 1e-9 ? 1 : 0;
    turned += answer.degrees ? 1 : 0;
    milliseconds += answer.milliseconds;
  }

  std::string row(const char* name) {
    std::ranges::sort(errors);
    const auto at = [&](double share) {
      return errors[std::min(errors.size() - 1, static_cast<size_t>(share * static_cast<double>(errors.size())))];
    };
    const auto within = std::ranges::count_if(errors, [](double error) { return error <= 0.1; });
    return fmt::format("| {} | {:.4f} | {:.3f} | {:.3f} | {:.3f} | {:.1f} % | {} | {} | {:.1f} |", name, at(0.5), at(0.9),
                       at(0.99), errors.back(), 100.0 * static_cast<double>(within) / static_cast<double>(errors.size()),
                       turned, worse, milliseconds / static_cast<double>(errors.size()));
  }
};

struct Options {
  bool with_magick = false, lists = false;
  int every = 1;
};

void measure(const char* title, const Options& options, const std::vector<Finder>& finders, int count,
             TestPage (*make)(int)) {
  std::map<std::string, std::map<std::string, Tally>> by_kind;
  std::map<std::string, Tally> all;
  int pages = 0;
  for (int i = 0; i < count; i += options.every, ++pages) {
    const TestPage page = make(i);
    for (const Finder& finder : finders) {
      const Answer answer = finder.find(page.picture);
      all[finder.name].add(page, answer);
      by_kind[page.kind][finder.name].add(page, answer);
      if (options.lists)
        fmt::print("{} {}: {} is {}, found {}\n", i, page.kind, finder.name,
                   page.degrees ? fmt::format("{:.3f}", *page.degrees) : "none",
                   answer.degrees ? fmt::format("{:.3f}", *answer.degrees) : "none");
    }
  }
  fmt::print("\n{}: {} pages; degrees left after turning\n\n", title, pages);
  fmt::print(
      "| finder | median | 90 % | 99 % | most | within 0.1 | turned | made worse | ms a page "
      "|\n|---|---|---|---|---|---|---|---|---|\n");
  for (const Finder& finder : finders) fmt::print("{}\n", all[finder.name].row(finder.name));
  fmt::print("\nmost degrees left (pages made worse)\n\n| pages |");
  for (const Finder& finder : finders) fmt::print(" {} |", finder.name);
  fmt::print("\n|---|");
  for (size_t i = 0; i < finders.size(); ++i) fmt::print("---|");
  for (auto& [kind, tallies] : by_kind) {
    fmt::print("\n| {} |", kind);
    for (const Finder& finder : finders) {
      const Tally& tally = tallies[finder.name];
      fmt::print(" {:.2f} ({}) |", *std::ranges::max_element(tally.errors), tally.worse);
    }
  }
  fmt::print("\n");
}

}  // namespace

int main(int count, char** arguments) {
  Options options;
  for (int i = 1; i < count; ++i) {
    if (std::strcmp(arguments[i], "--magick") == 0) options.with_magick = true;
    if (std::strcmp(arguments[i], "--list") == 0) options.lists = true;
    if (std::strcmp(arguments[i], "--every") == 0 && i + 1 < count) options.every = std::max(1, std::atoi(arguments[++i]));
  }
  std::vector<Finder> finders = {{"vorel", ours},
                                 {"Leptonica, 7 degrees", [](const Picture& page) { return leptonica(page, false); }},
                                 {"Leptonica, 16 degrees", [](const Picture& page) { return leptonica(page, true); }}};
  if (options.with_magick) finders.push_back({"ImageMagick", magick});
  measure("Text", options, finders, kTextPages, text_page);
  measure("Other pages", options, finders, other_pages(), other_page);
  return 0;
}
