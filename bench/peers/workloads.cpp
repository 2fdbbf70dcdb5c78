#include <algorithm>
#include <cmath>

#include "peers/workload.h"

namespace peers {
namespace {

using enum Operation;
using enum Kind;

constexpr Extent kPage{2480, 3508, 1}, kOddPage{2483, 3511, 1}, kLargePage{7440, 10524, 1};
constexpr Extent kGreys{4000, 3000, 8}, kOddGreys{3997, 3001, 8}, kLargeGreys{12'000, 9'000, 8};
constexpr Extent kIndices{4000, 3000, 8, true}, kOddIndices{3997, 3001, 8, true}, kLargeIndices{12'000, 9'000, 8, true};
constexpr Extent kColors{4000, 3000, 24}, kOddColors{3997, 3001, 24}, kLargeColors{12'000, 9'000, 24};
constexpr Extent kSmallGreys{400, 300, 8}, kSmallColors{400, 300, 24}, kSmallPage{310, 438, 1};

constexpr int kOnes[49] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                           1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
constexpr int kBlur3Values[] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
constexpr int kBlur5Values[] = {0, 1, 1, 1, 0, 1, 2, 4, 2, 1, 1, 4, 8, 4, 1, 1, 2, 4, 2, 1, 0, 1, 1, 1, 0};
constexpr int kSharp4Values[] = {0, -1, 0, -1, 5, -1, 0, -1, 0};
constexpr int kSharp8Values[] = {-1, -1, -1, -1, 9, -1, -1, -1, -1};
constexpr int kSharp5Values[] = {-1, -2, -4, -2, -1, -2, 1, 4, 1, -2, -4, 4, 17, 4, -4, -2, 1, 4, 1, -2, -1, -2, -4, -2, -1};
constexpr int kEdgeValues[] = {-1, 0, 1, -2, 1, 2, -1, 0, 1};
constexpr int kUnevenValues[] = {3, 0, 7, 1, 0, 0, 11, 2, 0, 5, 1, 3, 13, 0, 2, 7, 0, 1, 5, 0, 0, 2, 3, 0, 1};

constexpr Kernel kBox3{3, 3, 9, kOnes}, kBox5{3, 5, 25, kOnes}, kBox7{3, 7, 49, kOnes};
constexpr Kernel kBlur3{4, 3, 16, kBlur3Values}, kBlur5{4, 5, 44, kBlur5Values};
constexpr Kernel kSharp4{5, 3, 1, kSharp4Values}, kSharp8{6, 3, 1, kSharp8Values}, kSharp5{6, 5, 1, kSharp5Values};
constexpr Kernel kEdge{1, 3, 1, kEdgeValues}, kUneven{1, 5, 67, kUnevenValues};

constexpr Workload kWorkloads[] = {
    {"rotate90-1", kCounted, kQuarterTurn, kPage},
    {"rotate270-1", kCounted, kBackTurn, kPage},
    {"rotate90-8", kCounted, kQuarterTurn, kGreys},
    {"rotate270-8", kCounted, kBackTurn, kGreys},
    {"rotate90-24", kCounted, kQuarterTurn, kColors},
    {"rotate270-24", kCounted, kBackTurn, kColors},
    {"rotate90-24-big", kCounted, kQuarterTurn, kLargeColors},
    {"rotate180-1", kCounted, kHalfTurn, kPage},
    {"mirror-h-1", kCounted, kMirrorSides, kPage},
    {"mirror-v-1", kCounted, kMirrorTop, kPage},
    {"rotate180-8", kCounted, kHalfTurn, kGreys},
    {"mirror-h-8", kCounted, kMirrorSides, kGreys},
    {"mirror-v-8", kCounted, kMirrorTop, kGreys},
    {"rotate180-24", kCounted, kHalfTurn, kColors},
    {"mirror-h-24", kCounted, kMirrorSides, kColors},
    {"mirror-v-24", kCounted, kMirrorTop, kColors},
    {"mirror-h-24-big", kCounted, kMirrorSides, kLargeColors},
    {"rotate17-1", kCounted, kRotate, kPage, 17},
    {"rotate17-8", kCounted, kRotate, kGreys, 17},
    {"rotate17-24", kCounted, kRotate, kColors, 17},
    {"skew-1", kCounted, kSkew, kPage, 400},
    {"skew-8", kCounted, kSkew, kGreys, 400},
    {"skew-24", kCounted, kSkew, kColors, 400},
    {"scale-linear-50-8", kCounted, kLinear, kGreys, 50},
    {"scale-linear-75-8", kCounted, kLinear, kGreys, 75},
    {"scale-linear-200-8", kCounted, kLinear, kGreys, 200},
    {"scale-cubic-50-8", kCounted, kCubic, kGreys, 50},
    {"scale-cubic-75-8", kCounted, kCubic, kGreys, 75},
    {"scale-cubic-200-8", kCounted, kCubic, kGreys, 200},
    {"scale-linear-50-24", kCounted, kLinear, kColors, 50},
    {"scale-linear-75-24", kCounted, kLinear, kColors, 75},
    {"scale-linear-200-24", kCounted, kLinear, kColors, 200},
    {"scale-cubic-50-24", kCounted, kCubic, kColors, 50},
    {"scale-cubic-75-24", kCounted, kCubic, kColors, 75},
    {"scale-cubic-200-24", kCounted, kCubic, kColors, 200},
    {"scale-linear-50-24-big", kCounted, kLinear, kLargeColors, 50},
    {"scale-nearest-50-1", kCounted, kNearest, kPage, 50},
    {"scale-nearest-75-1", kCounted, kNearest, kPage, 75},
    {"grey-24", kCounted, kGray, kColors},
    {"grey-24-big", kCounted, kGray, kLargeColors},
    {"bright-24", kCounted, kBrighten, kColors},
    {"bright-24-big", kCounted, kBrighten, kLargeColors},
    {"lut-8", kCounted, kLookUp, kGreys},
    {"expand-8-24", kCounted, kExpand, kIndices},
    {"hist-256", kCounted, kCount, kGreys},
    {"hist-256-drag", kCounted, kDrag, kGreys},
    {"conv-box3", kCounted, kConvolve, kGreys, 0, &kBox3},
    {"conv-box5", kCounted, kConvolve, kGreys, 0, &kBox5},
    {"conv-blur3", kCounted, kConvolve, kGreys, 0, &kBlur3},
    {"conv-blur5", kCounted, kConvolve, kGreys, 0, &kBlur5},
    {"conv-sharp4-3", kCounted, kConvolve, kGreys, 0, &kSharp4},
    {"conv-sharp8-3", kCounted, kConvolve, kGreys, 0, &kSharp8},
    {"conv-sharp8-5", kCounted, kConvolve, kGreys, 0, &kSharp5},
    {"conv24-blur3", kCounted, kConvolve, kColors, 0, &kBlur3},
    {"conv24-sharp8-3", kCounted, kConvolve, kColors, 0, &kSharp8},
    {"mono-grey-0", kCounted, kSmoothBits, kPage, 0},
    {"mono-grey-1", kCounted, kSmoothBits, kPage, 1},
    {"mono-grey-2", kCounted, kSmoothBits, kPage, 2},
    {"despeckle-1", kCounted, kDespeckle, kPage},
    {"rank-8", kCounted, kMedian, kGreys},
    {"fs-8-1", kCounted, kDiffuse, kGreys, 1},
    {"fs-24-1", kCounted, kDiffuse, kColors, 1},
    {"fs-24-4", kCounted, kDiffuse, kColors, 4},
    {"fs-24-8", kCounted, kDiffuse, kColors, 8},
    {"jjn-8-1", kCounted, kDiffuseWide, kGreys, 1},
    {"jjn-24-1", kCounted, kDiffuseWide, kColors, 1},
    {"smooth-8-1", kCounted, kDiffuseSmooth, kGreys, 1},
    {"sharp-8-1", kCounted, kDiffuseSharp, kGreys, 1},
    {"half-threshold", kCounted, kThreshold, kGreys, 1},
    {"half-ordered", kCounted, kOrdered, kGreys, 1},
    {"half-diffuse", kCounted, kHalftoneDiffuse, kGreys, 1},
    {"rle-encode", kCounted, kEncode, kIndices},
    {"rle-decode", kCounted, kDecode, kIndices},
    {"bmp-save-24", kCounted, kSave, kColors},
    {"bmp-load-24", kCounted, kLoad, kColors},

    {"rotate90-1-odd", kBeyond, kQuarterTurn, kOddPage},
    {"rotate90-8-odd", kBeyond, kQuarterTurn, kOddGreys},
    {"rotate90-24-odd", kBeyond, kQuarterTurn, kOddColors},
    {"rotate180-1-odd", kBeyond, kHalfTurn, kOddPage},
    {"mirror-h-1-odd", kBeyond, kMirrorSides, kOddPage},
    {"mirror-h-24-odd", kBeyond, kMirrorSides, kOddColors},
    {"rotate2-1", kBeyond, kRotate, kPage, 2},
    {"rotate45-1", kBeyond, kRotate, kOddPage, 45},
    {"rotate131-8", kBeyond, kRotate, kOddGreys, 131},
    {"rotate3-24", kBeyond, kRotate, kOddColors, 3},
    {"rotate80-24", kBeyond, kRotate, kColors, 80},
    {"rotate211-24", kBeyond, kRotate, kColors, 211},
    {"skew-1-odd", kBeyond, kSkew, kOddPage, 1237},
    {"skew-24-odd", kBeyond, kSkew, kOddColors, 57},
    {"scale-linear-5-8", kBeyond, kLinear, kOddGreys, 5},
    {"scale-linear-33-8", kBeyond, kLinear, kOddGreys, 33},
    {"scale-linear-110-8", kBeyond, kLinear, kOddGreys, 110},
    {"scale-linear-2000-8", kBeyond, kLinear, kSmallGreys, 2000},
    {"scale-linear-5-24", kBeyond, kLinear, kOddColors, 5},
    {"scale-linear-33-24", kBeyond, kLinear, kOddColors, 33},
    {"scale-linear-110-24", kBeyond, kLinear, kOddColors, 110},
    {"scale-linear-2000-24", kBeyond, kLinear, kSmallColors, 2000},
    {"scale-cubic-33-24", kBeyond, kCubic, kOddColors, 33},
    {"scale-cubic-110-8", kBeyond, kCubic, kOddGreys, 110},
    {"scale-cubic-2000-24", kBeyond, kCubic, kSmallColors, 2000},
    {"scale-linear-75-palette", kBeyond, kLinear, kOddIndices, 75},
    {"scale-cubic-75-palette", kBeyond, kCubic, kOddIndices, 75},
    {"scale-linear-50-palette", kBeyond, kLinear, kIndices, 50},
    {"scale-nearest-5-1", kBeyond, kNearest, kOddPage, 5},
    {"scale-nearest-33-1", kBeyond, kNearest, kOddPage, 33},
    {"scale-nearest-140-1", kBeyond, kNearest, kOddPage, 140},
    {"scale-nearest-2000-1", kBeyond, kNearest, kSmallPage, 2000},
    {"grey-24-odd", kBeyond, kGray, kOddColors},
    {"bright-24-odd", kBeyond, kBrighten, kOddColors},
    {"lut-8-odd", kBeyond, kLookUp, kOddGreys},
    {"expand-8-24-odd", kBeyond, kExpand, kOddIndices},
    {"conv-box7", kBeyond, kConvolve, kOddGreys, 0, &kBox7},
    {"conv-edge3-own", kBeyond, kConvolve, kOddGreys, 0, &kEdge},
    {"conv-uneven5-own", kBeyond, kConvolve, kOddGreys, 0, &kUneven},
    {"conv24-uneven5-own", kBeyond, kConvolve, kOddColors, 0, &kUneven},
    {"conv24-edge3-own", kBeyond, kConvolve, kOddColors, 0, &kEdge},
    {"despeckle-1-odd", kBeyond, kDespeckle, kOddPage},
    {"rank-8-odd", kBeyond, kMedian, kOddGreys},
    {"mono-grey-2-odd", kBeyond, kSmoothBits, kOddPage, 2},
    {"fs-8-1-odd", kBeyond, kDiffuse, kOddGreys, 1},
    {"fs-8-1-palette", kBeyond, kDiffuse, kOddIndices, 1},
    {"fs-24-8-odd", kBeyond, kDiffuse, kOddColors, 8},
    {"half-threshold-odd", kBeyond, kThreshold, kOddGreys, 1},
    {"half-ordered-palette", kBeyond, kOrdered, kOddIndices, 1},
    {"bmp-save-1", kBeyond, kSave, kOddPage},
    {"bmp-load-8", kBeyond, kLoad, kOddIndices},

    {"rotate90-1-large", kLarge, kQuarterTurn, kLargePage},
    {"rotate90-24-large", kLarge, kQuarterTurn, kLargeColors},
    {"rotate270-24-large", kLarge, kBackTurn, kLargeColors},
    {"rotate180-24-large", kLarge, kHalfTurn, kLargeColors},
    {"mirror-h-24-large", kLarge, kMirrorSides, kLargeColors},
    {"mirror-v-24-large", kLarge, kMirrorTop, kLargeColors},
    {"rotate17-24-large", kLarge, kRotate, kLargeColors, 17},
    {"rotate17-1-large", kLarge, kRotate, kLargePage, 17},
    {"skew-24-large", kLarge, kSkew, kLargeColors, 400},
    {"scale-linear-50-24-large", kLarge, kLinear, kLargeColors, 50},
    {"scale-linear-75-24-large", kLarge, kLinear, kLargeColors, 75},
    {"scale-cubic-75-24-large", kLarge, kCubic, kLargeColors, 75},
    {"scale-nearest-75-1-large", kLarge, kNearest, kLargePage, 75},
    {"grey-24-large", kLarge, kGray, kLargeColors},
    {"bright-24-large", kLarge, kBrighten, kLargeColors},
    {"conv24-blur3-large", kLarge, kConvolve, kLargeColors, 0, &kBlur3},
    {"conv24-sharp8-3-large", kLarge, kConvolve, kLargeColors, 0, &kSharp8},
    {"mono-grey-2-large", kLarge, kSmoothBits, kLargePage, 2},
    {"despeckle-1-large", kLarge, kDespeckle, kLargePage},
    {"fs-24-1-large", kLarge, kDiffuse, kLargeColors, 1},
    {"fs-24-8-large", kLarge, kDiffuse, kLargeColors, 8},
    {"jjn-24-1-large", kLarge, kDiffuseWide, kLargeColors, 1},
    {"rotate90-8-large", kLarge, kQuarterTurn, kLargeGreys},
    {"scale-linear-75-8-large", kLarge, kLinear, kLargeGreys, 75},
    {"lut-8-large", kLarge, kLookUp, kLargeGreys},
    {"expand-8-24-large", kLarge, kExpand, kLargeIndices},
    {"conv-blur5-large", kLarge, kConvolve, kLargeGreys, 0, &kBlur5},
    {"rank-8-large", kLarge, kMedian, kLargeGreys},
    {"fs-8-1-large", kLarge, kDiffuse, kLargeGreys, 1},
    {"half-ordered-large", kLarge, kOrdered, kLargeGreys, 1},
    {"rle-encode-large", kLarge, kEncode, kLargeIndices},
    {"rle-decode-large", kLarge, kDecode, kLargeIndices},
    {"bmp-save-24-large", kLarge, kSave, kLargeColors},
    {"bmp-load-24-large", kLarge, kLoad, kLargeColors},
};

bool is_scaling(Operation operation) { return operation == kLinear || operation == kCubic || operation == kNearest; }

// The size of the turned picture, with even sides.
Extent turned(Extent source, int degrees) {
  const double angle = degrees * 0.01745329, c = std::abs(std::cos(angle)), s = std::abs(std::sin(angle));
  const auto side = [](double length) { return 2 * static_cast<int>(length / 2 + 0.5); };
  return {side(source.width * c + source.height * s), side(source.width * s + source.height * c), source.depth};
}

}  // namespace

std::span<const Workload> workloads() { return kWorkloads; }

const Workload* find_workload(std::string_view name) {
  const auto* found = std::ranges::find(kWorkloads, name, &Workload::name);
  return found == std::end(kWorkloads) ? nullptr : found;
}

bool is_in_two_sizes(const Workload& workload) {
  return std::ranges::any_of(kWorkloads, [&](const Workload& other) {
    return other.kind == kLarge && (other.name == workload.name || other.usual_name() == workload.name);
  });
}

std::string_view Workload::usual_name() const {
  constexpr std::string_view kEnding = "-large";
  return name.ends_with(kEnding) ? name.substr(0, name.size() - kEnding.size()) : name;
}

Extent Workload::result() const {
  Extent to = source;
  switch (operation) {
    case kQuarterTurn:
    case kBackTurn: std::swap(to.width, to.height); break;
    case kRotate: return turned(source, amount);
    case kSkew: to.width += amount; break;
    case kLinear:
    case kCubic:
    case kNearest:
      to.width = source.width * amount / 100;
      to.height = source.height * amount / 100;
      break;
    case kGray:
    case kSmoothBits: to.depth = 8; break;
    case kExpand: to.depth = 24; break;
    case kCount:
    case kDrag: return {0, 0, 8};
    case kDiffuse:
    case kDiffuseWide:
    case kDiffuseSmooth:
    case kDiffuseSharp:
    case kThreshold:
    case kOrdered:
    case kHalftoneDiffuse: to.depth = amount; break;
    default: break;
  }
  return to;
}

double Workload::pixels() const {
  if (operation == kCount || operation == kDrag) return double{1} * kSquare * kSquare;
  return is_scaling(operation) ? std::max(source.pixels(), result().pixels()) : source.pixels();
}

double Workload::bytes() const {
  if (operation == kCount || operation == kDrag) return pixels();
  return static_cast<double>(source.bytes()) + static_cast<double>(result().bytes());
}

std::vector<std::uint8_t> tone_table() {
  std::vector<std::uint8_t> table;
  for (int i = 0; i < 256; ++i)
    table.push_back(static_cast<std::uint8_t>(std::clamp(std::min(i + 12, 255) * 1.2 - 25, 0.0, 255.0)));
  return table;
}

// Interleaves the bits of x ^ y and y, lowest bits first.
std::vector<std::uint8_t> threshold_matrix() {
  std::vector<std::uint8_t> matrix;
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 16; ++x) {
      int value = 0;
      for (int bit = 0; bit < 4; ++bit) value = value << 2 | ((x ^ y) >> bit & 1) << 1 | (y >> bit & 1);
      matrix.push_back(static_cast<std::uint8_t>(value));
    }
  return matrix;
}

}  // namespace peers
