// Initialisation files: sections of keys and values.
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

// The values of an initialisation file. Names of sections and keys ignore case; of equal names the first counts. A file that
// cannot be read or is too large has no values: detection of formats looks for values in pictures of any size, and reading a
// whole picture would cost more than loading it.
class Profile {
 public:
  static constexpr int64_t kMostBytes = 1 << 20;

  explicit Profile(const std::string& path);
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  // A whole number, decimal or after 0x, 0o or 0b; the default if the key is missing or empty.
  int number(const char* section, const char* key, int otherwise) const;
  // At most `most` characters of a value, without surrounding quotation marks; empty if the key is missing.
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

  std::string text_;  // names and values are views of it
  std::map<std::string_view, Keys, LessIgnoringCase> sections_;
#endif
};

}  // namespace vorel
