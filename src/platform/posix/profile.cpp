// Reads profiles as the profile functions of Windows do.
#include "platform/profile.h"

#include <algorithm>
#include <cwchar>
#include <locale>

#include "platform/file.h"

namespace vorel {
namespace {

std::string read_whole(const std::string& path) {
  const auto file = OwnedFile::open_for_reading(path.c_str());
  const int64_t size = file ? file->size() : -1;
  if (size < 0 || size > Profile::kMostBytes) return {};
  std::string bytes(static_cast<size_t>(size), '\0');
  bytes.resize(static_cast<size_t>(std::max<int64_t>(0, file->read(bytes.data(), bytes.size()))));
  return bytes;
}

// Converts to UTF-8, up to the first unpaired surrogate.
std::string from_utf16(std::string_view bytes, size_t high_byte) {
  std::u16string units(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i) {
    const auto byte = [&](size_t which) { return static_cast<uint8_t>(bytes[i * 2 + which]); };
    units[i] = static_cast<char16_t>(byte(high_byte) << 8 | byte(1 - high_byte));
  }
  std::u8string text(units.size() * 3, u8'\0');  // the most that a unit takes
  std::mbstate_t state{};
  const char16_t* read_end = nullptr;
  char8_t* text_end = nullptr;
  std::use_facet<std::codecvt<char16_t, char8_t, std::mbstate_t>>(std::locale::classic())
      .out(state, units.data(), units.data() + units.size(), read_end, text.data(), text.data() + text.size(), text_end);
  return {text.data(), text_end};
}

// Decides the encoding by the byte order mark.
std::string decoded(std::string bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return bytes.substr(3);
  if (bytes.starts_with("\xFF\xFE")) return from_utf16(std::string_view(bytes).substr(2), 1);
  if (bytes.starts_with("\xFE\xFF")) return from_utf16(std::string_view(bytes).substr(2), 0);
  return bytes;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n\v\f\x1A";
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// A name or value; it ends at a zero byte.
std::string_view word(std::string_view text) {
  text = trimmed(text);
  return text.substr(0, text.find('\0'));
}

std::string_view unquoted(std::string_view text) {
  const bool is_quoted = text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front();
  return is_quoted ? text.substr(1, text.size() - 2) : text;
}

uint32_t digit_of(char c) {
  if (c >= '0' && c <= '9') return static_cast<uint32_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<uint32_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<uint32_t>(c - 'A' + 10);
  return 16;
}

// Removes a number's base prefix.
uint32_t take_base(std::string_view& text) {
  const uint32_t base = text.starts_with("0x") ? 16 : text.starts_with("0o") ? 8 : text.starts_with("0b") ? 2 : 10;
  if (base != 10) text.remove_prefix(2);
  return base;
}

int number_in(std::string_view text) {
  const auto is_blank = [](char c) { return static_cast<uint8_t>(c) <= ' '; };
  text.remove_prefix(static_cast<size_t>(std::ranges::find_if_not(text, is_blank) - text.begin()));
  const bool is_negative = text.starts_with('-');
  if (is_negative || text.starts_with('+')) text.remove_prefix(1);
  const uint32_t base = take_base(text);
  uint32_t value = 0;  // wraps
  for (; !text.empty() && digit_of(text.front()) < base; text.remove_prefix(1))
    value = value * base + digit_of(text.front());
  return static_cast<int>(is_negative ? 0 - value : value);
}

}  // namespace

// Comments need no handling: they become keys that are never read.
Profile::Profile(const std::string& path) : text_(decoded(read_whole(path))) {
  const std::string_view text = text_;
  Keys* keys = nullptr;  // of the section that the lines belong to, if it is the first of its name
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find_first_of("\r\n", begin), text.size());
    const std::string_view line = trimmed(text.substr(begin, end - begin));
    begin = end + 1;
    const size_t bracket = line.rfind(']');
    if (line.starts_with('[') && bracket != std::string_view::npos) {
      const auto [section, is_first] = sections_.try_emplace(word(line.substr(1, bracket - 1)));
      keys = is_first ? &section->second : nullptr;
    } else if (keys != nullptr && !line.empty()) {
      // A line without an equals sign is a key without a value. It still hides later keys of its name.
      const size_t name_end = std::min(line.find('='), line.size());
      const size_t value_begin = std::min(name_end + 1, line.size());
      keys->push_back({word(line.substr(0, name_end)), unquoted(word(line.substr(value_begin)))});
    }
  }
}

std::string_view Profile::find(const char* section, const char* key) const {
  const auto keys = sections_.find(section);
  if (keys == sections_.end()) return {};
  const auto has_name = [&](const Key& each) { return equal_ignoring_case(each.name, key); };
  const auto found = std::ranges::find_if(keys->second, has_name);
  return found == keys->second.end() ? std::string_view() : found->value;
}

int Profile::number(const char* section, const char* key, int otherwise) const {
  constexpr size_t kMostNumberCharacters = 29;
  const std::string_view text = find(section, key).substr(0, kMostNumberCharacters);
  return text.empty() ? otherwise : number_in(text);
}

std::string Profile::text(const char* section, const char* key, size_t most) const {
  return std::string(find(section, key).substr(0, most));
}

}  // namespace vorel
