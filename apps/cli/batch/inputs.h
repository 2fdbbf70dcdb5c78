// The files that a batch is about.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "cli/file_names.h"

namespace vorel::cli::batch {

struct InputFile {
  std::filesystem::path path;
  std::string id;     // path below the folder that was named, with slashes
  std::string key;    // the id, or another if several have that: what the journal and the shards go by
  std::string shown;  // for messages
  size_t index = 0;   // among all inputs, counted from 1

  std::string folder() const;  // of the id; "" for none
  std::string name() const;
  std::string stem() const;
};

struct Wanted {
  std::vector<std::string> names;  // files, folders and patterns
  std::string list;                // a file that names more of them, "-" for standard input
  bool is_recursive = false;
  bool ends_with_zero = false;   // the names of the list, not lines
  std::filesystem::path output;  // a folder that holds no inputs
};

struct Inputs {
  std::vector<InputFile> files;  // ordered, no file twice
  size_t others = 0;             // files of folders whose names are of no picture
};

// Files that were named need not be there: that is found out one by one. Throws Failure.
Inputs find_inputs(const Wanted& wanted, std::istream& standard_input);

}  // namespace vorel::cli::batch
