// vorel combine: paints one picture onto another.
#include <fmt/format.h>

#include "cli/extent.h"
#include "cli/page_work.h"
#include "cli/words.h"

namespace vorel::cli {
namespace {

struct Values {
  std::string base, overlay, output, at = "0,0", mask, mode = "replace", pages;
  SavingOptions saving;
};

const std::vector<std::string> kModes = {"replace", "or", "xor"};  // in the order of programs::Mixing

// One page goes onto all, several go onto as many.
void check_pages(const Source& source, const Source& base) {
  if (source.size() == 1 || source.size() == base.size()) return;
  throw Failure(ExitCode::kWrongUse, source.input().label(),
                fmt::format("it has {} pages and BASE has {}; give one page, or one for each", source.size(), base.size()));
}

programs::Picture page_for(const Source& source, size_t index) {
  return source.load(source.size() == 1 ? 0 : index).picture;
}

ExitCode combine(const Values& values, const Streams& streams) {
  Target target(values.output, values.saving, streams);
  require_one_standard_input({values.base, values.overlay, values.mask});
  const Source base(values.base, values.pages, streams), overlay(values.overlay, "", streams);
  std::optional<Source> mask;
  if (!values.mask.empty()) mask.emplace(values.mask, "", streams);
  check_pages(overlay, base);
  if (mask) check_pages(*mask, base);
  target.open(base.size(), {&base});
  const auto mode = enumerator_of<programs::Mixing>(kModes, values.mode);
  target.write([&](const Target::Put& put) {
    for (size_t i = 0; i < base.size(); ++i) {
      Page page = base.load(i);
      auto on_top = page_for(overlay, i);
      auto through = mask ? std::optional(page_for(*mask, i)) : std::nullopt;
      page.picture = about(mask ? mask->input().label() : page.label, [&] {
        return programs::combined(std::move(page.picture), std::move(on_top), std::move(through), parse_position(values.at),
                                  mode);
      });
      put(page);
    }
  });
  return ExitCode::kDone;
}

Action declare(Arguments& arguments) {
  arguments.explain(
      "OUT is as large as BASE; parts of OVERLAY that lie outside are left out. An OVERLAY of one page goes onto every\n"
      "page of BASE. or and xor work on the pixels as numbers: in black and white, with white as 1, or lets white win and\n"
      "xor inverts under white. Pictures of different depth or colours are combined at 24 bits per pixel.",
      "  vorel combine page.tif stamp.tif stamped.tif --at 1900,120\n"
      "  vorel combine photo.bmp logo.bmp out.bmp --mask shape.bmp\n"
      "  vorel combine page1.tif page2.tif difference.tif --mode xor");
  const auto values = std::make_shared<Values>();
  arguments.required("BASE", values->base, "the picture file to paint on; - is standard input");
  arguments.required("OVERLAY", values->overlay, "the picture file to paint");
  declare_output(arguments, values->output);
  arguments.option("--at", values->at, "X,Y",
                   "where OVERLAY goes in BASE: its left upper corner, counted from 0 (default: 0,0)", position_is_wrong);
  arguments.option("--mask", values->mask, "FILE", "a picture of 1 bit and OVERLAY's size; black leaves BASE as it is");
  arguments.option("--mode", values->mode, "MODE", "replace, or, xor (default: replace)", one_of(kModes));
  declare_pages(arguments, values->pages);
  values->saving.declare(arguments);
  return [values](const Streams& streams) { return combine(*values, streams); };
}

}  // namespace

const Verb kCombine{"combine", "Paint one picture onto another.", declare};

}  // namespace vorel::cli
