#include "cli/verbs/saving_options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/failure.h"

namespace vorel::cli {
namespace {

constexpr const char* kRunLength = "rle";

std::vector<std::string> compression_words() {
  std::vector<std::string> words;
  for (const TiffCompression& compression : tiff_compressions()) words.emplace_back(compression.word);
  words.emplace_back(kRunLength);
  return words;
}

bool has_ending(const std::string& name) {
  const size_t name_begin = name.find_last_of("/\\") + 1;
  return name.find('.', name_begin) != std::string::npos;
}

}  // namespace

void SavingOptions::declare(CLI::App& app) {
  app.add_flag("--overwrite", overwrite, "replace OUT if it exists (default: leave it alone and fail)");
  app.add_option("--to", to, fmt::format("format of OUT: {} (default: by its ending)", fmt::join(saving_words(), ", ")))
      ->check(CLI::IsMember(saving_words()))
      ->option_text("FORMAT");
  app.add_option("--compression", compression, "of a TIFF or TGA file (default: the format's usual one)")
      ->check(CLI::IsMember(compression_words()))
      ->option_text("KIND");
  app.add_flag("--interlaced", interlaced, "store the rows of a GIF interlaced (default: in order)");
}

Saving SavingOptions::saving_for(const std::string& output) const {
  const auto fail = [&](const std::string& text) { throw Failure(ExitCode::kWrongUse, output, text); };
  const Format* format = to.empty() ? format_for_name(output) : format_called(to);
  if (format == nullptr && has_ending(output)) {
    fail(fmt::format("this ending belongs to no format that can be saved; use another one, or give --to with one of {}",
                     fmt::join(saving_words(), ", ")));
  }
  if (format == nullptr) format = format_of(IMG_FORMAT_BITMAP);

  Saving saving{.format = format, .interlaced = interlaced};
  const bool is_tiff = format->code == IMG_FORMAT_TIFF, is_tga = format->code == IMG_FORMAT_TGA;
  if (interlaced && format->code != IMG_FORMAT_GIF) fail("only GIF files can be interlaced; leave --interlaced out");
  if (compression.empty()) return saving;
  if (is_tga && (compression == kRunLength || compression == "none")) {
    saving.run_length = compression == kRunLength;
  } else if (is_tiff && compression != kRunLength) {
    for (const TiffCompression& known : tiff_compressions())
      if (known.word == compression) saving.tiff_compression = known.number;
  } else {
    fail(fmt::format("{} files have no compression \"{}\"; leave --compression out", format->name, compression));
  }
  return saving;
}

}  // namespace vorel::cli
