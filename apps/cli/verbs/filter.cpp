// vorel filter: blurs, sharpens, and applies kernels.
#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <vector>

#include "cli/pixels.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Options {
  std::string filter, kernel;
  int size = 3;
  bool weighted = false;
};

constexpr int kFromMemory = 1;
const std::vector<std::pair<std::string, int>> kFilters = {
    {"kernel", kFromMemory}, {"box", 3}, {"blur", 4}, {"sharpen", 5}, {"sharpen-more", 6}};

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
std::vector<int> kernel_of(const Options& options) {
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
  const auto count = static_cast<size_t>(options.size) * static_cast<size_t>(options.size);
  if (numbers.size() == count) numbers.push_back(0);
  if (numbers.size() != count + 1) {
    throw fail(
        fmt::format("a kernel of size {} has {} numbers, and one more for the divisor if that is not their sum; this has {}",
                    options.size, count, numbers.size()));
  }
  return numbers;
}

Dib filtered(Picture& picture, const Options& options) {
  prepare(picture, Reach::kMovesPixels);
  const int depth = picture.header.biBitCount;
  if (depth < 8) {
    throw Failure(
        ExitCode::kFormat, picture.label,
        fmt::format("filters are for 8 and 24 bits per pixel, the picture has {}; see \"vorel gray --help\" and \"vorel "
                    "expand --help\"",
                    depth));
  }
  const std::vector<int> kernel = kernel_of(options);
  const std::vector<short> short_kernel(kernel.begin(), kernel.end());
  int type = 0, error = 0;
  for (const auto& [word, number] : kFilters)
    if (word == options.filter) type = number;
  HGLOBAL result = nullptr;
  if (has_gray_ramp(picture)) {
    result = Convolve(picture.dib.get(), 1, type, options.size, nullptr, kernel.data(), &error);
  } else {
    if (depth == 8) picture = in_true_color(picture);
    result = ColorConvolution(picture.dib.get(), 1, options.weighted ? 1 : 0, static_cast<short>(type), options.size,
                              nullptr, short_kernel.data(), &error);
  }
  if (error == IMG_E_PARAMETER) {
    throw Failure(
        ExitCode::kWrongUse, "filter",
        "the kernel is out of bounds; size 7 is for box and kernel alone, and the positive and the negative numbers of a "
        "kernel may sum to 127 each");
  }
  return checked(picture, result);
}

Action declare(CLI::App& app) {
  app.footer(
      "Greys of 8 bits are filtered as they are. Colours are filtered by their intensity, and come out with 24 bits per\n"
      "pixel. A kernel is a list of whole numbers, row by row from the top, and last the divisor (0 or none: their sum),\n"
      "or a text file with such a list. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel filter scan.png soft.png blur\n"
      "  vorel filter photo.jpg crisp.jpg sharpen --size 5\n"
      "  vorel filter scan.png edges.png kernel --kernel \"-1 -1 -1  -1 8 -1  -1 -1 -1\"");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(app, [options](Picture& picture) { return filtered(picture, *options); });
  std::vector<std::string> words;
  for (const auto& [word, number] : kFilters) words.push_back(word);
  declare_argument(app, "FILTER", options->filter, "box, blur, sharpen, sharpen-more, or kernel with --kernel")
      ->check(CLI::IsMember(words));
  app.add_option("--kernel", options->kernel, "a kernel of your own, or a file with one")->option_text("FILE|LIST");
  app.add_option("--size", options->size, "3, 5, or for box and kernel 7 (default: 3)")
      ->check(CLI::IsMember({3, 5, 7}))
      ->option_text("N");
  app.add_flag("--weighted", options->weighted, "weigh green most in the intensity of colours (default: all alike)");
  return action;
}

}  // namespace

const Verb kFilter{"filter", "Blur, sharpen, or apply a kernel of your own.", declare};

}  // namespace vorel::cli
