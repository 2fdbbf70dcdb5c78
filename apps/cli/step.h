// A step: the work of a verb on one page, alone or in a chain.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "cli/arguments.h"
#include "cli/limits.h"
#include "common/picture.h"

namespace vorel::cli {

// What a step tells of a page: facts for programs, and a sentence for people.
struct Fact {
  std::string name;
  std::variant<bool, int64_t, double, std::string> value;
};
struct StepReport {
  std::string step;
  std::vector<Fact> facts;
  std::string sentence;  // begins in lower case, without a full stop
};

// A page on its way from the file that it comes from to the one that it goes to.
struct Page {
  std::string label;  // for messages
  programs::Picture picture;
  Limits limits = {};
  bool is_trial = false;    // nothing is written: sentences say "would"
  bool is_dropped = false;  // left out of the output
  std::vector<StepReport> reports = {};
  std::vector<std::string> losses = {};  // that nobody asked for: "what is lost; what to do"

  void tell(std::string sentence, std::vector<Fact> facts) {
    reports.back().sentence = std::move(sentence);
    reports.back().facts = std::move(facts);
  }
};

// Changes a page. Throws programs::Problem. Holds the parsed options without changing them, and may run for several pages at
// a time.
using Change = std::function<void(Page& page)>;

// A change of the picture alone.
template <class Make>
Change changes_picture(Make make) {
  return [make = std::move(make)](Page& page) { page.picture = make(std::move(page.picture)); };
}

struct Step {
  const char* name;
  const char* purpose;                      // one line
  Change (*declare)(Arguments& arguments);  // tells arguments and help; nothing of files, pages and saving
  bool reports = false;                     // tells something of every page
};

// In the order of the help.
extern const Step kRotate, kMirror, kSkew, kDeskew, kOrient, kScale, kCrop, kDpi, kInvert, kTone, kLut, kFilter, kGray,
    kExpand, kClean, kDespeckle, kBlank, kThreshold, kDither, kHalftone;
inline constexpr const Step* kSteps[] = {&kRotate, &kMirror,    &kSkew,  &kDeskew,    &kOrient, &kScale,   &kCrop,
                                         &kDpi,    &kInvert,    &kTone,  &kLut,       &kFilter, &kGray,    &kExpand,
                                         &kClean,  &kDespeckle, &kBlank, &kThreshold, &kDither, &kHalftone};

// Runs a step on a page, which gets its report and must stay within its limits.
void run_step(const Step& step, const Change& change, Page& page);

}  // namespace vorel::cli
