// The workloads of the comparison: one table for the driver and every participant.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace peers {

enum class Operation : std::uint8_t {
  kQuarterTurn,
  kBackTurn,
  kHalfTurn,
  kMirrorSides,
  kMirrorTop,  // whole turns and mirrors
  kRotate,     // by `amount` degrees, nearest pixel
  kSkew,       // by `amount` pixels
  kLinear,
  kCubic,
  kNearest,  // scaling to `amount` percent
  kGray,
  kBrighten,
  kLookUp,
  kExpand,  // tone
  kCount,
  kDrag,  // grey levels of a square of 256 x 256
  kConvolve,
  kSmoothBits,
  kDespeckle,
  kMedian,  // neighbourhoods; kSmoothBits by grade `amount`
  kDiffuse,
  kDiffuseWide,
  kDiffuseSmooth,
  kDiffuseSharp,  // error diffusion to `amount` bits
  kThreshold,
  kOrdered,
  kHalftoneDiffuse,  // halftones
  kEncode,
  kDecode,
  kSave,
  kLoad,  // run-length codes, bitmap files
};

// A convolution kernel, row by row. `type` is the library's own kernel of this shape; 1 passes this one.
struct Kernel {
  int type, size, divisor;
  const int* values;
  std::span<const int> coefficients() const {
    return {values, static_cast<std::size_t>(size) * static_cast<std::size_t>(size)};
  }
};

struct Extent {
  int width, height, depth;
  bool is_colored = false;  // 8 bits: a palette of colours instead of a grey ramp

  double pixels() const { return double{1} * width * height; }
  std::size_t row_bytes() const { return (static_cast<std::size_t>(width) * static_cast<std::size_t>(depth) + 7) / 8; }
  std::size_t bytes() const { return row_bytes() * static_cast<std::size_t>(height); }
};

enum class Kind : std::uint8_t {
  kCounted,  // in the summary
  kBeyond,   // sizes, angles, ratios, palettes and kernels beyond the usual
  kLarge,    // nine times as many pixels, beside the row of the same name without "-large"; not measured for peers
};

struct Workload {
  std::string_view name;
  Kind kind;
  Operation operation;
  Extent source;
  int amount = 0;
  const Kernel* kernel = nullptr;

  Extent result() const;
  // The row that a large one is compared with.
  std::string_view usual_name() const;
  // The divisor of figures: the pixels of the source; for scaling, of source or result, whichever is larger.
  double pixels() const;
  // Bytes that the operation has to read and write.
  double bytes() const;
};

std::span<const Workload> workloads();
const Workload* find_workload(std::string_view name);

// Whether the table has the workload in both sizes.
bool is_in_two_sizes(const Workload& workload);

inline constexpr int kSquare = 256, kMiddle = 128;

// The component table of brightness +10 and contrast +20 percent.
std::vector<std::uint8_t> tone_table();

// Thresholds of 16 x 16 pixels for ordered halftones, 0 to 255.
std::vector<std::uint8_t> threshold_matrix();

}  // namespace peers
