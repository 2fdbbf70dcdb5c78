#include "viewer/operations.h"

#include <algorithm>

#include "common/forms.h"
#include "common/operations.h"
#include "viewer/failure.h"
#include "viewer/logic/texts.h"

namespace vorel::viewer {
namespace {

using programs::Picture;

// ---- Turning and mirroring ----

template <int degrees>
Picture turned_by(Picture picture, const Numbers&) {
  return programs::turned(std::move(picture), degrees);
}

Picture turned_by_angle(Picture picture, const Numbers& numbers) { return programs::turned(std::move(picture), numbers[0]); }

Picture mirrored_across(Picture picture, const Numbers&) { return programs::mirrored_left_right(std::move(picture)); }
Picture mirrored_down(Picture picture, const Numbers&) { return programs::mirrored_top_bottom(std::move(picture)); }

// ---- Size and shape ----

int scaled(int pixels, int per_cent) { return std::max(1, MulDiv(pixels, per_cent, 100)); }

template <programs::Resampling resampling>
Picture scaled_by(Picture picture, const Numbers& numbers) {
  const Size size = {scaled(picture.width(), numbers[0]), scaled(picture.height(), numbers[1])};
  return programs::scaled(std::move(picture), size, resampling);
}
constexpr auto kLinear = programs::Resampling::kLinear, kCubic = programs::Resampling::kCubic;

template <programs::Shear shear>
Picture skewed(Picture picture, const Numbers& numbers) {
  return programs::skewed(std::move(picture), shear, numbers[0]);
}

// ---- Colours ----

Picture negative(Picture picture, const Numbers&) { return programs::negative(std::move(picture)); }

template <programs::GrayWeights weights>
Picture gray(Picture picture, const Numbers&) {
  return programs::gray(std::move(picture), weights);
}

Picture toned(Picture picture, const Numbers& numbers) {
  return programs::toned(std::move(picture), numbers[0], numbers[1]);
}

Picture in_true_color(Picture picture, const Numbers&) { return programs::in_true_color(std::move(picture)); }

// ---- Filters ----

// Black and white, and few colours, are filtered with 24 bits.
template <programs::Filter filter, int size>
Picture filtered(Picture picture, const Numbers&) {
  if (picture.depth() < 8) picture = programs::in_true_color(std::move(picture));
  return programs::filtered(std::move(picture),
                            {.filter = filter, .size = size, .intensity = programs::GrayWeights::kByColor});
}

template <programs::Cleaning cleaning>
Picture cleaned(Picture picture, const Numbers& numbers) {
  return programs::cleaned(std::move(picture), numbers[0], cleaning);
}

// ---- Few colours ----

template <int method, int bits>
Picture dithered(Picture picture, const Numbers&) {
  return programs::dithered(std::move(picture), programs::dither_methods()[method], bits);
}
enum DitherNumber { kFourNeighbours, kTwelveNeighbours, kSmooth, kSharp };

template <programs::Halftone method>
Picture halftoned(Picture picture, const Numbers& numbers) {
  return programs::halftoned(std::move(picture), method, numbers[0]);
}

// ---- The menu ----

constexpr const wchar_t* kTurn = L"&Turn and mirror";
constexpr const wchar_t* kShape = L"&Size and shape";
constexpr const wchar_t* kColor = L"&Colours";
constexpr const wchar_t* kFilter = L"&Filter";
constexpr const wchar_t* kReduce = L"&Few colours";

const Parameter kAngle = {L"&Degrees to the right", -360, 360, 5};
const Parameter kAcross = {L"&Pixels to the right", -10'000, 10'000, 100};
const Parameter kUp = {L"&Pixels up", -10'000, 10'000, 100};
const std::vector<Parameter> kSize = {{L"&Width in per cent", 1, 1000, 50}, {L"&Height in per cent", 1, 1000, 50}};
const std::vector<Parameter> kTones = {{L"&Brightness in per cent", -100, 100, 10},
                                       {L"&Contrast in per cent", -100, 100, 10}};
const Parameter kLevel = {L"&Level", 20, 100, 60};
const Parameter kBrightness = {L"&Brightness", -255, 255, 0};

const Operation kOperations[] = {
    {kTurn, L"A quarter to the &right", {'R'}, turned_by<90>},
    {kTurn, L"A quarter to the &left", {'L'}, turned_by<270>},
    {kTurn, L"By &half", {'U'}, turned_by<180>},
    {kTurn, L"&Mirror left and right", {'M'}, mirrored_across},
    {kTurn, L"Mirror &top and bottom", {'M', false, true}, mirrored_down},
    {kTurn, L"By an &angle...", {'A'}, turned_by_angle, {kAngle}},
    {kShape, L"Scale, &linear...", {'S'}, scaled_by<kLinear>, kSize},
    {kShape, L"Scale, &cubic...", {}, scaled_by<kCubic>, kSize},
    {kShape, L"Skew &rows...", {}, skewed<programs::Shear::kRows>, {kAcross}},
    {kShape, L"Skew c&olumns...", {}, skewed<programs::Shear::kColumns>, {kUp}},
    {kColor, L"&Negative", {'N'}, negative},
    {kColor, L"&Greys", {'G'}, gray<programs::GrayWeights::kByColor>},
    {kColor, L"Greys, all colours &alike", {}, gray<programs::GrayWeights::kEqual>},
    {kColor, L"&Brightness and contrast...", {'B'}, toned, kTones},
    {kColor, L"&24 bits", {}, in_true_color},
    {kFilter, L"&Blur, 3 x 3", {}, filtered<programs::Filter::kBox, 3>},
    {kFilter, L"Blur, &5 x 5", {}, filtered<programs::Filter::kBox, 5>},
    {kFilter, L"Blur, &7 x 7", {}, filtered<programs::Filter::kBox, 7>},
    {kFilter, L"Blur with &weights", {}, filtered<programs::Filter::kBlur, 3>},
    {kFilter, L"&Sharpen", {}, filtered<programs::Filter::kSharpen, 3>},
    {kFilter, L"Sharpen &more", {}, filtered<programs::Filter::kSharpenMore, 3>},
    {kFilter, L"&Clean...", {'C'}, cleaned<programs::Cleaning::kAll>, {kLevel}},
    {kFilter, L"Clean &gently...", {}, cleaned<programs::Cleaning::kGentle>, {kLevel}},
    {kReduce, L"Black and white, &four neighbours", {'D'}, dithered<kFourNeighbours, 1>},
    {kReduce, L"Black and white, &twelve neighbours", {}, dithered<kTwelveNeighbours, 1>},
    {kReduce, L"Black and white, &smooth", {}, dithered<kSmooth, 1>},
    {kReduce, L"Black and white, s&harp", {}, dithered<kSharp, 1>},
    {kReduce, L"&8 colours", {}, dithered<kFourNeighbours, 4>},
    {kReduce, L"&256 colours", {}, dithered<kFourNeighbours, 8>},
    {kReduce, L"Halftone, &ordered...", {'H'}, halftoned<programs::Halftone::kOrdered>, {kBrightness}},
    {kReduce, L"Halftone, &diffusion...", {}, halftoned<programs::Halftone::kDiffusion>, {kBrightness}},
    {kReduce, L"Halftone, by a th&reshold...", {}, halftoned<programs::Halftone::kThreshold>, {kBrightness}},
};

}  // namespace

std::span<const Operation> operations() { return kOperations; }

Picture run_operation(const Operation& operation, const Picture& picture, const Numbers& numbers) {
  return about(plain_name(operation.name) + L" is not done",
               [&] { return programs::with_whole_table(operation.run(picture.copy(), numbers)); });
}

}  // namespace vorel::viewer
