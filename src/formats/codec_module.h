// A codec module's entry point, loaded for one call.
#pragma once

#include <string>
#include <type_traits>

#include "core/file_formats.h"
#include "platform/module.h"

namespace vorel::formats {

// Loads a module for a scope and finds an entry point in it. A message box names a missing module or entry point.
class CodecEntry {
 public:
  explicit CodecEntry(const EntryPoint& entry);

  void* address() const { return address_; }  // null if it is missing

 private:
  std::string file_name_;
  LoadedModule module_;
  void* address_ = nullptr;
};

// Calls an entry point and returns its result, or zero if it is missing. The module is unloaded afterwards.
template <class Function, class... Arguments>
auto call_codec(const EntryPoint& entry, Arguments... arguments) {
  const CodecEntry codec(entry);
  using Value = std::invoke_result_t<Function, Arguments...>;
  return codec.address() == nullptr ? Value{} : reinterpret_cast<Function>(codec.address())(arguments...);
}

}  // namespace vorel::formats
