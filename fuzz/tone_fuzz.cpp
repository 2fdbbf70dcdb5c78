// Tone, filters, greys and cleaning of pictures whose headers may lie.
#include "calls.h"

namespace {

using namespace fuzz;

void count_and_map(Input& input) {
  int error = 0;
  const test::Block histogram(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, &error));
  const test::Block table(ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, &error));
  const int contrast = input.number(), brightness = input.number();
  const std::array<int, 2> origin = {input.number(), input.number()}, other = {input.number(), input.number()};
  const Picture picture(input);
  if (!picture.is_acceptable()) return;
  const test::Block source = picture.block();
  for (const auto& corner : {origin, other})
    ComputeHistogram(source.get(), IMG_COMPUTE, histogram.get(), corner.data(), &error);
  ComputeLUT(histogram.get(), IMG_COMPUTE, table.get(), contrast, brightness, &error);
  make(
      picture, [&](HGLOBAL dib) { return ApplyLUT(dib, table.get(), 1, &error); }, ResultSize::kAsSourceStates);
  change(picture, [&](HGLOBAL dib) { return ApplyLUT(dib, table.get(), 0, &error); });
}

void filter(Input& input, bool in_color) {
  const int type = input.byte() % 8, size = input.byte() % 9, mode = input.byte() % 4;
  std::array<int, 50> kernel{};
  std::array<short, 50> color_kernel{};
  for (size_t i = 0; type == 1 && i < kernel.size(); ++i)
    kernel[i] = color_kernel[i] = static_cast<short>(input.byte() % 16 - 6);
  const Picture picture(input);
  if (!picture.is_acceptable()) return;
  const auto call = [&](HGLOBAL dib) {
    int error = 0;
    if (!in_color) return Convolve(dib, mode / 2, type, size, nullptr, kernel.data(), &error);
    return ColorConvolution(dib, mode / 2, mode % 2, static_cast<short>(type), size, nullptr, color_kernel.data(), &error);
  };
  if (mode / 2 != 0)
    make(picture, call, ResultSize::kAsSourceStates);
  else
    change(picture, call);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const int operation = input.byte() % 8;
  if (operation == 0) return count_and_map(input), 0;
  if (operation <= 2) return filter(input, operation == 2), 0;
  const int a = input.number(), b = input.number();
  const Picture picture(input);
  if (!picture.is_acceptable() ||
      rows_bytes(picture.header()) * 32 / std::max<int>(picture.header().biBitCount, 1) > input.most_bytes())
    return 0;
  const auto call = [&](HGLOBAL dib) {
    switch (operation) {
      case 3: return ColorBrightnessContrast(dib, static_cast<short>(a), static_cast<short>(b));
      case 4: return Convert8to24(dib);
      case 5: return ConvColorDIBtoGrayscale(dib, a, b);
      case 6: return ConvMonoDIBtoGrayscale(dib, a);
      default: return CleanImage(dib, a, b);
    }
  };
  make(picture, call,
       operation == 3   ? ResultSize::kAsSourceStates
       : operation == 7 ? ResultSize::kOfSource
                        : ResultSize::kAsStated);
  return 0;
}
