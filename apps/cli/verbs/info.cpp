// vorel info: what a file says about its picture.
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <vector>

#include "cli/bitmap.h"
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

Json facts_of(const std::string& file, const Bitmap& bitmap) {
  const BITMAPINFOHEADER& header = bitmap.header;
  const auto x = known_resolution(header.biXPelsPerMeter);
  const auto y = known_resolution(header.biYPelsPerMeter);
  return {{"file", file},
          {"format", "Windows bitmap"},
          {"variant", bitmap.variant},
          {"width", static_cast<uint32_t>(header.biWidth)},
          {"height", row_count(header)},
          {"rowOrder", is_top_down(header) ? "top row first" : "bottom row first"},
          {"depth", header.biBitCount},
          {"colours", known(DIBNumColors(header))},
          {"xPixelsPerMetre", known(x)},
          {"yPixelsPerMetre", known(y)},
          {"xDpi", known(dpi(x))},
          {"yDpi", known(dpi(y))},
          {"compression", compression_name(header)}};
}

// The same for people.
std::string text_of(const Json& facts) {
  const auto word = [&](const char* key) {
    const Json& value = facts[key];
    if (value.is_null()) return std::string("unknown");
    if (value.is_number_float()) return fmt::format("{}", value.get<double>());
    return value.is_string() ? value.get<std::string>() : value.dump();
  };
  return fmt::format(
      "{}\n"
      "  format       {}, {}\n"
      "  size         {} x {} pixels, {}\n"
      "  depth        {} bit{} per pixel\n"
      "  colours      {}\n"
      "  resolution   {} x {} dpi, {} x {} pixels per metre\n"
      "  compression  {}\n",
      word("file"), word("format"), word("variant"), word("width"), word("height"), word("rowOrder"), word("depth"),
      facts["depth"] == 1 ? "" : "s", word("colours"), word("xDpi"), word("yDpi"), word("xPixelsPerMetre"),
      word("yPixelsPerMetre"), word("compression"));
}

// The code of several files of which some failed.
ExitCode common_code(const std::vector<ExitCode>& failures, size_t files) {
  if (failures.empty()) return ExitCode::kDone;
  const bool all_alike = failures.size() == files && std::ranges::count(failures, failures[0]) == std::ssize(failures);
  return all_alike ? failures[0] : ExitCode::kSomeFailed;
}

ExitCode describe(const std::vector<std::string>& files, bool as_json, const Streams& streams) {
  Json list = Json::array();
  std::vector<ExitCode> failures;
  for (const std::string& file : files) {
    try {
      const Json facts = facts_of(file, inspect_bitmap(Input(file, streams.input)));
      if (as_json) {
        list.push_back(facts);
      } else {
        streams.output << text_of(facts);
      }
    } catch (const Failure& failure) {
      print_error(streams.errors, failure.what());
      failures.push_back(failure.code());
    }
  }
  // Names of files need not be valid UTF-8, JSON must be.
  if (as_json) streams.output << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
  return common_code(failures, files.size());
}

Action declare(CLI::App& app) {
  struct Arguments {
    std::vector<std::string> files;
    bool as_json = false;
  };
  const auto arguments = std::make_shared<Arguments>();
  app.add_option("FILE", arguments->files, "one or more bitmap files; - is standard input")->required()->option_text(" ");
  app.add_flag("--json", arguments->as_json, "print one JSON array with an object for each file (default: text)");
  app.footer(
      "Files that fail are reported on standard error and left out. In JSON what is unknown is null.\n\n"
      "Examples:\n"
      "  vorel info scan.bmp\n"
      "  vorel info a.bmp b.bmp --json\n"
      "  vorel info - < scan.bmp");
  return [arguments](const Streams& streams) { return describe(arguments->files, arguments->as_json, streams); };
}

}  // namespace

const Verb kInfo{"info", "Tell format, size, depth, colours, resolution and compression of pictures.", declare};

}  // namespace vorel::cli
