// Chains of steps, as the command's verb run has them.
#include <optional>
#include <pybind11/stl.h>
#include <string>

#include "bindings.h"
#include "cli/chain.h"

namespace vorel::python {
namespace {

namespace py = pybind11;
using cli::Chain;
using cli::Page;
using programs::Picture;

py::list reports_of(const Page& page) {
  py::list reports;
  for (const cli::StepReport& report : page.reports) {
    py::dict facts;
    facts["step"] = report.step;
    for (const cli::Fact& fact : report.facts) facts[py::str(fact.name)] = fact.value;
    if (!report.sentence.empty()) facts["sentence"] = report.sentence;
    reports.append(facts);
  }
  return reports;
}

// The picture, none if a step drops the page; what the steps tell of it; what was lost.
std::tuple<std::optional<Picture>, py::list, std::vector<std::string>> apply(const Chain& chain, const Picture& picture) {
  Page page{.label = {}, .picture = picture.lent()};
  unlocked([&] {
    chain.apply(page);
    page.picture = made_own(std::move(page.picture));
  });
  std::optional<Picture> result;
  if (!page.is_dropped) result = std::move(page.picture);
  return {std::move(result), reports_of(page), page.losses};
}

// The picture alone.
Picture make(const Chain& chain, const Picture& picture) {
  return unlocked([&] {
    Page page{.label = {}, .picture = picture.lent()};
    chain.apply(page);
    return made_own(std::move(page.picture));
  });
}

}  // namespace

void bind_chain(py::module_& module) {
  py::class_<Chain>(module, "Chain")
      .def(py::init(&Chain::parse))
      .def_static("of_step", &Chain::of_step)
      .def_property_readonly("text", &Chain::text)
      .def("make", &make)
      .def("apply", &apply);
}

}  // namespace vorel::python
