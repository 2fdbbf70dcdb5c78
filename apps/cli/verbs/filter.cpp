// vorel filter: blurs, sharpens, and applies kernels.
#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <vector>

#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

using programs::Filter;
using programs::GrayWeights;
using programs::Picture;

struct Options {
  std::string filter, kernel, size = "3";
  bool weighted = false;
};

const std::vector<std::pair<std::string, Filter>> kFilters = {{"kernel", Filter::kKernel},
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

// A kernel written in the option itself or, as text, in a file that it names.
std::vector<int> kernel_of(const Options& options, int size) {
  const auto fail = [&](const std::string& text) { return Failure(ExitCode::kWrongUse, "filter", text); };
  if (options.filter != "kernel" && !options.kernel.empty())
    throw fail("--kernel goes with the filter \"kernel\" alone; leave it out");
  if (options.filter != "kernel") return {};
  std::string text = options.kernel;
  if (std::filesystem::is_regular_file(text)) {
    std::ifstream file(text);
    text.assign(std::istreambuf_iterator<char>(file), {});
  }
  std::vector<int> numbers = numbers_in(text);
  const auto count = static_cast<size_t>(size) * static_cast<size_t>(size);
  if (numbers.size() == count) numbers.push_back(0);
  if (numbers.size() != count + 1) {
    throw fail(
        fmt::format("a kernel of size {} has {} numbers, and one more for the divisor if that is not their sum; this has {}",
                    size, count, numbers.size()));
  }
  return numbers;
}

Picture filtered(Picture picture, const Options& options) {
  programs::Filtering filtering{.size = std::stoi(options.size),
                                .intensity = options.weighted ? GrayWeights::kByColor : GrayWeights::kEqual};
  filtering.kernel = kernel_of(options, filtering.size);
  for (const auto& [word, filter] : kFilters)
    if (word == options.filter) filtering.filter = filter;
  return programs::filtered(std::move(picture), filtering);
}

Action declare(Arguments& arguments) {
  arguments.explain(
      "Greys of 8 bits are filtered as they are. Colours are filtered by their intensity, and come out with 24 bits per\n"
      "pixel. A kernel is a list of whole numbers, row by row from the top, and last the divisor (0 or none: their sum),\n"
      "or a text file with such a list. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel filter scan.png soft.png blur\n"
      "  vorel filter photo.jpg crisp.jpg sharpen --size 5\n"
      "  vorel filter scan.png edges.png kernel --kernel \"-1 -1 -1  -1 8 -1  -1 -1 -1\"");
  const auto options = std::make_shared<Options>();
  const Action action =
      declare_transform(arguments, [options](Picture picture) { return filtered(std::move(picture), *options); });
  std::vector<std::string> words;
  for (const auto& [word, filter] : kFilters) words.push_back(word);
  arguments.required("FILTER", options->filter, "box, blur, sharpen, sharpen-more, or kernel with --kernel", one_of(words));
  arguments.option("--kernel", options->kernel, "FILE|LIST", "a kernel of your own, or a file with one");
  arguments.option("--size", options->size, "N", "3, 5, or for box and kernel 7 (default: 3)", one_of({"3", "5", "7"}));
  arguments.flag("--weighted", options->weighted, "weigh green most in the intensity of colours (default: all alike)");
  return action;
}

}  // namespace

const Verb kFilter{"filter", "Blur, sharpen, or apply a kernel of your own.", declare};

}  // namespace vorel::cli
