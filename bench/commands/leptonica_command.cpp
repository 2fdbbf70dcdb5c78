// The tool's verbs with Leptonica, for the comparisons of whole commands and of batches: leptonica_command VERB IN OUT. "chain" is
// deskew, despeckle and scale 50%.
#include <cstdio>
#include <leptonica/allheaders.h>
#include <string>

namespace {

PIX* gray_of(PIX* pix) {
  return pixGetDepth(pix) == 32 ? pixConvertRGBToGray(pix, 0.30F, 0.59F, 0.11F) : pixConvertTo8(pix, 0);
}

PIX* dithered(PIX* pix) {
  PIX* gray = gray_of(pix);
  PIX* result = pixDitherToBinary(gray);
  pixDestroy(&gray);
  return result;
}

// Removes black pixels without a black neighbour.
PIX* cleaned(PIX* pix) {
  SEL* single = selCreateFromString("ooooXoooo", 3, 3, "single");
  PIX* result = pixHMT(nullptr, pix, single);
  selDestroy(&single);
  return pixXor(result, result, pix);
}

// Takes away connected pieces of up to a quarter of a millimetre at 300 dots per inch.
PIX* despeckled(PIX* pix) {
  constexpr int kMostPixels = 3, kDiagonalsToo = 8;
  return pixSelectBySize(pix, kMostPixels, kMostPixels, kDiagonalsToo, L_SELECT_IF_EITHER, L_SELECT_IF_GT, nullptr);
}

PIX* chained(PIX* pix) {
  constexpr int kUsualReduction = 0;
  PIX* straight = pixDeskew(pix, kUsualReduction);
  PIX* clean = despeckled(straight);
  PIX* result = pixReduceBinary2(clean, nullptr);
  pixDestroy(&clean);
  pixDestroy(&straight);
  return result;
}

PIX* made(const std::string& verb, PIX* pix) {
  if (verb == "rotate") return pixRotate90(pix, 1);
  if (verb == "scale") return pixGetDepth(pix) == 1 ? pixReduceBinary2(pix, nullptr) : pixScaleAreaMap2(pix);
  if (verb == "dither") return dithered(pix);
  if (verb == "clean") return cleaned(pix);
  if (verb == "chain") return chained(pix);
  return pixClone(pix);
}

l_int32 format_of(const std::string& name, const PIX* pix) {
  if (name.ends_with(".tif")) return pix->d == 1 ? IFF_TIFF_G4 : IFF_TIFF_ZIP;
  if (name.ends_with(".jpg")) return IFF_JFIF_JPEG;
  return name.ends_with(".png") ? IFF_PNG : IFF_BMP;
}

}  // namespace

int main(int count, char** values) {
  if (count != 4) return 2;
  setMsgSeverity(L_SEVERITY_ERROR);
  PIX* pix = pixRead(values[2]);
  PIX* result = pix != nullptr ? made(values[1], pix) : nullptr;
  const bool is_written = result != nullptr && pixWrite(values[3], result, format_of(values[3], result)) == 0;
  pixDestroy(&result);
  pixDestroy(&pix);
  return is_written ? 0 : 1;
}
