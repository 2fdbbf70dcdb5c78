// Steps one after another, as people write them: "clean 60 | rotate -1 --white | scale 50%".
#pragma once

#include <string>
#include <vector>

#include "cli/step.h"

namespace vorel::cli {

// Never changes once it is parsed, and serves any number of files.
class Chain {
 public:
  // Both throw Failure, which names the step.
  static Chain parse(const std::string& text);
  static Chain from_file(const std::string& name);  // a step per line or between bars; a hash begins a comment

  // One step. Throws WrongUse, which does not name it.
  static Chain of_step(const std::string& name, const std::vector<std::string>& words);

  // Throws programs::Problem, which names the step where there are several. A dropped page goes through no further steps.
  void apply(Page& page) const;

  size_t size() const { return links_.size(); }

  // The same steps in one spelling, which parse() takes.
  const std::string& text() const { return text_; }

 private:
  Chain() = default;
  static Chain of_text(const std::string& text, const std::string& place);
  void add(const Step& step, const std::vector<std::string>& words);

  struct Link {
    const Step* step;
    Change change;
  };
  std::vector<Link> links_;
  std::string text_;
};

}  // namespace vorel::cli
