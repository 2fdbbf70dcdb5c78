#include "cli/batch/naming.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "cli/batch/inputs.h"
#include "cli/failure.h"
#include "common/formats.h"

namespace vorel::cli::batch {
namespace {

constexpr std::array kFields = {"dir", "stem", "name", "ext", "page", "pages", "index"};

// Stands for a number, and is in no name.
const std::string kMark(1, '\0');

bool is_number(const std::string& field) { return field == "page" || field == "pages" || field == "index"; }

std::string padded(const std::string& number, size_t width) {
  return std::string(width > number.size() ? width - number.size() : 0, '0') + number;
}

std::string ending_of(const InputFile& input, const std::string& to) {
  if (!to.empty()) return programs::picture_format_called(to)->endings[0];
  const FileFormat* format = programs::picture_format_for_name(input.name());
  if (format == nullptr || format->saver == Saver::kNobody) {
    throw Failure(ExitCode::kWrongUse, input.shown,
                  "its ending belongs to no format that can be saved; give one with --to, or an ending in --name");
  }
  return input.name().substr(input.name().rfind('.') + 1);
}

// One slash at a time, and none in front.
std::string tidied(const std::string& path) {
  std::string tidy;
  for (const char letter : path)
    if (letter != '/' || (!tidy.empty() && tidy.back() != '/')) tidy += letter;
  return tidy;
}

bool leads_out(const std::string& path) {
  const std::string whole = "/" + path + "/";
  return whole.find("/../") != std::string::npos || whole.find("/./") != std::string::npos || path.empty() ||
         path.back() == '/';
}

}  // namespace

std::vector<Naming::Part> Naming::parts_of(const std::string& pattern, std::string& wrong) {
  std::vector<Part> parts(1);
  for (size_t i = 0; i < pattern.size(); ++i) {
    const char letter = pattern[i];
    if (letter != '{' && letter != '}') {
      parts.back().text += letter;
    } else if (i + 1 < pattern.size() && pattern[i + 1] == letter) {
      parts.back().text += pattern[i++];
    } else {
      const size_t end = letter == '{' ? pattern.find('}', i) : std::string::npos;
      if (end == std::string::npos) {
        wrong = fmt::format("the braces of \"{}\" do not match; write {{{{ for a brace of a name", pattern);
        return parts;
      }
      const std::string field = pattern.substr(i + 1, end - i - 1), name = field.substr(0, field.find(':'));
      const std::string format = name.size() < field.size() ? field.substr(name.size() + 1) : "";
      const bool is_width = format.size() == 2 && format[0] == '0' && format[1] >= '1' && format[1] <= '9';
      if (std::ranges::find(kFields, name) == kFields.end() ||
          (name.size() < field.size() && !(is_number(name) && is_width)))
        wrong = fmt::format(
            "there is no {{{}}}; use {{dir}}, {{stem}}, {{name}}, {{ext}}, {{page}}, {{pages}} or {{index}}, "
            "numbers with a width as in {{page:03}}",
            field);
      parts.push_back({name, "", is_width ? static_cast<size_t>(format[1] - '0') : 0});
      parts.emplace_back();
      i = end;
    }
  }
  return parts;
}

std::string Naming::wrong(const std::string& pattern) {
  std::string wrong;
  parts_of(pattern, wrong);
  if (wrong.empty() && (pattern.empty() || pattern.back() == '/')) wrong = "a name of a file is missing at the end";
  return wrong;
}

Naming::Naming(const std::string& pattern, std::string to) : to_(std::move(to)) {
  std::string ignored;
  parts_ = parts_of(pattern, ignored);
  has_page_ = std::ranges::any_of(parts_, [](const Part& part) { return part.field == "page"; });
}

std::string Naming::value_of(const Part& part, const InputFile& input, const std::string& page,
                             const std::string& pages) const {
  if (part.field.empty()) return part.text;
  if (part.field == "dir") return input.folder();
  if (part.field == "name") return input.name();
  if (part.field == "stem") return input.stem();
  if (part.field == "ext") return ending_of(input, to_);
  if (part.field == "index") return padded(std::to_string(input.index), part.width);
  const std::string& number = part.field == "page" ? page : pages;
  return number == kMark ? number : padded(number, part.width);
}

std::string Naming::expanded(const InputFile& input, const std::string& page, const std::string& pages) const {
  std::string path;
  for (const Part& part : parts_) path += value_of(part, input, page, pages);
  path = tidied(path);
  if (leads_out(path))
    throw Failure(ExitCode::kWrongUse, input.shown,
                  fmt::format("its output would be \"{}\", which is no file below the output folder; change --name", path));
  return path;
}

std::string Naming::name_for(const InputFile& input, size_t page, size_t pages) const {
  return expanded(input, std::to_string(page), std::to_string(pages));
}

std::string Naming::mark_for(const InputFile& input) const { return expanded(input, kMark, kMark); }

}  // namespace vorel::cli::batch
