#include "viewer/operations.h"

#include <algorithm>

#include "cli/chain.h"
#include "cli/failure.h"
#include "common/forms.h"
#include "viewer/failure.h"
#include "viewer/logic/step_text.h"

namespace vorel::viewer {
namespace {

// ---- The menu ----

constexpr const wchar_t* kTurn = L"&Turn and mirror";
constexpr const wchar_t* kPage = L"&Scanned page";
constexpr const wchar_t* kShape = L"Si&ze and shape";
constexpr const wchar_t* kColor = L"&Colours";
constexpr const wchar_t* kFilter = L"&Filter";
constexpr const wchar_t* kReduce = L"Fe&w colours";

const Parameter kAngle = {L"&Degrees to the right", -360, 360, 5};
const Parameter kAcross = {L"&Pixels to the right", -10'000, 10'000, 100};
const Parameter kUp = {L"&Pixels up", -10'000, 10'000, 100};
const Parameter kSize = {L"&Size in per cent", 1, 1000, 50};
const std::vector<Parameter> kTones = {{L"&Brightness in per cent", -100, 100, 10},
                                       {L"&Contrast in per cent", -100, 100, 10}};
const Parameter kLevel = {L"&Level", 20, 100, 60};
const Parameter kBrightness = {L"&Brightness", -255, 255, 0};
const Parameter kConfidence = {L"&Least confidence in per cent", 0, 100, 50};
const Parameter kMargin = {L"&Margin in millimetres", 0, 100, 5};
const Parameter kSpeck = {L"&Size of specks in pixels", 1, 100, 4};
const Parameter kWhite = {L"&White from level", 0, 255, 128};
const std::vector<Parameter> kLocal = {{L"&Window in pixels", 3, 1023, 41}, {L"&Strictness in per cent", 0, 99, 34}};

const Operation kOperations[] = {
    {kTurn, L"A quarter to the &right", {'R'}, "rotate 90"},
    {kTurn, L"A quarter to the &left", {'L'}, "rotate 270"},
    {kTurn, L"By &half", {'U'}, "rotate 180"},
    {kTurn, L"&Mirror left and right", {'M'}, "mirror horizontal"},
    {kTurn, L"Mirror &top and bottom", {'M', false, true}, "mirror vertical"},
    {kTurn, L"By an &angle...", {'A'}, "rotate {0}", {kAngle}},
    {kPage, L"&Straighten...", {'K'}, "deskew --confidence {0}", {kConfidence}},
    {kPage, L"&Turn upright", {}, "orient"},
    {kPage, L"&Crop to the content...", {'Y'}, "crop auto --margin {0}mm", {kMargin}},
    {kPage, L"&Black and white by a level...", {'V'}, "threshold {0}", {kWhite}},
    {kPage, L"Black and white by the b&est level", {}, "threshold otsu"},
    {kPage, L"Black and white by &local levels...", {}, "threshold sauvola --window {0}px --k 0.{1:2}", kLocal},
    {kPage, L"Take off s&pecks...", {'D', false, true}, "despeckle --size {0}px", {kSpeck}},
    {kPage, L"Clea&n...", {'C'}, "clean {0}", {kLevel}},
    {kPage, L"Clean &gently...", {}, "clean {0} --gentle", {kLevel}},
    {kShape, L"Scale by &area...", {'S'}, "scale {0}% --method area", {kSize}},
    {kShape, L"Scale, &linear...", {}, "scale {0}% --method linear", {kSize}},
    {kShape, L"Scale, &cubic...", {}, "scale {0}% --method cubic", {kSize}},
    {kShape, L"Skew &rows...", {}, "skew horizontal {0}", {kAcross}},
    {kShape, L"Skew c&olumns...", {}, "skew vertical {0}", {kUp}},
    {kColor, L"&Negative", {'N'}, "invert"},
    {kColor, L"&Greys", {'G'}, "gray --weighted"},
    {kColor, L"Greys, all colours &alike", {}, "gray"},
    {kColor, L"&Brightness and contrast...", {'B'}, "tone --brightness {0} --contrast {1}", kTones},
    {kColor, L"&24 bits", {}, "expand"},
    {kFilter, L"&Blur, 3 x 3", {}, "filter box --size 3 --weighted"},
    {kFilter, L"Blur, &5 x 5", {}, "filter box --size 5 --weighted"},
    {kFilter, L"Blur, &7 x 7", {}, "filter box --size 7 --weighted"},
    {kFilter, L"Blur with &weights", {}, "filter blur --weighted"},
    {kFilter, L"&Sharpen", {}, "filter sharpen --weighted"},
    {kFilter, L"Sharpen &more", {}, "filter sharpen-more --weighted"},
    {kReduce, L"Black and white, &four neighbours", {'D'}, "dither --method fs"},
    {kReduce, L"Black and white, &twelve neighbours", {}, "dither --method jjn"},
    {kReduce, L"Black and white, &smooth", {}, "dither --method smooth"},
    {kReduce, L"Black and white, s&harp", {}, "dither --method sharp"},
    {kReduce, L"&8 colours", {}, "dither --method fs --bits 4"},
    {kReduce, L"&256 colours", {}, "dither --method fs --bits 8"},
    {kReduce, L"Halftone, &ordered...", {'H'}, "halftone --method ordered --brightness {0}", {kBrightness}},
    {kReduce, L"Halftone, &diffusion...", {}, "halftone --method diffusion --brightness {0}", {kBrightness}},
    {kReduce, L"Halftone, by a th&reshold...", {}, "halftone --method threshold --brightness {0}", {kBrightness}},
};

std::wstring report_of(const cli::Page& page) {
  std::string text;
  for (const cli::StepReport& report : page.reports)
    if (!report.sentence.empty()) text += (text.empty() ? "" : "; ") + report.sentence;
  return widened(text);
}

}  // namespace

std::span<const Operation> operations() { return kOperations; }

std::string step_of(const Operation& operation, const Numbers& numbers) { return filled(operation.step, numbers); }

bool are_equal(const programs::Picture& a, const programs::Picture& b) {
  const DibHeader &one = a.header(), &other = b.header();
  if (a.width() != b.width() || a.height() != b.height() || a.depth() != b.depth() || one.x_per_metre != other.x_per_metre ||
      one.y_per_metre != other.y_per_metre || !std::ranges::equal(a.colors(), b.colors()))
    return false;
  for (int y = 0; y < a.height(); ++y)
    if (!std::ranges::equal(a.pixels().row(y), b.pixels().row(y))) return false;
  return true;
}

std::string steps_of_file(const std::filesystem::path& path) {
  try {
    return cli::Chain::from_file(narrowed(path)).text();
  } catch (const cli::Failure& failure) {
    throw Failure(widened(failure.what()));
  }
}

Outcome run_steps(const std::string& steps, const programs::Picture& picture) {
  try {
    cli::Page page{.label = {}, .picture = picture.copy()};
    cli::Chain::parse(steps).apply(page);
    return {programs::with_whole_table(programs::workable(std::move(page.picture))), report_of(page)};
  } catch (const programs::Problem& problem) {
    throw Failure(L"This is not done: " + widened(problem.what()));
  } catch (const cli::Failure& failure) {
    throw Failure(L"This is not done: " + widened(failure.what()));
  }
}

}  // namespace vorel::viewer
