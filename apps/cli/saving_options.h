// The options of verbs that write pictures.
#pragma once

#include <string>

#include "cli/arguments.h"
#include "common/saving.h"

namespace vorel::cli {

struct SavingOptions {
  std::string to, compression;
  int quality = 0;
  bool progressive = false, interlaced = false, overwrite = false, numbered = false, is_strict = false;

  // Verbs may leave these options out.
  struct Offered {
    bool numbering = true, strict = true;
  };
  void declare(Arguments& arguments, Offered offered);
  void declare(Arguments& arguments) { declare(arguments, {}); }

  // How to save under a name. Throws Failure if that and the options do not tell, or do not go together.
  programs::Saving saving_for(const std::string& output) const;
};

}  // namespace vorel::cli
