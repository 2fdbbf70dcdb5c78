// The step despeckle: takes away small connected pieces.
#include <fmt/format.h>
#include <memory>

#include "cli/paper_length.h"
#include "cli/step.h"
#include "cli/words.h"
#include "common/page/specks.h"

namespace vorel::cli {
namespace {

const std::vector<std::string>& color_words() {  // in the order of programs::SpeckColors
  static const std::vector<std::string> words = {"ink", "paper", "both"};
  return words;
}

struct Options {
  std::string size = "0.25mm", colors = "ink";
};

void despeckle(Page& page, const Options& options) {
  const Size most = length_on(page.picture, options.size);
  const std::string note = resolution_note(page.picture, options.size);
  const auto colors = enumerator_of<programs::SpeckColors>(color_words(), options.colors);
  programs::Despeckled done = programs::despeckled(std::move(page.picture), most, colors);
  page.tell(fmt::format("{} specks of up to {} x {} pixels{} {}, {} pixels in all", done.specks, most.width, most.height,
                        note, page.is_trial ? "would be removed" : "removed", done.pixels),
            {{"specks", static_cast<int64_t>(done.specks)},
             {"pixels", static_cast<int64_t>(done.pixels)},
             {"most_pixels_across", int64_t{most.width}},
             {"most_pixels_down", int64_t{most.height}}});
  page.picture = std::move(done.picture);
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "A speck is what is connected, corners included, and no larger than SIZE in width and height. IN has 1 bit per\n"
      "pixel. clean works on each pixel and its neighbours instead, and also on greys.",
      "  vorel despeckle fax.tif clean.tif\n"
      "  vorel despeckle fax.tif clean.tif --size 4px --colors both");
  const auto options = std::make_shared<Options>();
  arguments.option("--size", options->size, "SIZE",
                   "the largest speck, in millimetres or pixels: 0.5mm, 4px (default: 0.25mm)", length_is_wrong);
  arguments.option("--colors", options->colors, "COLORS", "ink, paper or both: specks of ink, holes in it (default: ink)",
                   one_of(color_words()));
  return [options](Page& page) { despeckle(page, *options); };
}

}  // namespace

const Step kDespeckle{"despeckle", "Take connected specks of a size off black and white pages.", declare, true};

}  // namespace vorel::cli
