// The verb that is made of a step.
#pragma once

#include "cli/step.h"
#include "cli/verb.h"

namespace vorel::cli {

// Reads IN, runs the step on each of its pages and writes OUT.
Action declare_step_verb(Arguments& arguments, const Step& step);

}  // namespace vorel::cli
