// FreeImage: bottom-up rows padded to four bytes, as in a DIB.
#include <FreeImage.h>

#include "peers/worker.h"

namespace peers {
namespace {

using Image = std::shared_ptr<FIBITMAP>;

Image image_of(const Picture& picture) {
  const Extent extent = picture.extent;
  Image image = own(FreeImage_Allocate(extent.width, extent.height, extent.depth), FreeImage_Unload);
  for (int y = 0; y < extent.height; ++y)
    std::copy(picture.row(y), picture.row(y) + extent.row_bytes(),
              FreeImage_GetScanLine(image.get(), extent.height - 1 - y));
  RGBQUAD* entry = FreeImage_GetPalette(image.get());
  for (const Color& color : palette_of(extent)) *entry++ = {color.blue, color.green, color.red, 0};
  return image;
}

template <class Make>
Work making(const Image& image, Make make) {
  return [image, make] {
    FIBITMAP* result = make(image.get());
    if (result == nullptr) return false;
    FreeImage_Unload(result);
    return true;
  };
}

Work rotating(const Image& image, double degrees) {
  return making(image, [=](FIBITMAP* source) { return FreeImage_Rotate(source, degrees); });
}

Work adjusting(const Image& image) {
  return [image, table = tone_table()]() mutable { return FreeImage_AdjustCurve(image.get(), table.data(), FICC_RGB) != 0; };
}

Work encoding(const Image& image) {
  return [image] {
    const auto stream = own(FreeImage_OpenMemory(nullptr, 0), FreeImage_CloseMemory);
    return FreeImage_SaveToMemory(FIF_BMP, image.get(), stream.get(), BMP_SAVE_RLE) != 0;
  };
}

Work decoding(const Image& image, const Picture& picture) {
  const auto file = std::make_shared<std::vector<std::uint8_t>>(bitmap_file(picture, true));
  return making(image, [file](FIBITMAP*) {
    const auto stream = own(FreeImage_OpenMemory(file->data(), static_cast<DWORD>(file->size())), FreeImage_CloseMemory);
    return FreeImage_LoadFromMemory(FIF_BMP, stream.get(), 0);
  });
}

}  // namespace

Work prepare(const Workload& workload, const Picture& picture, const std::string& scratch) {
  using enum Operation;
  const Image image = image_of(picture);
  const Extent to = workload.result();
  switch (workload.operation) {
    case kQuarterTurn: return rotating(image, -90);
    case kBackTurn: return rotating(image, 90);
    case kHalfTurn: return rotating(image, 180);
    case kMirrorSides: return [image] { return FreeImage_FlipHorizontal(image.get()) != 0; };
    case kMirrorTop: return [image] { return FreeImage_FlipVertical(image.get()) != 0; };
    case kRotate: return workload.source.depth == 1 ? nullptr : rotating(image, workload.amount);
    case kLinear:
      return making(image,
                    [=](FIBITMAP* source) { return FreeImage_Rescale(source, to.width, to.height, FILTER_BILINEAR); });
    case kCubic:
      return making(image,
                    [=](FIBITMAP* source) { return FreeImage_Rescale(source, to.width, to.height, FILTER_CATMULLROM); });
    case kGray: return making(image, FreeImage_ConvertToGreyscale);
    case kBrighten:
    case kLookUp: return adjusting(image);
    case kExpand: return making(image, FreeImage_ConvertTo24Bits);
    case kSmoothBits: return workload.amount == 0 ? making(image, FreeImage_ConvertTo8Bits) : nullptr;
    case kDiffuse:
    case kDiffuseWide:
    case kDiffuseSmooth:
    case kDiffuseSharp:
    case kHalftoneDiffuse:
      if (workload.amount != 1) return nullptr;
      return making(image, [](FIBITMAP* source) { return FreeImage_Dither(source, FID_FS); });
    case kThreshold: return making(image, [](FIBITMAP* source) { return FreeImage_Threshold(source, kMiddle); });
    case kOrdered: return making(image, [](FIBITMAP* source) { return FreeImage_Dither(source, FID_BAYER16x16); });
    case kEncode: return encoding(image);
    case kDecode: return decoding(image, picture);
    case kSave: return [image, scratch] { return FreeImage_Save(FIF_BMP, image.get(), scratch.c_str(), 0) != 0; };
    case kLoad: return making(image, [scratch](FIBITMAP*) { return FreeImage_Load(FIF_BMP, scratch.c_str(), 0); });
    default: return nullptr;
  }
}

}  // namespace peers
