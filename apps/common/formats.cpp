#include "common/formats.h"

#include <algorithm>
#include <string>

namespace vorel::programs {
namespace {

constexpr FileFormat kOwnFormats[] = {
    {.code = kPnm, .name = "PNM", .word = "pnm", .endings = {"pnm"}, .holds_pages = true, .compression = "none"},
    {.code = kPbm,
     .name = "PBM",
     .word = "pbm",
     .endings = {"pbm"},
     .holds_pages = true,
     .most_bits = 1,
     .compression = "none"},
    {.code = kPgm,
     .name = "PGM",
     .word = "pgm",
     .endings = {"pgm"},
     .holds_pages = true,
     .most_bits = 8,
     .compression = "none"},
    {.code = kPpm, .name = "PPM", .word = "ppm", .endings = {"ppm"}, .holds_pages = true, .compression = "none"},
};

}  // namespace

bool is_pnm(const FileFormat& format) {
  return std::ranges::any_of(kOwnFormats, [&](const FileFormat& own) { return own.code == format.code; });
}

const FileFormat& pnm_format() { return kOwnFormats[0]; }

std::vector<const FileFormat*> picture_formats() {
  std::vector<const FileFormat*> formats;
  for (const FileFormat& format : file_formats()) formats.push_back(&format);
  for (const FileFormat& format : kOwnFormats) formats.push_back(&format);
  return formats;
}

const FileFormat* picture_format_called(std::string_view word) {
  if (const FileFormat* format = format_called(word)) return format;
  const auto* own = std::ranges::find_if(kOwnFormats, [&](const FileFormat& known) { return word == known.word; });
  return own == std::end(kOwnFormats) ? nullptr : own;
}

const FileFormat* picture_format_for_name(std::string_view name) {
  if (const FileFormat* format = format_for_name(name)) return format;
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return nullptr;
  std::string ending(name.substr(dot + 1));
  std::ranges::transform(ending, ending.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return picture_format_called(ending);
}

}  // namespace vorel::programs
