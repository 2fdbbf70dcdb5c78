// Codec modules that the tool calls itself, or makes sure of before the library looks for them: where the library would show
// a message box, the tool says what to do and ends with a code of its own.
#pragma once

#include "cli/platform.h"
#include "common/formats.h"

namespace vorel::cli {

class Codec {
 public:
  // Loads the module of an entry point, from the library's folder or wherever the system finds it. Throws Failure, in the
  // name of a file, if it is missing or lacks the entry point.
  Codec(const Entry& entry, const std::string& label);

  // Throws Failure if a module is missing. Formats without one are fine.
  static void require(const Entry& entry, const std::string& label);

  template <class Function>
  Function as() const {
    return reinterpret_cast<Function>(address_);
  }

  // Another entry point of the same module, or null: modules of other makers may lack those that the library does not use.
  template <class Function>
  Function other(const char* name) const {
    return reinterpret_cast<Function>(module_.entry(name));
  }

 private:
  CodecModule module_;
  void* address_;
};

}  // namespace vorel::cli
