// What all verbs have in common that make one picture of another.
#pragma once

#include <functional>
#include <string>

#include "cli/picture.h"
#include "cli/verb.h"

namespace vorel::cli {

// Makes the new picture. Throws Failure.
using Change = std::function<Dib(Picture& picture)>;

// Declares a verb that reads IN, changes the picture and writes OUT. Arguments declared later come after these two.
Action declare_transform(CLI::App& app, Change change);

// An argument that must be there. A blank stands instead of the type, which says nothing here.
template <class Value>
CLI::Option* declare_argument(CLI::App& app, const std::string& name, Value& value, const std::string& help) {
  return app.add_option(name, value, help)->required()->option_text(" ");
}

// The option of verbs that read a page.
void declare_page(CLI::App& app, int& page);

// Runs a change whose result has pixels of 0 where it puts nothing. They come out as the colour nearest to black or to white.
Dib on_background(Picture& picture, bool is_white, const Change& change);
inline constexpr const char* kWhiteHelp =
    "fill what the picture leaves free with white, or the colour nearest to it (default: black)";

// Takes what a function of the library returned. Throws Failure if that is nothing, which means that memory is short.
Dib checked(const Picture& picture, HGLOBAL result);

}  // namespace vorel::cli
