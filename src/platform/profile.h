// Texts in the form of an initialisation file: sections of keys and values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#ifndef _WIN32
#include <map>
#include <string_view>
#include <vector>

#include "platform/ascii.h"
#endif

namespace vorel {

// The values of one such file. Sections and keys are found whatever their case; of several with one name the first counts.
// Nothing is found in a file that cannot be read or is too large: pictures of any size are asked for values while their
// format is found out, and to read them would cost more than to load them.
class Profile {
 public:
  static constexpr int64_t kMostBytes = 1 << 20;

  explicit Profile(const std::string& path);
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  // A whole number, decimal or after 0x, 0o or 0b; the default if there is no such key or nothing is said for it.
  int number(const char* section, const char* key, int otherwise) const;
  // At most so many characters of a value, without the quotation marks it may stand in; empty if there is no such key.
  std::string text(const char* section, const char* key, size_t most) const;

 private:
#ifdef _WIN32
  std::string path_;
  bool is_read_;
#else
  struct Key {
    std::string_view name, value;
  };
  using Keys = std::vector<Key>;

  std::string_view find(const char* section, const char* key) const;

  std::string text_;  // what names and values are views of
  std::map<std::string_view, Keys, LessIgnoringCase> sections_;
#endif
};

}  // namespace vorel
