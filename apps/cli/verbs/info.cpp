// vorel info: what a file says about its picture.
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <vector>

#include "cli/bitmap.h"
#include "cli/codec.h"
#include "cli/verb.h"

namespace vorel::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string compression_name(const BITMAPINFOHEADER& header) {
  switch (header.biCompression) {
    case BI_RLE8: return "run-length, 8 bits";
    case BI_RLE4: return "run-length, 4 bits";
    case BI_BITFIELDS: return "none, colour masks";
    default: return "none";
  }
}

// Entries of the colour table or, without one, what the bits of a pixel can tell apart. Masks are not looked at.
std::optional<uint32_t> DIBNumColors(const BITMAPINFOHEADER& header) {
  if (header.biBitCount <= 8) return header.biClrUsed;
  if (header.biCompression == BI_BITFIELDS) return std::nullopt;
  return header.biBitCount == 16 ? 1u << 15 : 1u << 24;
}

std::optional<int> known_resolution(int per_metre) { return per_metre > 0 ? std::optional(per_metre) : std::nullopt; }

std::optional<double> dpi(std::optional<int> per_metre) {
  if (!per_metre) return std::nullopt;
  return std::round(*per_metre * 0.254) / 10;
}

template <class Value>
Json known(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

// What is told of a page.
struct Description {
  const Format& format;
  std::string variant;  // of bitmap files
  BITMAPINFOHEADER header;
  std::optional<int> pages;
  int page;
  std::optional<std::string> compression;
};

std::optional<std::string> tiff_compression(const Input& input, int page) {
  const Codec codec(format_of(IMG_FORMAT_TIFF)->load, input.label());
  const auto ask = codec.other<ImgTiffCompression>("GetTiffCompression");
  const int number = ask == nullptr ? 0 : ask(input.loading_path().c_str(), page, nullptr);
  if (number == 0) return std::nullopt;
  return tiff_compression_name(number);
}

// Byte 2 of the header is the type; from 9 on its rows are compressed.
std::string tga_compression(const Input& input) {
  char start[3] = {};
  std::ifstream(input.path(), std::ios::binary).read(start, sizeof start);
  return start[2] >= 9 ? "run-length" : "none";
}

std::optional<std::string> compression_of(const Input& input, const Format& format, int page) {
  if (format.compression != nullptr) return format.compression;
  if (format.code == IMG_FORMAT_TIFF) return tiff_compression(input, page);
  if (format.code == IMG_FORMAT_TGA) return tga_compression(input);
  return std::nullopt;
}

Description describe(const Input& input, int page) {
  const Format& format = recognise(input);
  if (format.code == IMG_FORMAT_BITMAP) {
    const Bitmap bitmap = inspect_bitmap(input);
    return {format, bitmap.variant, bitmap.header, 1, 1, compression_name(bitmap.header)};
  }
  const Picture picture = load_picture(input, page);
  return {format, "", picture.header, count_pages(input, format), page, compression_of(input, format, page)};
}

Json facts_of(const std::string& file, const Description& description) {
  const BITMAPINFOHEADER& header = description.header;
  const auto x = known_resolution(header.biXPelsPerMeter);
  const auto y = known_resolution(header.biYPelsPerMeter);
  const bool is_bitmap = description.format.code == IMG_FORMAT_BITMAP;
  return {{"file", file},
          {"format", description.format.name},
          {"variant", is_bitmap ? Json(description.variant) : Json()},
          {"pages", known(description.pages)},
          {"page", description.page},
          {"width", static_cast<uint32_t>(header.biWidth)},
          {"height", row_count(header)},
          {"rowOrder", is_bitmap ? Json(is_top_down(header) ? "top row first" : "bottom row first") : Json()},
          {"depth", header.biBitCount},
          {"colours", known(DIBNumColors(header))},
          {"xPixelsPerMetre", known(x)},
          {"yPixelsPerMetre", known(y)},
          {"xDpi", known(dpi(x))},
          {"yDpi", known(dpi(y))},
          {"compression", known(description.compression)}};
}

// The same for people.
std::string text_of(const Json& facts) {
  const auto word = [&](const char* key) {
    const Json& value = facts[key];
    if (value.is_null()) return std::string("unknown");
    if (value.is_number_float()) return fmt::format("{}", value.get<double>());
    return value.is_string() ? value.get<std::string>() : value.dump();
  };
  const auto remark = [&](const char* key) { return facts[key].is_null() ? "" : ", " + word(key); };
  const std::string which = facts["pages"] == 1 ? "" : fmt::format(", of which this is page {}", word("page"));
  return fmt::format(
      "{}\n"
      "  format       {}{}\n"
      "  pages        {}{}\n"
      "  size         {} x {} pixels{}\n"
      "  depth        {} bit{} per pixel\n"
      "  colours      {}\n"
      "  resolution   {} x {} dpi, {} x {} pixels per metre\n"
      "  compression  {}\n",
      word("file"), word("format"), remark("variant"), word("pages"), which, word("width"), word("height"),
      remark("rowOrder"), word("depth"), facts["depth"] == 1 ? "" : "s", word("colours"), word("xDpi"), word("yDpi"),
      word("xPixelsPerMetre"), word("yPixelsPerMetre"), word("compression"));
}

ExitCode describe(const std::vector<std::string>& files, int page, bool as_json, const Streams& streams) {
  Json list = Json::array();
  const ExitCode code = each_file(files, streams, [&](const std::string& file) {
    const Json facts = facts_of(file, describe(Input(file, streams.input), page));
    if (as_json) {
      list.push_back(facts);
    } else {
      streams.output << text_of(facts);
    }
  });
  // Names of files need not be valid UTF-8, JSON must be.
  if (as_json) streams.output << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
  return code;
}

Action declare(CLI::App& app) {
  struct Arguments {
    std::vector<std::string> files;
    int page = 1;
    bool as_json = false;
  };
  const auto arguments = std::make_shared<Arguments>();
  app.add_option("FILE", arguments->files, "one or more picture files; - is standard input")->required()->option_text(" ");
  app.add_option("--page", arguments->page, "page to tell about, counted from 1 (default: 1)")
      ->check(CLI::PositiveNumber)
      ->option_text("N");
  app.add_flag("--json", arguments->as_json, "print one JSON array with an object for each file (default: text)");
  app.footer(
      "Depth and colours are those of the loaded picture. Files that fail are reported on standard error and left out. In\n"
      "JSON what is unknown is null.\n\n"
      "Examples:\n"
      "  vorel info scan.tif\n"
      "  vorel info a.bmp b.png --json\n"
      "  vorel info - < scan.bmp");
  return [arguments](const Streams& streams) {
    return describe(arguments->files, arguments->page, arguments->as_json, streams);
  };
}

}  // namespace

const Verb kInfo{"info", "Tell format, pages, size, depth, colours, resolution and compression of pictures.", declare};

}  // namespace vorel::cli
