// Random numbers.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>

namespace test {

// Draws the same numbers on every platform (SplitMix64), unlike the standard library's distributions. Compilers choose the order
// in which arguments are evaluated: draw at most once in an argument list, or within braces.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint32_t next() {
    uint64_t z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return static_cast<uint32_t>(z >> 32);
  }
  uint8_t byte() { return static_cast<uint8_t>(next()); }
  void fill(std::span<uint8_t> bytes) {
    for (uint8_t& one : bytes) one = byte();
  }

  // Both limits included.
  int between(int low, int high) { return low + static_cast<int>(next() % static_cast<uint32_t>(high - low + 1)); }
  bool once_in(int n) { return between(1, n) == 1; }
  template <class Value>
  Value one_of(std::initializer_list<Value> values) {
    return values.begin()[between(0, static_cast<int>(values.size()) - 1)];
  }

  // Mostly within the limits; occasionally just outside or far away.
  int number(int low, int high) {
    if (!once_in(20)) return between(low, high);
    constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
    return one_of({low - 1, high + 1, 0, -1, 0x10000 + low, kMost, kLeast});
  }

 private:
  uint64_t state_;
};

}  // namespace test
