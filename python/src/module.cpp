// The extension module _vorel32: the shared layer of the programs for Python. The package's plain Python gives it its public form.
#include <new>
#include <system_error>

#include "bindings.h"
#include "cli/failure.h"
#include "cli/parser.h"
#include "common/problem.h"

namespace vorel::python {
namespace {

namespace py = pybind11;
using programs::Problem;

using cli::ExitCode;

const char* class_for(ExitCode code) {
  switch (code) {
    case ExitCode::kWrongUse: return "UsageError";
    case ExitCode::kInput: return "InputError";
    case ExitCode::kFormat: return "FormatError";
    case ExitCode::kOutput: return "OutputError";
    case ExitCode::kLimit: return "LimitError";
    case ExitCode::kModule: return "CodecError";
    default: return "Error";
  }
}

// Texts are UTF-8, but may repeat words that are not.
py::str readable(std::string_view text) {
  return py::reinterpret_steal<py::str>(PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "replace"));
}

void raise(ExitCode code, const char* text) {
  const py::object kind = py::module_::import("vorel32._errors").attr(class_for(code));
  const py::object error = kind(readable(text), py::none(), py::none(), ImgError());
  PyErr_SetObject(kind.ptr(), error.ptr());
}

// The package's Python knows whether a file could not be read or not be written.
void raise(const std::error_code& code) {
  const py::object error = py::reinterpret_borrow<py::object>(PyExc_OSError)(code.value(), readable(code.message()));
  PyErr_SetObject(PyExc_OSError, error.ptr());
}

void translate(std::exception_ptr pointer) try {
  if (pointer) std::rethrow_exception(pointer);
} catch (const Problem& problem) {
  raise(cli::code_for(problem.fault()), problem.what());
} catch (const cli::Failure& failure) {
  raise(failure.code(), failure.what());
} catch (const cli::WrongUse& wrong) {
  raise(ExitCode::kWrongUse, wrong.what());
} catch (const std::bad_alloc&) {
  raise(ExitCode::kLimit, "there is not enough memory; close programs or use a smaller picture");
} catch (const std::system_error& error) {
  raise(error.code());
}

}  // namespace

PYBIND11_MODULE(_vorel32, module) {
  py::register_local_exception_translator(translate);
  bind_picture(module);
  bind_operations(module);
  bind_files(module);
  bind_chain(module);
}

}  // namespace vorel::python
