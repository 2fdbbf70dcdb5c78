// What all verbs have in common that make one picture of another.
#pragma once

#include <string>
#include <vector>

#include "cli/picture.h"
#include "cli/verb.h"

namespace vorel::cli {

// An argument after IN and OUT that is one of a few words.
struct Choice {
  std::string name, help;
  std::vector<std::string> values;
};

// Makes the new picture. Throws Failure.
using Change = Dib (*)(Picture& picture, const std::string& choice);

// Declares a verb that reads IN, changes the picture and writes OUT.
Action declare_transform(CLI::App& app, Change change, const Choice& choice = {});

// Takes what a function of the library returned. Throws Failure if that is nothing, which means that memory is short.
Dib checked(const Picture& picture, HGLOBAL result);

}  // namespace vorel::cli
