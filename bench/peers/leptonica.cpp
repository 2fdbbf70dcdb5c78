// Leptonica: 1 and 8 bits packed in 32-bit words, colours as 32 bits per pixel.
#include <cmath>
#include <leptonica/allheaders.h>

#include "peers/worker.h"

namespace peers {
namespace {

using Pix = std::shared_ptr<PIX>;

Pix hold(PIX* pix) {
  return own(pix, [](PIX* owned) { pixDestroy(&owned); });
}

Pix pix_of(const Picture& picture) {
  const auto [width, height, depth, is_colored] = picture.extent;
  Pix pix = hold(pixCreate(width, height, depth == 24 ? 32 : depth));
  const auto row_bytes = static_cast<int>(picture.extent.row_bytes());
  for (int y = 0; y < height; ++y) {
    l_uint32* line = pixGetData(pix.get()) + static_cast<std::ptrdiff_t>(y) * pixGetWpl(pix.get());
    const std::uint8_t* row = picture.row(y);
    for (int x = 0; depth == 24 && x < width; ++x) composeRGBPixel(row[3 * x + 2], row[3 * x + 1], row[3 * x], line + x);
    for (int i = 0; depth != 24 && i < row_bytes; ++i)
      SET_DATA_BYTE(line, i, depth == 1 ? row[i] ^ 0xFF : row[i]);  // 1 is black
  }
  if (!is_colored) return pix;
  PIXCMAP* map = pixcmapCreate(8);
  for (const Color& color : palette_of(picture.extent)) pixcmapAddColor(map, color.red, color.green, color.blue);
  pixSetColormap(pix.get(), map);
  return pix;
}

template <class Make>
Work making(const Pix& pix, Make make) {
  return [pix, make] {
    PIX* result = make(pix.get());
    const bool is_made = result != nullptr;
    pixDestroy(&result);
    return is_made;
  };
}

Work scaling(const Pix& pix, const Workload& workload) {
  using enum Operation;
  const float factor = static_cast<float>(workload.amount) / 100;
  if (workload.operation == kNearest && workload.amount == 50)
    return making(pix, [](PIX* source) { return pixReduceBinary2(source, nullptr); });
  if (workload.operation == kNearest)
    return making(pix, [=](PIX* source) { return pixScaleBinary(source, factor, factor); });
  if (workload.operation == kCubic || workload.source.is_colored) return nullptr;
  if (workload.amount == 50) return making(pix, pixScaleAreaMap2);
  if (workload.source.depth == 8) return making(pix, [=](PIX* source) { return pixScaleGrayLI(source, factor, factor); });
  return making(pix, [=](PIX* source) { return pixScaleColorLI(source, factor, factor); });
}

Work convolving(const Pix& pix, const Workload& workload) {
  constexpr int kBox = 3, kSharp4 = 5, kSharp8 = 6;
  const Kernel& kernel = *workload.kernel;
  const int radius = kernel.size / 2;
  const bool is_gray = workload.source.depth == 8;
  if (kernel.type == kBox && is_gray)
    return making(pix, [=](PIX* source) { return pixBlockconvGray(source, nullptr, radius, radius); });
  if (kernel.type == kSharp4 || kernel.type == kSharp8)
    return making(pix, [=](PIX* source) {
      return is_gray ? pixUnsharpMaskingGray(source, radius, 0.7F) : pixUnsharpMasking(source, radius, 0.7F);
    });
  const auto weights = own(kernelCreate(kernel.size, kernel.size), [](L_KERNEL* owned) { kernelDestroy(&owned); });
  kernelSetOrigin(weights.get(), radius, radius);
  for (int i = 0; i < kernel.size * kernel.size; ++i)
    kernelSetElement(weights.get(), i / kernel.size, i % kernel.size,
                     static_cast<float>(kernel.values[i]) / static_cast<float>(kernel.divisor));
  return making(pix, [=](PIX* source) {
    return is_gray ? pixConvolve(source, weights.get(), 8, 0) : pixConvolveRGB(source, weights.get());
  });
}

Work counting(const Pix& pix) {
  const auto square = own(boxCreate(0, 0, kSquare, kSquare), [](BOX* owned) { boxDestroy(&owned); });
  return [=] {
    NUMA* counts = pixGetGrayHistogramInRect(pix.get(), square.get(), 1);
    const bool is_made = counts != nullptr;
    numaDestroy(&counts);
    return is_made;
  };
}

// In place.
Work looking_up(const Pix& pix) {
  const auto table = own(numaCreate(256), [](NUMA* owned) { numaDestroy(&owned); });
  for (const std::uint8_t value : tone_table()) numaAddNumber(table.get(), value);
  return [=] { return pixTRCMap(pix.get(), nullptr, table.get()) == 0; };
}

// Removes black pixels without a black neighbour.
Work despeckling(const Pix& pix) {
  const auto single = own(selCreateFromString("ooooXoooo", 3, 3, "single"), [](SEL* owned) { selDestroy(&owned); });
  return making(pix, [=](PIX* source) {
    PIX* cleaned = pixHMT(nullptr, source, single.get());
    return pixXor(cleaned, cleaned, source);
  });
}

PIX* gray_of(PIX* source) { return pixConvertRGBToGray(source, 0.30F, 0.59F, 0.11F); }

Work diffusing(const Pix& pix, const Workload& workload) {
  if (workload.amount == 8) return making(pix, [](PIX* source) { return pixFixedOctcubeQuant256(source, 1); });
  if (workload.amount != 1 || workload.source.is_colored) return nullptr;
  if (workload.source.depth == 8) return making(pix, pixDitherToBinary);
  return making(pix, [](PIX* source) { return pixDitherToBinary(hold(gray_of(source)).get()); });
}

}  // namespace

Work prepare(const Workload& workload, const Picture& picture, const std::string& scratch) {
  using enum Operation;
  setMsgSeverity(L_SEVERITY_ERROR);
  const Pix pix = pix_of(picture);
  const auto [width, height, depth, is_colored] = workload.source;
  const int amount = workload.amount;
  switch (workload.operation) {
    case kQuarterTurn: return making(pix, [](PIX* source) { return pixRotate90(source, 1); });
    case kBackTurn: return making(pix, [](PIX* source) { return pixRotate90(source, -1); });
    case kHalfTurn: return making(pix, [](PIX* source) { return pixRotate180(nullptr, source); });
    case kMirrorSides: return making(pix, [](PIX* source) { return pixFlipLR(nullptr, source); });
    case kMirrorTop: return making(pix, [](PIX* source) { return pixFlipTB(nullptr, source); });
    case kRotate: {
      const auto angle = static_cast<float>(amount * 0.01745329);
      const int type = depth == 1 && amount < 20 ? L_ROTATE_SHEAR : L_ROTATE_SAMPLING;
      return making(
          pix, [=, w = width, h = height](PIX* source) { return pixRotate(source, angle, type, L_BRING_IN_BLACK, w, h); });
    }
    case kSkew: {
      const auto angle = static_cast<float>(std::atan(static_cast<double>(amount) / height));
      return making(pix, [=](PIX* source) { return pixHShear(nullptr, source, 0, angle, L_BRING_IN_WHITE); });
    }
    case kLinear:
    case kCubic:
    case kNearest: return scaling(pix, workload);
    case kGray: return making(pix, gray_of);
    case kBrighten:
    case kLookUp: return looking_up(pix);
    case kExpand: return making(pix, [](PIX* source) { return pixRemoveColormap(source, REMOVE_CMAP_TO_FULL_COLOR); });
    case kCount:
    case kDrag: return counting(pix);
    case kConvolve: return convolving(pix, workload);
    case kSmoothBits:
      if (amount == 0) return making(pix, [](PIX* source) { return pixConvert1To8(nullptr, source, 0, 255); });
      return making(pix, [=](PIX* source) { return pixBlocksum(source, nullptr, amount, amount); });
    case kDespeckle: return despeckling(pix);
    case kMedian: return making(pix, [](PIX* source) { return pixRankFilterGray(source, 3, 3, 0.5F); });
    case kDiffuse:
    case kDiffuseWide:
    case kDiffuseSmooth:
    case kDiffuseSharp:
    case kHalftoneDiffuse: return diffusing(pix, workload);
    case kThreshold: return making(pix, [](PIX* source) { return pixThresholdToBinary(source, kMiddle + 1); });
    case kSave: return [pix, scratch] { return pixWrite(scratch.c_str(), pix.get(), IFF_BMP) == 0; };
    case kLoad: return making(pix, [scratch](PIX*) { return pixRead(scratch.c_str()); });
    default: return nullptr;
  }
}

}  // namespace peers
