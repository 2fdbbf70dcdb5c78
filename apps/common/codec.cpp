#include "common/codec.h"

#include <fmt/format.h>

#include "common/problem.h"

namespace vorel::programs {
namespace {

std::string shown_library_folder() {
  const std::u8string folder = std::filesystem::path(library_folder()).u8string();
  return {folder.begin(), folder.end()};
}

}  // namespace

Codec::Codec(const EntryPoint& entry)
    : module_(entry.module), address_(module_.is_loaded() ? module_.entry(entry.name) : nullptr) {
  if (!module_.is_loaded()) {
    throw Problem(
        Fault::kModule,
        fmt::format("the codec module {} for this format is missing or does not load; put it beside the library in {}",
                    module_file_name(entry.module), shown_library_folder()));
  }
  if (address_ == nullptr) {
    throw Problem(Fault::kModule,
                  fmt::format("the codec module {} lacks {}; put this version's module beside the library in {}",
                              module_file_name(entry.module), entry.name, shown_library_folder()));
  }
}

void Codec::require(const EntryPoint& entry) {
  if (entry) static_cast<void>(Codec{entry});
}

}  // namespace vorel::programs
