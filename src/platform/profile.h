// Texts in the form of an initialisation file: sections of keys and values.
#pragma once

#include <cstddef>
#include <string>
#ifndef _WIN32
#include <unordered_map>
#endif

namespace vorel {

// The values of one such file. Sections and keys are found whatever their case. Nothing is found in a file that cannot be
// read.
class Profile {
 public:
  explicit Profile(const std::string& path);

  // A decimal number; the default if there is no such key.
  int number(const char* section, const char* key, int otherwise) const;
  // At most so many characters of a value, without the quotation marks it may stand in; empty if there is no such key.
  std::string text(const char* section, const char* key, size_t most) const;

 private:
#ifdef _WIN32
  std::string path_;
#else
  const std::string* find(const char* section, const char* key) const;

  std::unordered_map<std::string, std::string> values_;
#endif
};

}  // namespace vorel
