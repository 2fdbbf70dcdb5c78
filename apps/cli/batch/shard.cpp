#include "cli/batch/shard.h"

#include <charconv>
#include <fmt/format.h>
#include <optional>

namespace vorel::cli::batch {
namespace {

constexpr unsigned kMostShards = 1'000'000;

std::optional<Shard> parsed(const std::string& text) {
  Shard shard;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, shard.number);
  if (number.ec != std::errc() || number.ptr == end || *number.ptr != '/') return std::nullopt;
  const auto of = std::from_chars(number.ptr + 1, end, shard.of);
  const bool is_right =
      of.ec == std::errc() && of.ptr == end && shard.number >= 1 && shard.number <= shard.of && shard.of <= kMostShards;
  return is_right ? std::optional(shard) : std::nullopt;
}

}  // namespace

std::string Shard::wrong(const std::string& text) {
  return parsed(text) ? "" : fmt::format("\"{}\" is no shard; write the first of four as 1/4", text);
}

Shard Shard::parse(const std::string& text) { return parsed(text).value_or(Shard()); }

bool Shard::has(std::string_view id) const {
  Hash hash;
  hash.add(id);
  // The low bits alone depend on few bits of the name.
  const uint64_t mixed = (hash.value() ^ hash.value() >> 32) * 0x9E3779B97F4A7C15;
  return (mixed >> 32) % of == number - 1;
}

}  // namespace vorel::cli::batch
