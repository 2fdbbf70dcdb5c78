// Filter kernels that callers give, in a file and in memory: both are refused, or give the same picture. Files have at most 5 by 5 numbers.
#include "calls.h"
#include "input_file.h"

namespace {

template <class Number>
std::array<Number, 50> numbers_from(std::span<const uint8_t> bytes) {
  std::array<Number, 50> numbers{};
  std::memcpy(numbers.data(), bytes.data(), std::min(bytes.size(), sizeof numbers));
  return numbers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const test::Block gray = test::block_of(test::noise(9, 9, 8)), color = test::block_of(test::noise(9, 9, 24));
  fuzz::Input input(data, size);
  const int side = input.byte() % 9;
  const auto file = input.rest();
  const char* path = fuzz::as_file(file.data(), file.size());
  const auto numbers = numbers_from<int>(file);
  const auto short_numbers = numbers_from<short>(file);
  const auto holds = [&](size_t number_bytes) {
    return side <= 5 && file.size() >= number_bytes * static_cast<size_t>(side * side + 1);
  };
  int error = 0;
  const test::Block from_file(Convolve(gray.get(), 1, 2, side, path, nullptr, &error));
  const test::Block from_memory(Convolve(gray.get(), 1, 1, side, nullptr, numbers.data(), &error));
  if (holds(sizeof(int))) fuzz::require_same_start(from_file.get(), from_memory.get());
  const test::Block color_from_file(ColorConvolution(color.get(), 1, 0, 2, side, path, nullptr, &error));
  const test::Block color_from_memory(ColorConvolution(color.get(), 1, 0, 1, side, nullptr, short_numbers.data(), &error));
  if (holds(sizeof(short))) fuzz::require_same_start(color_from_file.get(), color_from_memory.get());
  return 0;
}
