// The library through its exports: the native build, or under Wine the DLL.
#include <cstring>
#include <stdexcept>

#include <vorel32.h>

#include "peers/worker.h"

namespace peers {
namespace {

using Dib = std::shared_ptr<void>;

Dib hold(HGLOBAL handle) {
  if (handle == nullptr) throw std::runtime_error("a block could not be made");
  return {handle, [](HGLOBAL block) { GlobalFree(block); }};
}

// A bitmap file without its file header is a packed DIB.
Dib dib_of(const Picture& picture, bool is_encoded = false) {
  constexpr std::size_t kFileHeader = 14;
  const std::vector<std::uint8_t> file = bitmap_file(picture, is_encoded);
  Dib dib = hold(GlobalAlloc(GHND, file.size() - kFileHeader));
  std::memcpy(GlobalLock(dib.get()), file.data() + kFileHeader, file.size() - kFileHeader);
  GlobalUnlock(dib.get());
  return dib;
}

// An operation that makes a new DIB of the picture.
template <class Make>
Work making(const Dib& dib, Make make) {
  return [dib, make] {
    const HGLOBAL result = make(dib.get());
    if (result == nullptr) return false;
    GlobalFree(result);
    return true;
  };
}

Work counting(const Dib& dib, int step) {
  const Dib counters = hold(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr));
  return [dib, counters, step, corner = 0]() mutable {
    corner = step - corner;
    const int origin[] = {corner, corner};
    return ComputeHistogram(dib.get(), IMG_COMPUTE, counters.get(), origin, nullptr) != nullptr;
  };
}

Work looking_up(const Dib& dib) {
  constexpr int kContrast = 40, kBrightness = 10;
  const Dib table = hold(ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, nullptr));
  if (ComputeLUT(nullptr, IMG_COMPUTE, table.get(), kContrast, kBrightness, nullptr) == nullptr) return nullptr;
  return making(dib, [table](HGLOBAL source) { return ApplyLUT(source, table.get(), 1, nullptr); });
}

Work convolving(const Dib& dib, const Workload& workload) {
  const Kernel& kernel = *workload.kernel;
  std::vector<int> values(kernel.coefficients().begin(), kernel.coefficients().end());
  values.push_back(kernel.divisor);
  if (workload.source.depth == 8)
    return making(
        dib, [=](HGLOBAL source) { return Convolve(source, 1, kernel.type, kernel.size, nullptr, values.data(), nullptr); });
  std::vector<short> small;
  for (const int value : values) small.push_back(static_cast<short>(value));
  return making(dib, [=](HGLOBAL source) {
    return ColorConvolution(source, 1, 0, static_cast<short>(kernel.type), kernel.size, nullptr, small.data(), nullptr);
  });
}

Work halftoning(const Dib& dib, WORD method) {
  return making(dib, [method](HGLOBAL source) {
    WORD error = 0;
    return Halftone(source, method, 0, &error);
  });
}

}  // namespace

Work prepare(const Workload& workload, const Picture& picture, const std::string& scratch) {
  using enum Operation;
  const Dib dib = dib_of(picture, workload.operation == kDecode);
  const int amount = workload.amount;
  switch (workload.operation) {
    case kQuarterTurn: return making(dib, RotateDIB90);
    case kBackTurn: return making(dib, RotateDIB270);
    case kHalfTurn: return making(dib, RotateDIB180);
    case kMirrorSides: return making(dib, FlipDIBHorizontal);
    case kMirrorTop: return making(dib, FlipDIBVertical);
    case kRotate: return making(dib, [=](HGLOBAL source) { return RotateDIB(source, amount, 1, nullptr, nullptr); });
    case kSkew: return making(dib, [=](HGLOBAL source) { return SkewDIB(source, 1, amount, nullptr, nullptr); });
    case kLinear:
    case kCubic:
    case kNearest: {
      const int mode = workload.operation == kCubic ? 1 : 0;
      const auto width = static_cast<unsigned>(workload.result().width),
                 height = static_cast<unsigned>(workload.result().height);
      return making(dib, [=](HGLOBAL source) { return ScaleDIB(source, mode, width, height); });
    }
    case kGray: return making(dib, [](HGLOBAL source) { return ConvColorDIBtoGrayscale(source, 0, 1); });
    case kBrighten: return making(dib, [](HGLOBAL source) { return ColorBrightnessContrast(source, 10, 20); });
    case kLookUp: return looking_up(dib);
    case kExpand: return making(dib, Convert8to24);
    case kCount: return counting(dib, 1000);  // further than half a square: counted anew
    case kDrag: return counting(dib, 8);
    case kConvolve: return convolving(dib, workload);
    case kSmoothBits: return making(dib, [=](HGLOBAL source) { return ConvMonoDIBtoGrayscale(source, amount); });
    case kDespeckle: return making(dib, [](HGLOBAL source) { return CleanImage(source, 60, 1); });
    case kMedian: return making(dib, [](HGLOBAL source) { return CleanImage(source, 56, 1); });
    case kDiffuse: return making(dib, [=](HGLOBAL source) { return DitherFS4(source, amount); });
    case kDiffuseWide: return making(dib, [=](HGLOBAL source) { return DitherJJN(source, amount); });
    case kDiffuseSmooth: return making(dib, [=](HGLOBAL source) { return DitherSmooth(source, amount); });
    case kDiffuseSharp: return making(dib, [=](HGLOBAL source) { return DitherSharp(source, amount); });
    case kThreshold: return halftoning(dib, 0);
    case kHalftoneDiffuse: return halftoning(dib, 1);
    case kOrdered: return halftoning(dib, 2);
    case kEncode: return making(dib, CompressDIB);
    case kDecode: return making(dib, ExpandCompressedDIB);
    case kSave: return [dib, scratch] { return SaveDIB(scratch.c_str(), dib.get()) != FALSE; };
    case kLoad: return making(dib, [scratch](HGLOBAL) { return LoadDIBFromFile(scratch.c_str()); });
  }
  return nullptr;
}

}  // namespace peers
