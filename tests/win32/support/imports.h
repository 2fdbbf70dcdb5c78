// Stands in for functions that the library or another module imports, to make them fail or to watch them.
#pragma once

#include <cstring>
#include <stdexcept>

#include <vorel32.h>

namespace test {

// Calls visit(name, slot) for each import that has a name: the slot in the import table that the function is called through.
template <class Visit>
void for_each_import(HMODULE module, Visit visit) {
  auto* base = reinterpret_cast<uint8_t*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  for (auto* dll = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress); dll->Name != 0;
       ++dll) {
    auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + dll->OriginalFirstThunk);
    auto* slot = reinterpret_cast<void**>(base + dll->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
      if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
      const auto* by_name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
      visit(reinterpret_cast<const char*>(by_name->Name), slot);
    }
  }
}

// Returns the function that the slot held.
inline void* exchange_import(void** slot, void* function) {
  DWORD protection = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
  void* before = *slot;
  *slot = function;
  VirtualProtect(slot, sizeof *slot, protection, &protection);
  return before;
}

// The first slot of the library for a function.
inline void** import_slot(const char* function) {
  void** found = nullptr;
  for_each_import(GetModuleHandleA(VOREL_FILE_NAME), [&](const char* name, void** slot) {
    if (found == nullptr && std::strcmp(name, function) == 0) found = slot;
  });
  if (found == nullptr) throw std::runtime_error(function);
  return found;
}

// Puts another function in an import's place for a scope.
class Replacement {
 public:
  template <class Function>
  Replacement(const char* name, Function* function)
      : slot_(import_slot(name)), original_(exchange_import(slot_, reinterpret_cast<void*>(function))) {}
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() { exchange_import(slot_, original_); }

 private:
  void** slot_;
  void* original_;
};

}  // namespace test
