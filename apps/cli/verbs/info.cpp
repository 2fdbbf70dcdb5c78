// vorel info: what a file says about its picture.
#include <cmath>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <vector>

#include "cli/files.h"
#include "cli/report.h"
#include "cli/verb.h"
#include "common/formats.h"

namespace vorel::cli {
namespace {

using Json = nlohmann::ordered_json;

// Entries of the colour table or, without one, what the bits of a pixel can tell apart.
std::optional<uint32_t> color_count(const DibHeader& header) {
  return header.depth <= 8 ? header.colors_used : header.depth == 16 ? 1u << 15 : 1u << 24;
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
  const FileFormat& format;
  std::string variant;  // of bitmap files
  DibHeader header;
  std::optional<uint32_t> colors;
  std::optional<int> pages;
  int page;
  std::optional<std::string> compression;
};

Description describe(const Input& input, int page) {
  const programs::PictureFile& file = input.file();
  const FileFormat& format = file.format();
  if (format.code == FormatCode::kBitmap) {
    const programs::BitmapFacts facts = file.bitmap_facts();
    return {format, facts.variant, facts.header, facts.colors, 1, 1, facts.compression};
  }
  if (format.code == programs::kPnm) {
    const programs::PnmFacts facts = file.pnm_facts(page);
    return {format, facts.variant,         facts.header, color_count(facts.header), file.count_pages(),
            page,   file.compression(page)};
  }
  const DibHeader header = file.header(page);
  return {format, "", header, color_count(header), file.count_pages(), page, file.compression(page)};
}

Json facts_of(const std::string& file, const Description& description) {
  const DibHeader& header = description.header;
  const auto x = known_resolution(header.x_per_metre);
  const auto y = known_resolution(header.y_per_metre);
  const bool is_bitmap = description.format.code == FormatCode::kBitmap;
  return {{"file", file},
          {"format", description.format.name},
          {"variant", description.variant.empty() ? Json() : Json(description.variant)},
          {"pages", known(description.pages)},
          {"page", description.page},
          {"width", header.width},
          {"height", std::abs(header.height)},
          {"rowOrder", is_bitmap ? Json(header.height < 0 ? "top row first" : "bottom row first") : Json()},
          {"depth", header.depth},
          {"colours", known(description.colors)},
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
  const std::string which = facts["pages"] == 1 ? "" : fmt::format(" (this is page {})", word("page"));
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

Json about_file(const std::string& name, int page, const Streams& streams) {
  const Input input(name, streams.input);
  return about(input.label(), [&] { return facts_of(name, describe(input, page)); });
}

ExitCode describe(const std::vector<std::string>& files, int page, bool as_json, const Streams& streams) {
  Json list = Json::array();
  const ExitCode code = each_file(files, streams, [&](const std::string& file) {
    const Json facts = about_file(file, page, streams);
    if (as_json) {
      list.push_back(facts);
    } else {
      streams.output << text_of(facts);
    }
  });
  if (as_json) streams.output << dumped(list) << '\n';
  return code;
}

Action declare(Arguments& arguments) {
  struct Values {
    std::vector<std::string> files;
    int page = 1;
    bool as_json = false;
  };
  const auto values = std::make_shared<Values>();
  arguments.one_or_more("FILE", values->files, "one or more picture files; - is standard input");
  arguments.option("--page", values->page, "N", "page to tell about, counted from 1 (default: 1)", kFromOne);
  arguments.flag("--json", values->as_json, "print one JSON array with an object for each file (default: text)");
  arguments.explain(
      "Depth and colours are those of the loaded picture. Files that fail are reported on standard error and left out. In\n"
      "JSON what is unknown is null.",
      "  vorel info scan.tif\n"
      "  vorel info a.bmp b.png --json\n"
      "  vorel info - < scan.bmp");
  return [values](const Streams& streams) { return describe(values->files, values->page, values->as_json, streams); };
}

}  // namespace

const Verb kInfo{"info", "Tell format, pages, size, depth, colours, resolution and compression of pictures.", declare};

}  // namespace vorel::cli
