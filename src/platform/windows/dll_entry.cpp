// The entry point of every DLL of this project: wraps the C runtime's.
//
// The compiler's own libraries are linked in, so each DLL has a copy of them. They allocate a thread-local-storage index, a
// memory reserve for exceptions, small blocks for each thread and, with the first exception, critical sections, and never free
// them, as if a DLL stayed loaded until its process ends. Codec modules are loaded and unloaded with every picture: without this
// file a process runs out of its 1,088 indexes and ends at its thousandth picture, each picture costs it six blocks of memory,
// and each file that cannot be read three more.
//
// These libraries also end the process if they get no index, or no memory for the first exception, which may be the one that says
// that memory is short. So an index is reserved, and one exception thrown when the DLL is loaded: what is set up with it lies in
// a reserve of the DLL's own, as do the small blocks.
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <cxxabi.h>
#include <iterator>
#include <utility>
#include <windows.h>

namespace __gnu_cxx {
void __freeres();  // frees the reserve; no header declares it
}

extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID process_ends);

// The linker resolves malloc in this DLL to __wrap_malloc and __real_malloc to the system's malloc; the same for the others.
extern "C" {
void* __real_malloc(size_t bytes);
void* __real_calloc(size_t count, size_t bytes);
void* __real_realloc(void* block, size_t bytes);
void __real_free(void* block);
}

namespace {

// Where memory comes from: the system; while the libraries begin, the reserve for small blocks; while the exception is thrown,
// the reserve; or the next request is refused.
enum class Source { kSystem, kReserveIfSmall, kReserve, kRefusedOnce };
Source source = Source::kSystem;
bool was_short = false;

// Blocks of the reserve are never reused. Each has its size in front.
constexpr size_t kAlignment = 16;
alignas(kAlignment) std::byte reserve[4096];
size_t reserve_used = 0;

bool comes_from_reserve(size_t bytes) {
  constexpr size_t kSmall = 256;
  return source != Source::kSystem && (source != Source::kReserveIfSmall || bytes <= kSmall);
}

bool is_reserved(const void* block) { return block >= reserve && block < reserve + sizeof reserve; }
size_t reserved_size(const void* block) {
  size_t size = 0;
  std::memcpy(&size, static_cast<const std::byte*>(block) - kAlignment, sizeof size);
  return size;
}

void* from_reserve(size_t bytes) {
  if (bytes > sizeof reserve) return nullptr;
  const size_t taken = kAlignment + (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (taken > sizeof reserve - reserve_used) return nullptr;
  std::byte* const place = reserve + std::exchange(reserve_used, reserve_used + taken);
  std::memcpy(place, &bytes, sizeof bytes);
  return place + kAlignment;
}

void* noted(void* block) {
  if (block == nullptr) was_short = true;
  return block;
}

// Throws one exception, and takes memory for one from the libraries' own reserve.
void set_up_exceptions() {
  source = Source::kReserve;
  try {
    throw 0;
  } catch (int) {
  }
  source = Source::kRefusedOnce;
  __cxxabiv1::__cxa_free_exception(__cxxabiv1::__cxa_allocate_exception(kAlignment));
  source = Source::kSystem;
}

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

// The libraries take theirs as they begin on 32-bit Windows, and with the first exception on 64-bit Windows.
constexpr bool kExceptionTakesIndex = sizeof(void*) == 8;

bool reserve_index() {
  reserved = take_index();
  return reserved != TLS_OUT_OF_INDEXES;
}

BOOL WINAPI free_index(DWORD index) {
  index_count = static_cast<size_t>(std::remove(indexes, indexes + index_count, index) - indexes);
  return system_function<BOOL WINAPI(DWORD)>("TlsFree")(index);
}

// Critical sections that this DLL has not deleted yet. Any thread may begin one.
CRITICAL_SECTION* sections[32];
size_t section_count = 0;
std::atomic_flag sections_in_use;

template <class Step>
void with_sections(Step step) {
  while (sections_in_use.test_and_set(std::memory_order_acquire)) Sleep(0);
  step();
  sections_in_use.clear(std::memory_order_release);
}

void WINAPI begin_section(CRITICAL_SECTION* section) {
  system_function<void WINAPI(CRITICAL_SECTION*)>("InitializeCriticalSection")(section);
  with_sections([=] {
    if (section_count < std::size(sections)) sections[section_count++] = section;
  });
}

void WINAPI end_section(CRITICAL_SECTION* section) {
  with_sections(
      [=] { section_count = static_cast<size_t>(std::remove(sections, sections + section_count, section) - sections); });
  system_function<void WINAPI(CRITICAL_SECTION*)>("DeleteCriticalSection")(section);
}

}  // namespace

extern "C" {

void* __wrap_malloc(size_t bytes) {
  if (!comes_from_reserve(bytes)) return noted(__real_malloc(bytes));
  if (source != Source::kRefusedOnce) return noted(from_reserve(bytes));
  source = Source::kReserve;
  return nullptr;
}

void* __wrap_calloc(size_t count, size_t bytes) {
  return noted(comes_from_reserve(count * bytes) ? from_reserve(count * bytes) : __real_calloc(count, bytes));
}

void* __wrap_realloc(void* block, size_t bytes) {
  if (block != nullptr && !is_reserved(block)) return __real_realloc(block, bytes);
  void* const moved = __wrap_malloc(bytes);
  if (block != nullptr && moved != nullptr) std::memcpy(moved, block, std::min(bytes, reserved_size(block)));
  return moved;
}

void __wrap_free(void* block) {
  if (!is_reserved(block)) __real_free(block);
}

}  // extern "C"

// Calls of these functions in this DLL go through these pointers instead of the import library's, whose names on 32-bit Windows have
// the size of the arguments.
#ifdef __i386__
#define VOREL_IMPORT(name, bytes) __asm__("__imp__" name "@" bytes)
#else
#define VOREL_IMPORT(name, bytes) __asm__("__imp_" name)
#endif
extern "C" {
extern decltype(&begin_section) const import_of_begin_section VOREL_IMPORT("InitializeCriticalSection", "4") = begin_section;
extern decltype(&end_section) const import_of_end_section VOREL_IMPORT("DeleteCriticalSection", "4") = end_section;
extern decltype(&take_index) const import_of_tls_alloc VOREL_IMPORT("TlsAlloc", "0") = take_index;
extern decltype(&free_index) const import_of_tls_free VOREL_IMPORT("TlsFree", "4") = free_index;
}

// Destructors of static objects run within the runtime's entry point, so nothing of the DLL runs after it. The end of a
// process frees everything, and its other threads may have been stopped anywhere. The system also sends the detach notice
// after a refused attach. The runtime sets the value that guards stacks, so this function's own stack cannot be guarded by it.
extern "C" __attribute__((no_stack_protector)) BOOL WINAPI enter_dll(HINSTANCE module, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_ATTACH) attached = reserve_index();
  if (!attached) return FALSE;
  if (reason == DLL_PROCESS_ATTACH) source = Source::kReserveIfSmall;
  const BOOL accepted = DllMainCRTStartup(module, reason, process_ends);
  source = Source::kSystem;
  if (reason == DLL_PROCESS_ATTACH && accepted) {
    const bool has_index = !kExceptionTakesIndex || reserved != TLS_OUT_OF_INDEXES || reserve_index();
    if (was_short || !has_index) return FALSE;  // the system's detach notice follows
    set_up_exceptions();
  }
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
    __gnu_cxx::__freeres();
    while (section_count > 0) end_section(sections[section_count - 1]);
    while (index_count > 0) free_index(indexes[index_count - 1]);
  }
  return accepted;
}
