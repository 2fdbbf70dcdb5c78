#include "viewer/operations.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "viewer/failure.h"
#include "viewer/logic/texts.h"
#include "viewer/picture.h"

namespace vorel::viewer {
namespace {

// ---- Turning and mirroring ----

Dib turned_right(const Dib& dib, const Numbers&) { return Dib(RotateDIB90(dib.get())); }
Dib turned_by_half(const Dib& dib, const Numbers&) { return Dib(RotateDIB180(dib.get())); }

// RotateDIB270 moves the picture by a column; two other turns together do not.
Dib turned_left(const Dib& dib, const Numbers&) {
  const Dib right(RotateDIB90(dib.get()));
  return Dib(RotateDIB180(right.get()));
}

Dib mirrored_across(const Dib& dib, const Numbers&) { return Dib(FlipDIBHorizontal(dib.get())); }
Dib mirrored_down(const Dib& dib, const Numbers&) { return Dib(FlipDIBVertical(dib.get())); }

Dib turned_by_angle(const Dib& dib, const Numbers& numbers) {
  constexpr int kExactPositions = 0;
  return Dib(RotateDIB(dib.get(), -numbers[0], kExactPositions, nullptr, nullptr));
}

// ---- Size and shape ----

unsigned scaled(LONG pixels, int per_cent) { return static_cast<unsigned>(std::max(1, MulDiv(pixels, per_cent, 100))); }

template <int mode>
Dib scaled_by(const Dib& dib, const Numbers& numbers) {
  const BITMAPINFOHEADER header = header_of(dib);
  return Dib(ScaleDIB(dib.get(), mode, scaled(header.biWidth, numbers[0]), scaled(header.biHeight, numbers[1])));
}
constexpr int kLinear = 0, kCubic = 1;

Dib skewed_rows(const Dib& dib, const Numbers& numbers) { return Dib(SkewDIB(dib.get(), 1, numbers[0], nullptr, nullptr)); }
Dib skewed_columns(const Dib& dib, const Numbers& numbers) {
  return Dib(SkewDIB(dib.get(), 0, numbers[0], nullptr, nullptr));
}

// ---- Colours ----

// The colours of a table, or the pixels where there is none.
Dib negative(const Dib& dib, const Numbers&) {
  Dib result = copy_of(dib);
  const DibLock lock(result);
  BITMAPINFOHEADER header = lock.header();
  if (header.biBitCount > 8) {
    for (uint8_t& byte : lock.pixels()) byte = static_cast<uint8_t>(~byte);
    return result;
  }
  header.biClrUsed = 1u << header.biBitCount;  // as many colours are turned as it says
  std::memcpy(lock.bytes().data(), &header, sizeof header);
  InvertDIBPalette(result.get());
  return result;
}

// What the library makes of black and white without their colours goes by the bits.
template <int weighted>
Dib gray(const Dib& dib, const Numbers&) {
  constexpr int kPlain = 0;
  const bool is_bilevel = header_of(dib).biBitCount == 1;
  return Dib(is_bilevel ? ConvMonoDIBtoGrayscale(dib.get(), kPlain) : ConvColorDIBtoGrayscale(dib.get(), kPlain, weighted));
}

Dib brighter(const Dib& dib, const Numbers& numbers) {
  return Dib(ColorBrightnessContrast(dib.get(), static_cast<short>(numbers[0]), static_cast<short>(numbers[1])));
}

Dib in_true_color(const Dib& dib, const Numbers&) {
  if (header_of(dib).biBitCount != 1) return Dib(Convert8to24(dib.get()));
  const Dib grays(ConvMonoDIBtoGrayscale(dib.get(), 0));
  return Dib(Convert8to24(grays.get()));
}

// ---- Filters ----

enum FilterType : short { kBox = 3, kWeighted = 4, kSharpenByFour = 5, kSharpenByEight = 6 };

// Pixels of 8 bits would be taken for greys whatever their colours are.
template <short type, int size>
Dib filtered(const Dib& dib, const Numbers& numbers) {
  constexpr int kInPlace = 0, kByWeight = 1;
  Dib colors = header_of(dib).biBitCount == 24 ? copy_of(dib) : in_true_color(dib, numbers);
  if (!colors) return {};
  int error = IMG_OK;
  ColorConvolution(colors.get(), kInPlace, kByWeight, type, size, nullptr, nullptr, &error);
  SetImgError(error);
  return error == IMG_OK ? std::move(colors) : Dib();
}

template <int mode>
Dib cleaned(const Dib& dib, const Numbers& numbers) {
  return Dib(CleanImage(dib.get(), numbers[0], mode));
}
constexpr int kGentle = 0, kAll = 1;

// ---- Few colours ----

bool has_more_bits(const Dib& dib, int bits) {
  if (header_of(dib).biBitCount > bits) return true;
  SetImgError(IMG_E_NOTHING_TO_CONVERT);
  return false;
}

template <auto dither, int bits>
Dib dithered(const Dib& dib, const Numbers&) {
  return has_more_bits(dib, bits) ? Dib(dither(dib.get(), bits)) : Dib();
}

// In full colour the library puts rows together wrongly; greys come out right.
template <WORD method>
Dib halftoned(const Dib& dib, const Numbers& numbers) {
  if (!has_more_bits(dib, 1)) return {};
  const Dib grays = header_of(dib).biBitCount == 24 ? gray<1>(dib, numbers) : copy_of(dib);
  WORD error = IMG_OK;
  Dib result(Halftone(grays.get(), method, numbers[0], &error));
  SetImgError(error);
  return result;
}
constexpr WORD kThreshold = 0, kDiffusion = 1, kOrdered = 2;

// ---- The menu ----

constexpr const wchar_t* kTurn = L"&Turn and mirror";
constexpr const wchar_t* kShape = L"&Size and shape";
constexpr const wchar_t* kColor = L"&Colours";
constexpr const wchar_t* kFilter = L"&Filter";
constexpr const wchar_t* kReduce = L"&Few colours";
constexpr const wchar_t* kGrays = L"it takes greys of 1 or 8 bits per pixel";

const Parameter kAngle = {L"&Degrees to the right", -360, 360, 5};
const Parameter kAcross = {L"&Pixels to the right", -10'000, 10'000, 100};
const Parameter kUp = {L"&Pixels up", -10'000, 10'000, 100};
const std::vector<Parameter> kSize = {{L"&Width in per cent", 1, 1000, 50}, {L"&Height in per cent", 1, 1000, 50}};
const std::vector<Parameter> kTones = {{L"&Brightness in per cent", -100, 100, 10},
                                       {L"&Contrast in per cent", -100, 100, 10}};
const Parameter kLevel = {L"&Level", 20, 100, 60};
const Parameter kBrightness = {L"&Brightness", -255, 255, 0};

const Operation kOperations[] = {
    {kTurn, L"A quarter to the &right", {'R'}, turned_right},
    {kTurn, L"A quarter to the &left", {'L'}, turned_left},
    {kTurn, L"By &half", {'U'}, turned_by_half},
    {kTurn, L"&Mirror left and right", {'M'}, mirrored_across},
    {kTurn, L"Mirror &top and bottom", {'M', false, true}, mirrored_down},
    {kTurn, L"By an &angle...", {'A'}, turned_by_angle, {kAngle}},
    {kShape, L"Scale, &linear...", {'S'}, scaled_by<kLinear>, kSize},
    {kShape, L"Scale, &cubic...", {}, scaled_by<kCubic>, kSize},
    {kShape, L"Skew &rows...", {}, skewed_rows, {kAcross}},
    {kShape, L"Skew c&olumns...", {}, skewed_columns, {kUp}},
    {kColor, L"&Negative", {'N'}, negative},
    {kColor, L"&Greys", {'G'}, gray<1>},
    {kColor, L"Greys, all colours &alike", {}, gray<0>},
    {kColor, L"&Brightness and contrast...", {'B'}, brighter, kTones},
    {kColor, L"&24 bits", {}, in_true_color},
    {kFilter, L"&Blur, 3 x 3", {}, filtered<kBox, 3>},
    {kFilter, L"Blur, &5 x 5", {}, filtered<kBox, 5>},
    {kFilter, L"Blur, &7 x 7", {}, filtered<kBox, 7>},
    {kFilter, L"Blur with &weights", {}, filtered<kWeighted, 3>},
    {kFilter, L"&Sharpen", {}, filtered<kSharpenByFour, 3>},
    {kFilter, L"Sharpen &more", {}, filtered<kSharpenByEight, 3>},
    {kFilter, L"&Clean...", {'C'}, cleaned<kAll>, {kLevel}, kGrays},
    {kFilter, L"Clean &gently...", {}, cleaned<kGentle>, {kLevel}, kGrays},
    {kReduce, L"Black and white, &four neighbours", {'D'}, dithered<DitherFS4, 1>},
    {kReduce, L"Black and white, &twelve neighbours", {}, dithered<DitherJJN, 1>},
    {kReduce, L"Black and white, &smooth", {}, dithered<DitherSmooth, 1>},
    {kReduce, L"Black and white, s&harp", {}, dithered<DitherSharp, 1>},
    {kReduce, L"&8 colours", {}, dithered<DitherFS4, 4>},
    {kReduce, L"&256 colours", {}, dithered<DitherFS4, 8>},
    {kReduce, L"Halftone, &ordered...", {'H'}, halftoned<kOrdered>, {kBrightness}},
    {kReduce, L"Halftone, &diffusion...", {}, halftoned<kDiffusion>, {kBrightness}},
    {kReduce, L"Halftone, by a th&reshold...", {}, halftoned<kThreshold>, {kBrightness}},
};

}  // namespace

std::span<const Operation> operations() { return kOperations; }

Dib run_operation(const Operation& operation, const Dib& dib, const Numbers& numbers) {
  SetImgError(IMG_OK);
  Dib result = operation.run(dib, numbers);
  if (!result) throw Failure(plain_name(operation.name) + L" is not done: " + reason(0, operation.usual_reason));
  return result;
}

}  // namespace vorel::viewer
