// The entry point of every DLL that is built here: the C runtime's, and what that leaves behind.
//
// The compiler's own libraries are linked in, so each DLL has them to itself. They take a thread-local-storage index and a
// reserve of memory for exceptions and never give them back, as if a DLL stayed until its process ends. Codec modules come
// and go with every picture; without this a process runs out of indexes, of which it has 1,088, and dies with its thousandth.
#include <algorithm>
#include <iterator>
#include <windows.h>

namespace __gnu_cxx {
void __freeres();  // frees the reserve; no header declares it
}

extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID process_ends);

namespace {

// Indexes that this DLL has, its own and those of the libraries in it. There is hardly ever more than one of each.
DWORD indexes[8];
size_t index_count = 0;

template <class Function>
Function* system_function(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("KERNEL32.DLL"), name)));
}

DWORD WINAPI take_index() {
  const DWORD index = system_function<DWORD WINAPI()>("TlsAlloc")();
  if (index != TLS_OUT_OF_INDEXES && index_count < std::size(indexes)) indexes[index_count++] = index;
  return index;
}

BOOL WINAPI free_index(DWORD index) {
  index_count = static_cast<size_t>(std::remove(indexes, indexes + index_count, index) - indexes);
  return system_function<BOOL WINAPI(DWORD)>("TlsFree")(index);
}

}  // namespace

// What calls of TlsAlloc and TlsFree in this DLL go through, in place of the import library's.
extern "C" {
extern decltype(&take_index) const import_of_tls_alloc __asm__("__imp__TlsAlloc@0") = take_index;
extern decltype(&free_index) const import_of_tls_free __asm__("__imp__TlsFree@4") = free_index;
}

// Destructors of static objects are among what the runtime does, so that nothing of the DLL runs after it. A process that
// ends takes everything with it, and its other threads may have been stopped anywhere.
extern "C" BOOL WINAPI enter_dll(HINSTANCE module, DWORD reason, LPVOID process_ends) {
  const BOOL accepted = DllMainCRTStartup(module, reason, process_ends);
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
    __gnu_cxx::__freeres();
    while (index_count > 0) free_index(indexes[index_count - 1]);
  }
  return accepted;
}
