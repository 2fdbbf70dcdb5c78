// The entry point of every DLL of this project: wraps the C runtime's.
//
// The compiler's own libraries are linked in, so each DLL has a copy of them. They allocate a thread-local-storage index and
// a memory reserve for exceptions and never free them, as if a DLL stayed loaded until its process ends. Codec modules are
// loaded and unloaded with every picture: without this file a process runs out of its 1,088 indexes and ends at its
// thousandth picture. These libraries also end the process if they get no index, so one is reserved for them first.
#include <algorithm>
#include <iterator>
#include <utility>
#include <windows.h>

namespace __gnu_cxx {
void __freeres();  // frees the reserve; no header declares it
}

extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID process_ends);

namespace {

// Indexes that this DLL has taken, for itself or for the libraries in it. There is hardly ever more than one of each.
DWORD indexes[8];
size_t index_count = 0;
DWORD reserved = TLS_OUT_OF_INDEXES;
bool attached = false;

template <class Function>
Function* system_function(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("KERNEL32.DLL"), name)));
}

DWORD WINAPI take_index() {
  if (reserved != TLS_OUT_OF_INDEXES) return std::exchange(reserved, TLS_OUT_OF_INDEXES);
  const DWORD index = system_function<DWORD WINAPI()>("TlsAlloc")();
  if (index != TLS_OUT_OF_INDEXES && index_count < std::size(indexes)) indexes[index_count++] = index;
  return index;
}

bool reserve_index() {
  reserved = take_index();
  return reserved != TLS_OUT_OF_INDEXES;
}

BOOL WINAPI free_index(DWORD index) {
  index_count = static_cast<size_t>(std::remove(indexes, indexes + index_count, index) - indexes);
  return system_function<BOOL WINAPI(DWORD)>("TlsFree")(index);
}

}  // namespace

// Calls of TlsAlloc and TlsFree in this DLL go through these pointers instead of the import library's.
extern "C" {
extern decltype(&take_index) const import_of_tls_alloc __asm__("__imp__TlsAlloc@0") = take_index;
extern decltype(&free_index) const import_of_tls_free __asm__("__imp__TlsFree@4") = free_index;
}

// Destructors of static objects run within the runtime's entry point, so nothing of the DLL runs after it. The end of a
// process frees everything, and its other threads may have been stopped anywhere. The system also sends the detach notice
// after a refused attach.
extern "C" BOOL WINAPI enter_dll(HINSTANCE module, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_ATTACH) attached = reserve_index();
  if (!attached) return FALSE;
  const BOOL accepted = DllMainCRTStartup(module, reason, process_ends);
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
    __gnu_cxx::__freeres();
    while (index_count > 0) free_index(indexes[index_count - 1]);
  }
  return accepted;
}
