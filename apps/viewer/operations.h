// What the viewer can do to a picture: the rows of its Process menu.
#pragma once

#include <span>
#include <vector>

#include "common/picture.h"
#include "viewer/logic/key.h"
#include "viewer/number_dialog.h"

namespace vorel::viewer {

struct Operation {
  const wchar_t* menu;  // the submenu
  const wchar_t* name;
  Key key;
  // Makes a new picture. Throws programs::Problem.
  programs::Picture (*run)(programs::Picture picture, const Numbers& numbers);
  std::vector<Parameter> parameters = {};  // asked for before it runs
};

std::span<const Operation> operations();

// Throws Failure.
programs::Picture run_operation(const Operation& operation, const programs::Picture& picture, const Numbers& numbers);

}  // namespace vorel::viewer
