// Messages between the tool and its workers: lists of byte strings, which hold names of files as they are.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vorel::cli::batch {

using Message = std::vector<std::string>;

inline void put_number(std::string& bytes, size_t number) {
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(number >> 8 * i);
}

inline std::string packed(const Message& message) {
  std::string bytes;
  put_number(bytes, message.size());
  for (const std::string& field : message) {
    put_number(bytes, field.size());
    bytes += field;
  }
  return bytes;
}

// `receive` fills a span, or returns false at the end. None is returned at the end.
template <class Receive>
std::optional<Message> receive_message(Receive receive) {
  const auto number = [&]() -> std::optional<uint32_t> {
    char bytes[4];
    if (!receive(std::span<char>(bytes))) return std::nullopt;
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<uint8_t>(bytes[i]);
    return value;
  };
  const auto count = number();
  if (!count) return std::nullopt;
  Message message(*count);
  for (std::string& field : message) {
    const auto size = number();
    if (!size) return std::nullopt;
    field.resize(*size);
    if (!receive(std::span<char>(field))) return std::nullopt;
  }
  return message;
}

}  // namespace vorel::cli::batch
