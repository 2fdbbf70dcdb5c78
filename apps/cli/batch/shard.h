// A part of all inputs, for one of several machines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorel::cli::batch {

// FNV-1a. The same on every system.
class Hash {
 public:
  void add(std::string_view bytes) {
    for (const char byte : bytes) value_ = (value_ ^ static_cast<uint8_t>(byte)) * 0x100000001B3;
  }
  uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325;
};

// Every input belongs to exactly one of the `of` shards, by nothing but its name.
struct Shard {
  unsigned number = 1, of = 1;

  // "2/8". What is wrong with such a text, "" for nothing.
  static std::string wrong(const std::string& text);
  static Shard parse(const std::string& text);  // the text is right, or empty

  bool has(std::string_view id) const;
};

}  // namespace vorel::cli::batch
