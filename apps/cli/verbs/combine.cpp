// vorel combine: paints one picture onto another. The library does so through a display's bitmaps; here it is the same on every
// machine.
#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "cli/pixels.h"
#include "cli/verbs/extent.h"
#include "cli/verbs/saving_options.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Arguments {
  std::string base, overlay, output, at = "0,0", mask, mode = "replace";
  SavingOptions saving;
};

Picture load(const std::string& name, const Streams& streams, const Output& output) {
  const Input input(name, streams.input);
  keep_pages(input, output);
  Picture picture = load_picture(input, 1);
  prepare(picture, Reach::kMovesPixels);
  return picture;
}

// Whether pixels can be combined as numbers: the same depth and colours, and where numbers are mixed a colour for each that may
// come out.
bool can_stay_indexed(const Picture& a, const Picture& b, const std::string& mode) {
  if (a.header.biBitCount != b.header.biBitCount) return false;
  const DibLock a_lock(a.dib), b_lock(b.dib);
  const auto table = [](const DibLock& lock) {
    return lock.bytes().subspan(sizeof(BITMAPINFOHEADER), PaletteSize(lock.bytes().data()));
  };
  const auto a_table = table(a_lock), b_table = table(b_lock);
  if (a_table.size() != b_table.size()) return false;
  for (size_t i = 0; i < a_table.size(); ++i)
    if (i % sizeof(RGBQUAD) != 3 && a_table[i] != b_table[i]) return false;
  const int depth = a.header.biBitCount;
  return mode == "replace" || depth == 24 || a_table.size() >= sizeof(RGBQUAD) << depth;
}

uint32_t mixed(const std::string& mode, uint32_t below, uint32_t above) {
  return mode == "or" ? below | above : mode == "xor" ? below ^ above : above;
}

void paint(Picture& base, const Picture& overlay, const std::optional<Picture>& mask, Position at, const std::string& mode) {
  const DibLock base_lock(base.dib), overlay_lock(overlay.dib), mask_lock(mask ? mask->dib : overlay.dib);
  Pixels target(base_lock);
  const Pixels source(overlay_lock), through(mask_lock);
  const auto begin = [](int offset, int count) { return static_cast<int>(std::clamp<int64_t>(-int64_t{offset}, 0, count)); };
  const auto end = [](int offset, int count, int room) {
    return static_cast<int>(std::clamp<int64_t>(int64_t{room} - offset, 0, count));
  };
  for (int y = begin(at.y, source.height()); y < end(at.y, source.height(), target.height()); ++y)
    for (int x = begin(at.x, source.width()); x < end(at.x, source.width(), target.width()); ++x) {
      if (mask && through.color_at(x, y) == 0) continue;
      target.set(at.x + x, at.y + y, mixed(mode, target.at(at.x + x, at.y + y), source.at(x, y)));
    }
}

std::optional<Picture> load_mask(const Arguments& arguments, const Picture& overlay, const Streams& streams,
                                 const Output& output) {
  if (arguments.mask.empty()) return std::nullopt;
  Picture mask = load(arguments.mask, streams, output);
  if (mask.header.biBitCount != 1)
    throw Failure(ExitCode::kFormat, mask.label, "the mask must have 1 bit per pixel; save it in black and white");
  if (mask.header.biWidth != overlay.header.biWidth || mask.header.biHeight != overlay.header.biHeight) {
    throw Failure(ExitCode::kFormat, mask.label,
                  fmt::format("the mask must be as large as {}, {} x {} pixels; scale or crop it", overlay.label,
                              overlay.header.biWidth, overlay.header.biHeight));
  }
  return mask;
}

ExitCode combine(const Arguments& arguments, const Streams& streams) {
  const Saving saving = arguments.saving.saving_for(arguments.output);
  if (std::ranges::count(std::array{arguments.base, arguments.overlay, arguments.mask}, "-") > 1)
    throw Failure(ExitCode::kWrongUse, "standard input", "it can be read once only; give the other picture by name");
  const Output output(arguments.output, arguments.saving.overwrite, streams.output);
  Picture base = load(arguments.base, streams, output), overlay = load(arguments.overlay, streams, output);
  const std::optional<Picture> mask = load_mask(arguments, overlay, streams, output);
  if (!can_stay_indexed(base, overlay, arguments.mode)) {
    base = in_true_color(base);
    overlay = in_true_color(overlay);
  }
  paint(base, overlay, mask, parse_position(arguments.at), arguments.mode);
  write_picture(output, base, saving);
  return ExitCode::kDone;
}

Action declare(CLI::App& app) {
  app.footer(
      "OUT is as large as BASE; what of OVERLAY lies outside is left out. or and xor work on the pixels as numbers: in\n"
      "black and white, with white as 1, or lets white win and xor inverts under white. Pictures of different depth or\n"
      "colours are combined at 24 bits per pixel. The files may have 1, 4, 8 or 24 bits per pixel. OUT has the format that\n"
      "its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel combine page.tif stamp.tif stamped.tif --at 1900,120\n"
      "  vorel combine photo.bmp logo.bmp out.bmp --mask shape.bmp\n"
      "  vorel combine page1.tif page2.tif difference.tif --mode xor");
  const auto arguments = std::make_shared<Arguments>();
  declare_argument(app, "BASE", arguments->base, "the picture file to paint on; - is standard input");
  declare_argument(app, "OVERLAY", arguments->overlay, "the picture file to paint");
  declare_argument(app, "OUT", arguments->output, "the picture file to write; - is standard output");
  app.add_option("--at", arguments->at, "where OVERLAY goes in BASE: its left upper corner, counted from 0 (default: 0,0)")
      ->check(is_position())
      ->option_text("X,Y");
  app.add_option("--mask", arguments->mask, "a picture of 1 bit and OVERLAY's size; black leaves BASE as it is")
      ->option_text("FILE");
  app.add_option("--mode", arguments->mode, "replace, or, xor (default: replace)")
      ->check(CLI::IsMember({"replace", "or", "xor"}))
      ->option_text("MODE");
  arguments->saving.declare(app);
  return [arguments](const Streams& streams) { return combine(*arguments, streams); };
}

}  // namespace

const Verb kCombine{"combine", "Paint one picture onto another.", declare};

}  // namespace vorel::cli
