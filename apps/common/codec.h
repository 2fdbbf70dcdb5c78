// Codec modules that the programs call themselves, or make sure of before the library looks for them: where the library would
// show a message box, they say what to do.
#pragma once

#include "common/platform.h"
#include "core/file_formats.h"

namespace vorel::programs {

class Codec {
 public:
  // Loads the module of an entry point, from the library's folder or wherever the system finds it. It stays until the program
  // ends: a picture takes several calls, and with its libraries a module loads as slowly as a small picture is decoded. Throws
  // Problem if the module is missing or lacks the entry point.
  explicit Codec(const EntryPoint& entry);

  // Throws Problem if a module is missing. Formats without one are fine.
  static void require(const EntryPoint& entry);

  template <class Function>
  Function as() const {
    return reinterpret_cast<Function>(address_);
  }

  // Another entry point of the same module, or null: modules of other makers may lack those that the library does not use.
  template <class Function>
  Function other(const char* name) const {
    return reinterpret_cast<Function>(module_->entry(name));
  }

 private:
  const CodecModule* module_;  // never null once constructed
  void* address_;
};

}  // namespace vorel::programs
