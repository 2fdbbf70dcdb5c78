// Runs as files and as Markdown.
#pragma once

#include <string>

#include "peers/measure.h"

namespace peers {

std::string to_json(const Run& run);

// The medians of several runs.
Run merged(const std::vector<std::string>& files);

// Ours beside the best peer and memcpy, with a summary; for a run with a participant "dll", the ratios of the two builds.
std::string markdown(const Run& run);

// Ours with nine times as many pixels, beside the usual size.
std::string large_markdown(const Run& run);

}  // namespace peers
