// Stands in for functions that VOREL32.DLL imports, to make them fail or to watch them.
#pragma once

#include <cstring>
#include <stdexcept>
#include <windows.h>

namespace test {

// The slot in the DLL's import table that a function is called through.
inline void** import_slot(const char* function) {
  auto* base = reinterpret_cast<uint8_t*>(GetModuleHandleA("VOREL32.DLL"));
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
      if (std::strcmp(reinterpret_cast<const char*>(by_name->Name), function) == 0) return slot;
    }
  }
  throw std::runtime_error(function);
}

// Puts another function in an import's place for a scope.
class Replacement {
 public:
  template <class Function>
  Replacement(const char* name, Function* function)
      : slot_(import_slot(name)), original_(exchange(reinterpret_cast<void*>(function))) {}
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() { exchange(original_); }

 private:
  void* exchange(void* function) {
    DWORD protection = 0;
    VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &protection);
    void* before = *slot_;
    *slot_ = function;
    VirtualProtect(slot_, sizeof *slot_, protection, &protection);
    return before;
  }

  void** slot_;
  void* original_;
};

}  // namespace test
