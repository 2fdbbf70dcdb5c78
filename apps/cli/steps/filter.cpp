// The step filter: blurs, sharpens, and applies kernels.
#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <memory>
#include <vector>

#include "cli/file_names.h"
#include "cli/files.h"
#include "cli/step.h"
#include "common/operations.h"

namespace vorel::cli {
namespace {

using programs::Filter;
using programs::GrayWeights;
using programs::Picture;

struct Options {
  std::string filter, kernel, size = "3";
  bool weighted = false;
  std::vector<int> numbers = {};  // of the kernel
};

constexpr std::pair<const char*, Filter> kFilters[] = {{"kernel", Filter::kKernel},
                                                       {"box", Filter::kBox},
                                                       {"blur", Filter::kBlur},
                                                       {"sharpen", Filter::kSharpen},
                                                       {"sharpen-more", Filter::kSharpenMore}};

// Whole numbers with anything but a sign or a digit between them.
std::vector<int> numbers_in(const std::string& text) {
  std::vector<int> numbers;
  for (const char *at = text.data(), *end = at + text.size(); at < end;) {
    int number = 0;
    const auto parsed = std::from_chars(at, end, number);
    if (parsed.ec == std::errc()) numbers.push_back(number);
    at = parsed.ec == std::errc() ? parsed.ptr : at + 1;
  }
  return numbers;
}

// Reads the kernel, which is the option itself or the text of a file that it names. Returns what is wrong.
std::string read_kernel(Options& options) {
  if (options.filter != "kernel")
    return options.kernel.empty() ? "" : "--kernel goes with the filter \"kernel\" alone; leave it out";
  std::error_code ignored;  // a long list is too long for a name
  const bool is_file = std::filesystem::is_regular_file(path_of(options.kernel), ignored);
  const std::string text = is_file ? contents_of(options.kernel).value_or("") : options.kernel;
  const size_t size = std::stoul(options.size), count = size * size;
  options.numbers = numbers_in(text);
  if (options.numbers.size() == count) options.numbers.push_back(0);
  if (options.numbers.size() == count + 1) return {};
  return fmt::format(
      "a kernel of size {} has {} numbers, and one more for the divisor if that is not their sum; this has {}", size, count,
      options.numbers.size());
}

Picture filtered(Picture picture, const Options& options) {
  const auto* filter = std::ranges::find_if(kFilters, [&](const auto& known) { return known.first == options.filter; });
  return programs::filtered(std::move(picture), {.filter = filter->second,
                                                 .size = std::stoi(options.size),
                                                 .intensity = options.weighted ? GrayWeights::kByColor : GrayWeights::kEqual,
                                                 .kernel = options.numbers});
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "Greys of 8 bits are filtered as they are. Colours are filtered by their intensity, and come out with 24 bits per\n"
      "pixel. A kernel is a list of whole numbers, row by row from the top, and last the divisor (0 or none: their sum),\n"
      "or a text file with such a list.",
      "  vorel filter scan.png soft.png blur\n"
      "  vorel filter photo.jpg crisp.jpg sharpen --size 5\n"
      "  vorel filter scan.png edges.png kernel --kernel \"-1 -1 -1  -1 8 -1  -1 -1 -1\"");
  const auto options = std::make_shared<Options>();
  std::vector<std::string> words;
  for (const auto& [word, filter] : kFilters) words.emplace_back(word);
  arguments.required("FILTER", options->filter, "box, blur, sharpen, sharpen-more, or kernel with --kernel", one_of(words));
  arguments.option("--kernel", options->kernel, "FILE|LIST", "a kernel of your own, or a file with one");
  arguments.option("--size", options->size, "N", "3, 5, or for box and kernel 7 (default: 3)", one_of({"3", "5", "7"}));
  arguments.flag("--weighted", options->weighted, "weigh green most in the intensity of colours (default: all alike)");
  arguments.check_together([options] { return read_kernel(*options); });
  return changes_picture([options](Picture picture) { return filtered(std::move(picture), *options); });
}

}  // namespace

const Step kFilter{"filter", "Blur, sharpen, or apply a kernel of your own.", declare};

}  // namespace vorel::cli
