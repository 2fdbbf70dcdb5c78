#include "cli/version.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include <vorel32.h>

#include "cli/report.h"
#include "common/platform.h"
#include "core/file_formats.h"
#include "kernels/levels.h"

namespace vorel::cli {
namespace {

using Json = nlohmann::ordered_json;

struct Module {
  std::string name;
  bool is_there;
  std::string libraries;  // empty for a module of our own code, and for those of others that do not tell
};

std::string number() {
  char text[32] = {};
  GetImageVersion(text, sizeof text);
  const std::string whole = text;
  return whole.substr(whole.rfind(' ') + 1);
}

std::string_view level() { return name_of(cpu_level()); }

// The modules that load, each once.
std::vector<Module> modules() {
  std::vector<Module> found;
  for (const FileFormat& format : file_formats()) {
    const auto is_known = [&](const Module& module) { return module.name == format.load.module; };
    if (!format.load || std::ranges::any_of(found, is_known)) continue;
    const programs::CodecModule module(format.load.module);
    void* const entry = module.is_loaded() ? module.entry("NameOfLibraries") : nullptr;
    const auto name_of_libraries = reinterpret_cast<ImgNameOfLibraries>(entry);
    found.push_back({format.load.module, module.is_loaded(), name_of_libraries == nullptr ? "" : name_of_libraries()});
  }
  return found;
}

}  // namespace

std::string version_line() { return fmt::format("vorel {} ({})", number(), level()); }

std::string version_text() {
  std::string text = version_line() + "\n";
  for (const Module& module : modules())
    if (!module.is_there || !module.libraries.empty())
      text += fmt::format("  {:8}{}\n", module.name, module.is_there ? module.libraries : "missing");
  return text;
}

std::string version_json() {
  Json list = Json::array();
  for (const Module& module : modules())
    list.push_back({{"module", module.name}, {"present", module.is_there}, {"libraries", module.libraries}});
  return dumped({{"version", number()},
                 {"instructions", level()},
                 {"drawing", programs::has_drawing()},
                 {"modules", std::move(list)}}) +
         "\n";
}

}  // namespace vorel::cli
