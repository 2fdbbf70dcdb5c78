// What was done to pages, as JSON and as text.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "cli/step.h"

namespace vorel::cli {

// {"page": LABEL, "dropped": ..., "steps": [{"step": NAME, FACT: VALUE, ...}, ...], "losses": [...]}
nlohmann::ordered_json json_of(const Page& page);

// A line for each step that has something to say: "LABEL: SENTENCE". Names the steps if there are several.
std::string sentences_of(const Page& page);

// JSON as text. Names of files need not be valid UTF-8, JSON must be.
std::string dumped(const nlohmann::ordered_json& json);

}  // namespace vorel::cli
