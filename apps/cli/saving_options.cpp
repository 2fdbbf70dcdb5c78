#include "cli/saving_options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/failure.h"
#include "common/formats.h"
#include "common/platform.h"

namespace vorel::cli {
namespace {

using programs::Saving;
using programs::tiff_compressions;
using programs::TiffCompression;

constexpr const char* kRunLength = "rle";

std::vector<std::string> compression_words() {
  std::vector<std::string> words;
  for (const TiffCompression& compression : tiff_compressions()) words.emplace_back(compression.word);
  words.emplace_back(kRunLength);
  return words;
}

// Null for what cannot be saved.
const FileFormat* savable(const FileFormat* format) {
  return format != nullptr && format->saver != Saver::kNobody ? format : nullptr;
}

// The words of all formats that this build can save.
std::vector<std::string> saving_words() {
  std::vector<std::string> words;
  for (const FileFormat* format : programs::picture_formats())
    if (savable(format) != nullptr && (!format->needs_windows || programs::has_drawing())) words.emplace_back(format->word);
  return words;
}

std::string format_is_wrong(const std::string& word) {
  if (savable(programs::picture_format_called(word)) != nullptr) return {};
  return fmt::format("\"{}\" is none of {}", word, fmt::join(saving_words(), ", "));
}

bool has_ending(const std::string& name) {
  const size_t name_begin = name.find_last_of("/\\") + 1;
  return name.find('.', name_begin) != std::string::npos;
}

}  // namespace

void SavingOptions::declare(Arguments& arguments, Offered offered) {
  arguments.flag("--overwrite", overwrite, "replace OUT if it exists (default: leave it alone and fail)");
  if (offered.numbering)
    arguments.flag("--numbered", numbered, "write each page as a file of its own: OUT with -1, -2, ... before its ending");
  arguments.option("--to", to, "FORMAT",
                   fmt::format("format of OUT: {} (default: by its ending)", fmt::join(saving_words(), ", ")),
                   {format_is_wrong, saving_words()});
  arguments.option("--compression", compression, "KIND", "of a TIFF or TGA file (default: the format's usual one)",
                   one_of(compression_words()));
  arguments.option("--quality", quality, "N", "of a JPEG file, 1 to 100 (default: 75)", {1, 100});
  arguments.flag("--progressive", progressive, "store a JPEG file so that it builds up (default: from top to bottom)");
  arguments.flag("--interlaced", interlaced, "store the rows of a GIF interlaced (default: in order)");
  if (offered.strict)
    arguments.flag("--strict", is_strict, "fail where OUT has no room for something of IN (default: note it and go on)");
}

Saving SavingOptions::saving_for(const std::string& output) const {
  const auto fail = [&](const std::string& text) { throw Failure(ExitCode::kWrongUse, output, text); };
  const FileFormat* format =
      savable(to.empty() ? programs::picture_format_for_name(output) : programs::picture_format_called(to));
  if (format == nullptr && has_ending(output)) {
    fail(fmt::format("this ending belongs to no format that can be saved; use another one, or give --to with one of {}",
                     fmt::join(saving_words(), ", ")));
  }
  if (format == nullptr) format = format_called("bmp");

  Saving saving{.format = format, .interlaced = interlaced, .quality = quality, .progressive = progressive};
  const bool is_jpeg = format->code == FormatCode::kJpeg;
  if (!is_jpeg && quality != 0) fail("only JPEG files have a quality; leave --quality out");
  if (!is_jpeg && progressive) fail("only JPEG files can be progressive; leave --progressive out");
  const bool is_tiff = format->code == FormatCode::kTiff, is_tga = format->code == FormatCode::kTga;
  if (interlaced && format->code != FormatCode::kGif) fail("only GIF files can be interlaced; leave --interlaced out");
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
