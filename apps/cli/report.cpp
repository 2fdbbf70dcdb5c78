#include "cli/report.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace vorel::cli {

using Json = nlohmann::ordered_json;

Json json_of(const Page& page) {
  Json steps = Json::array();
  for (const StepReport& report : page.reports) {
    Json step = {{"step", report.step}};
    for (const Fact& fact : report.facts) std::visit([&](const auto& value) { step[fact.name] = value; }, fact.value);
    steps.push_back(std::move(step));
  }
  return {{"page", page.label}, {"dropped", page.is_dropped}, {"steps", std::move(steps)}, {"losses", page.losses}};
}

std::string sentences_of(const Page& page) {
  std::string text;
  for (const StepReport& report : page.reports) {
    if (report.sentence.empty()) continue;
    const std::string step = page.reports.size() == 1 ? "" : report.step + ": ";
    text += fmt::format("{}: {}{}\n", page.label, step, report.sentence);
  }
  return text;
}

std::string dumped(const Json& json) { return json.dump(2, ' ', false, Json::error_handler_t::replace); }

}  // namespace vorel::cli
