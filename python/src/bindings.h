// What the parts of the extension module share.
#pragma once

#include <pybind11/pybind11.h>

#include <vorel32.h>

#include "common/picture.h"

namespace vorel::python {

// Each adds its part to the module.
void bind_picture(pybind11::module_& module);
void bind_chain(pybind11::module_& module);
void bind_operations(pybind11::module_& module);
void bind_files(pybind11::module_& module);

// Does work of the library while other threads of the interpreter run. The thread's error code is then that of the work.
template <class Work>
auto unlocked(Work&& work) {
  const pybind11::gil_scoped_release released;
  SetImgError(IMG_OK);
  return std::forward<Work>(work)();
}

}  // namespace vorel::python
