#include "common/codec.h"

#include <fmt/format.h>
#include <map>
#include <mutex>

#include "common/problem.h"

namespace vorel::programs {
namespace {

std::string shown_library_folder() {
  const std::u8string folder = std::filesystem::path(library_folder()).u8string();
  return {folder.begin(), folder.end()};
}

// Null if it does not load; the next call tries again.
const CodecModule* loaded_module(const char* name) {
  static std::mutex mutex;
  static auto& modules = *new std::map<std::string, CodecModule>;  // never freed
  const std::lock_guard guard(mutex);
  const auto found = modules.try_emplace(name, name).first;
  if (found->second.is_loaded()) return &found->second;
  modules.erase(found);
  return nullptr;
}

}  // namespace

Codec::Codec(const EntryPoint& entry)
    : module_(loaded_module(entry.module)), address_(module_ != nullptr ? module_->entry(entry.name) : nullptr) {
  if (module_ == nullptr) {
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
