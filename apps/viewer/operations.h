// What the viewer can do to a picture: the rows of its Process menu.
#pragma once

#include <span>
#include <vector>

#include <vorel32.h>

#include "common/dib.h"
#include "viewer/logic/key.h"
#include "viewer/number_dialog.h"

namespace vorel::viewer {

struct Operation {
  const wchar_t* menu;  // the submenu
  const wchar_t* name;
  Key key;
  // Makes a new picture, or returns null with the reason as the thread's code.
  Dib (*run)(const Dib& dib, const Numbers& numbers);
  std::vector<Parameter> parameters = {};  // asked for before it runs
  // What is wrong where the library has no code for it.
  const wchar_t* usual_reason = L"there is not enough memory";
};

std::span<const Operation> operations();

// Throws Failure.
Dib run_operation(const Operation& operation, const Dib& dib, const Numbers& numbers);

}  // namespace vorel::viewer
