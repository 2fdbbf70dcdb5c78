// The extension module _vorel32: the shared layer of the programs for Python. The package's plain Python gives it its public form.
#include <new>
#include <system_error>

#include "bindings.h"
#include "common/problem.h"

namespace vorel::python {
namespace {

namespace py = pybind11;
using programs::Fault;
using programs::Problem;

const char* class_for(Fault fault) {
  switch (fault) {
    case Fault::kWrongUse: return "UsageError";
    case Fault::kInput: return "InputError";
    case Fault::kFormat: return "FormatError";
    case Fault::kOutput: return "OutputError";
    case Fault::kLimit: return "LimitError";
    case Fault::kModule: return "CodecError";
  }
  return "Error";
}

void raise(Fault fault, const char* text) {
  const py::object kind = py::module_::import("vorel32._errors").attr(class_for(fault));
  const py::object error = kind(text, py::none(), py::none(), ImgError());
  PyErr_SetObject(kind.ptr(), error.ptr());
}

void translate(std::exception_ptr pointer) try {
  if (pointer) std::rethrow_exception(pointer);
} catch (const Problem& problem) {
  raise(problem.fault(), problem.what());
} catch (const std::bad_alloc&) {
  raise(Fault::kLimit, "there is not enough memory; close programs or use a smaller picture");
} catch (const std::system_error& error) {
  raise(Fault::kInput, error.what());
}

}  // namespace

PYBIND11_MODULE(_vorel32, module) {
  py::register_local_exception_translator(translate);
  bind_picture(module);
  bind_operations(module);
  bind_files(module);
}

}  // namespace vorel::python
