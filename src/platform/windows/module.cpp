#include "platform/module.h"

#include <windows.h>

namespace vorel {
namespace {

HMODULE load(const std::string& file_name, const FolderName& first) {
  const std::wstring installed = first + std::wstring(file_name.begin(), file_name.end());
  const bool is_there = !first.empty() && GetFileAttributesW(installed.c_str()) != INVALID_FILE_ATTRIBUTES;
  if (!is_there) return LoadLibraryA(file_name.c_str());
  return LoadLibraryExW(installed.c_str(), nullptr,
                        LOAD_WITH_ALTERED_SEARCH_PATH);  // its dependencies come from there too
}

HMODULE handle_of(void* module) { return static_cast<HMODULE>(module); }

}  // namespace

std::string module_file_name(const char* name) { return std::string(name) + ".DLL"; }

FolderName folder_of_code(const void* address) {
  HMODULE module = nullptr;
  if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                          static_cast<LPCSTR>(address), &module)) {
    return {};
  }
  std::wstring path(32'768, L'\0');  // the longest possible
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of(L"\\/") + 1);
}

FolderName own_folder() { return folder_of_code(reinterpret_cast<const void*>(&own_folder)); }

LoadedModule::LoadedModule(const char* file_name, const FolderName& first) : handle_(load(file_name, first)) {}

LoadedModule::~LoadedModule() {
  if (is_loaded()) FreeLibrary(handle_of(handle_));
}

void* LoadedModule::entry(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(handle_of(handle_), name));
}

}  // namespace vorel
