// Kernels that callers choose by number, or give in memory or in a file.
#pragma once

#include <vector>

#include "frame/error.h"
#include "kernels/filter/kernel.h"
#include "platform/file.h"

namespace vorel::tone {

// Coefficients are integers of 16 or 32 bits, row by row, followed by the divisor. A file holds them little-endian and nothing
// else. Every refusal is kParameter.
template <class Number>
class CallerKernel {
 public:
  int type, size;
  const char* file;       // of type 2
  const Number* numbers;  // of type 1

  Result<kernels::Kernel> make() const {
    if (!is_known()) return Error::kParameter;
    const auto filter = static_cast<kernels::FilterType>(type);
    if (filter >= kernels::FilterType::kBox) return kernels::built_in_kernel(filter, size);
    const std::vector<int32_t> all = filter == kernels::FilterType::kFromMemory ? given() : read();
    kernels::Kernel kernel{.size = size};
    if (all.empty() || !kernels::set_coefficients(kernel, all)) return Error::kParameter;
    return kernel;
  }

 private:
  bool is_known() const {
    const bool takes_large =
        type == static_cast<int>(kernels::FilterType::kFromMemory) || type == static_cast<int>(kernels::FilterType::kBox);
    return type >= static_cast<int>(kernels::FilterType::kFromMemory) &&
           type <= static_cast<int>(kernels::FilterType::kSharpenMore) && size >= 3 &&
           size <= (takes_large ? kernels::kMostKernelSize : 5) && size % 2 != 0;
  }

  size_t count() const { return static_cast<size_t>(size * size + 1); }

  std::vector<int32_t> given() const {
    if (numbers == nullptr) return {};
    return {numbers, numbers + count()};
  }

  std::vector<int32_t> read() const {
    std::vector<Number> stored(count());
    const auto opened = OwnedFile::open_for_reading(file);
    const auto bytes = static_cast<int64_t>(stored.size() * sizeof(Number));
    if (!opened || opened->read(stored.data(), static_cast<size_t>(bytes)) != bytes) return {};
    return {stored.begin(), stored.end()};
  }
};

}  // namespace vorel::tone
