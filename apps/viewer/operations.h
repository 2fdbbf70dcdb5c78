// What the viewer can do to a picture: the rows of its Process menu, each a step of the command line tool.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "common/picture.h"
#include "viewer/logic/key.h"
#include "viewer/number_dialog.h"

namespace vorel::viewer {

struct Operation {
  const wchar_t* menu;  // the submenu
  const wchar_t* name;
  Key key;
  const char* step;                        // as the tool takes it, with {0} for the first number
  std::vector<Parameter> parameters = {};  // asked for before it runs
};

std::span<const Operation> operations();

// The step with its numbers.
std::string step_of(const Operation& operation, const Numbers& numbers);

struct Outcome {
  programs::Picture picture;
  std::wstring report;  // what the steps tell of the page; often empty
};

// Whether two pictures in the form that the library works on are equal, colour tables and resolutions included.
bool are_equal(const programs::Picture& a, const programs::Picture& b);

// From a file of steps. Throws Failure.
std::string steps_of_file(const std::filesystem::path& path);

// Steps as the tool takes them, with bars between them. Throws Failure.
Outcome run_steps(const std::string& steps, const programs::Picture& picture);

}  // namespace vorel::viewer
