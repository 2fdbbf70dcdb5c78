#include "platform/profile.h"

#include <algorithm>
#include <string_view>

#include "platform/file.h"

namespace vorel {
namespace {

// Longer files are read no further. Pictures of any size are asked for values while their format is found out.
constexpr size_t kMostBytes = 1 << 20;

std::string read_start(const std::string& path) {
  const auto file = OwnedFile::open_for_reading(path.c_str());
  if (!file) return {};
  std::string text(kMostBytes, '\0');
  text.resize(static_cast<size_t>(std::max<int64_t>(0, file->read(text.data(), text.size()))));
  return text;
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

std::string name_of(std::string_view section, std::string_view key) {
  std::string name = std::string(section) + '\n' + std::string(key);
  std::ranges::transform(name, name.begin(), lower);
  return name;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks(" \t\r\v\f\0", 6);
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string_view unquoted(std::string_view text) {
  const bool is_quoted = text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front();
  return is_quoted ? text.substr(1, text.size() - 2) : text;
}

}  // namespace

Profile::Profile(const std::string& path) {
  const std::string text = read_start(path);
  std::string_view section;
  bool in_section = false;
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view line = trimmed(std::string_view(text).substr(begin, end - begin));
    begin = end + 1;
    if (line.starts_with(';')) continue;
    const size_t bracket = line.rfind(']');
    const size_t equals = line.find('=');
    if (line.starts_with('[') && bracket != std::string_view::npos) {
      section = line.substr(1, bracket - 1);
      in_section = true;
    } else if (in_section && equals != std::string_view::npos) {
      // The first of several values counts.
      values_.emplace(name_of(section, trimmed(line.substr(0, equals))), unquoted(trimmed(line.substr(equals + 1))));
    }
  }
}

const std::string* Profile::find(const char* section, const char* key) const {
  const auto found = values_.find(name_of(section, key));
  return found == values_.end() ? nullptr : &found->second;
}

int Profile::number(const char* section, const char* key, int otherwise) const {
  const std::string* text = find(section, key);
  if (text == nullptr || text->empty()) return otherwise;
  const bool has_sign = text->front() == '-' || text->front() == '+';
  uint32_t value = 0;  // wraps like the system's own
  for (size_t i = has_sign ? 1 : 0; i < text->size() && (*text)[i] >= '0' && (*text)[i] <= '9'; ++i) {
    value = value * 10 + static_cast<uint32_t>((*text)[i] - '0');
  }
  return static_cast<int>(text->front() == '-' ? 0 - value : value);
}

std::string Profile::text(const char* section, const char* key, size_t most) const {
  const std::string* text = find(section, key);
  return text == nullptr ? std::string() : text->substr(0, most);
}

}  // namespace vorel
