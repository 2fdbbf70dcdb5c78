#include "platform/module.h"

#include "platform/win32.h"

namespace vorel {
namespace {

// The module that this code is part of.
HMODULE own_module() {
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCSTR>(&own_module), &module);
  return module;
}

std::wstring own_folder() {
  std::wstring path(32'768, L'\0');  // the longest there is
  path.resize(GetModuleFileNameW(own_module(), path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of(L"\\/") + 1);
}

HMODULE load(const std::string& file_name) {
  const std::wstring folder = own_folder();
  const std::wstring beside_us = folder + std::wstring(file_name.begin(), file_name.end());
  const bool is_there = !folder.empty() && GetFileAttributesW(beside_us.c_str()) != INVALID_FILE_ATTRIBUTES;
  if (!is_there) return LoadLibraryA(file_name.c_str());
  return LoadLibraryExW(beside_us.c_str(), nullptr,
                        LOAD_WITH_ALTERED_SEARCH_PATH);  // what it depends on comes from there too
}

HMODULE handle_of(void* module) { return static_cast<HMODULE>(module); }

}  // namespace

std::string module_file_name(const char* name) { return std::string(name) + ".DLL"; }

LoadedModule::LoadedModule(const char* file_name) : handle_(load(file_name)) {}

LoadedModule::~LoadedModule() {
  if (is_loaded()) FreeLibrary(handle_of(handle_));
}

void* LoadedModule::entry(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(handle_of(handle_), name));
}

}  // namespace vorel
