#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <map>
#include <memory>
#include <windows.h>

#include "check/armed.h"
#include "check/system.h"
#include "support/guarded_pages.h"
#include "support/heap.h"
#include "win32/support/gdi.h"
#include "win32/support/imports.h"
#include "win32/support/window.h"

namespace {

using check::kFilePart, check::kMemoryPart;

struct Import {
  const char* name;
  uint16_t argument_bytes;  // removed from the stack by the function; 0 for the C runtime's
  uint32_t failure;         // the result of a failure
  check::SystemPart part;
  int stream_at = -1;  // index of a FILE argument, whose error flag a failure sets
};
constexpr uint32_t kMinusOne = 0xFFFFFFFF;

constexpr Import kImports[] = {
    {"GlobalAlloc", 8, 0, kMemoryPart},
    {"GlobalReAlloc", 12, 0, kMemoryPart},
    {"GlobalLock", 4, 0, kMemoryPart},
    {"malloc", 0, 0, kMemoryPart},
    {"calloc", 0, 0, kMemoryPart},
    {"realloc", 0, 0, kMemoryPart},
    {"_strdup", 0, 0, kMemoryPart},
    {"GetProcAddress", 8, 0, kMemoryPart},
    {"BeginPaint", 8, 0, kMemoryPart},
    {"CreateBitmap", 20, 0, kMemoryPart},
    {"CreateBitmapIndirect", 4, 0, kMemoryPart},
    {"CreateCompatibleBitmap", 12, 0, kMemoryPart},
    {"CreateCompatibleDC", 4, 0, kMemoryPart},
    {"CreateDCA", 16, 0, kMemoryPart},
    {"CreateDIBitmap", 24, 0, kMemoryPart},
    {"CreateEnhMetaFileA", 16, 0, kMemoryPart},
    {"CreateMetaFileA", 4, 0, kMemoryPart},
    {"CreatePalette", 4, 0, kMemoryPart},
    {"CreatePen", 12, 0, kMemoryPart},
    {"CreateRectRgn", 16, 0, kMemoryPart},
    {"CreateRectRgnIndirect", 4, 0, kMemoryPart},
    {"GetDC", 4, 0, kMemoryPart},
    {"GetBitmapBits", 12, 0, kMemoryPart},
    {"SetBitmapBits", 12, 0, kMemoryPart},
    {"GetDIBits", 28, 0, kMemoryPart},
    {"SetDIBits", 28, 0, kMemoryPart},
    {"GetObjectA", 12, 0, kMemoryPart},
    {"SelectObject", 8, 0, kMemoryPart},
    {"SelectPalette", 12, 0, kMemoryPart},
    {"SaveDC", 4, 0, kMemoryPart},
    {"SetMetaFileBitsEx", 8, 0, kMemoryPart},
    {"SetEnhMetaFileBits", 8, 0, kMemoryPart},
    {"GetMetaFileBitsEx", 12, 0, kMemoryPart},
    {"BitBlt", 36, 0, kMemoryPart},
    {"StretchBlt", 44, 0, kMemoryPart},
    {"StretchDIBits", 52, 0, kMemoryPart},
    {"PlayMetaFile", 8, 0, kMemoryPart},
    {"PlayEnhMetaFile", 12, 0, kMemoryPart},
    {"SetAbortProc", 8, kMinusOne, kMemoryPart},
    {"StartDocA", 8, kMinusOne, kMemoryPart},
    {"StartPage", 4, kMinusOne, kMemoryPart},
    {"OpenClipboard", 4, 0, kMemoryPart},
    {"GetClipboardData", 4, 0, kMemoryPart},
    {"CreateDialogParamA", 20, 0, kMemoryPart},
    {"DialogBoxParamA", 20, kMinusOne, kMemoryPart},
    {"LoadCursorA", 8, 0, kMemoryPart},
    {"OpenPrinterA", 12, 0, kMemoryPart},
    {"EnumPrintersA", 28, 0, kMemoryPart},
    {"DocumentPropertiesA", 24, kMinusOne, kMemoryPart},
    {"OpenFile", 12, kMinusOne, kFilePart},
    {"_lopen", 8, kMinusOne, kFilePart},
    {"_lcreat", 8, kMinusOne, kFilePart},
    {"_hread", 12, kMinusOne, kFilePart},
    {"_hwrite", 12, kMinusOne, kFilePart},
    {"GetFileAttributesA", 4, kMinusOne, kFilePart},
    {"GetFileSizeEx", 8, 0, kFilePart},
    {"SetFilePointerEx", 20, 0, kFilePart},
    {"fopen", 0, 0, kFilePart},
    {"fread", 0, 0, kFilePart, 3},
    {"fwrite", 0, 0, kFilePart, 3},
    {"fflush", 0, kMinusOne, kFilePart, 0},
    {"fsetpos", 0, kMinusOne, kFilePart},
    {"_stat64", 0, kMinusOne, kFilePart},
};

check::Armed armed;
DWORD armed_thread = 0;  // only its calls are counted

bool fails(check::SystemPart part, const char* function) {
  return armed_thread == GetCurrentThreadId() && armed.meets(part, function);
}

// Lookups in this module never fail.
uintptr_t kernel() {
  static const auto module = reinterpret_cast<uintptr_t>(GetModuleHandleA("KERNEL32.DLL"));
  return module;
}

// Called by a thunk: whether this call fails.
int __cdecl decide(uint32_t index, const uintptr_t* arguments) {
  const Import& import = kImports[index];
  const bool asks_system = std::strcmp(import.name, "GetProcAddress") == 0 && arguments[0] == kernel();
  if (asks_system) return 0;
  // operator new calls malloc, and throws inside the DLL on failure.
  const bool is_for_new = (armed.parts & check::kNewPart) != 0 && std::strcmp(import.name, "malloc") == 0;
  if (!fails(is_for_new ? check::kNewPart : import.part, import.name)) return 0;
  constexpr int kErrorFlag = 0x20;  // of the C runtime
  if (import.stream_at >= 0)
    if (auto* stream = reinterpret_cast<FILE*>(arguments[import.stream_at])) stream->_flag |= kErrorFlag;
  errno = ENOMEM;
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return 1;
}

// Code that asks whether a call fails and then either returns its failure or jumps to the function.
class Thunks {
 public:
  Thunks() : next_(static_cast<uint8_t*>(VirtualAlloc(nullptr, kRoom, MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE))) {}

  void* of(uint32_t index, void* function) {
    void*& thunk = made_[index];
    if (thunk != nullptr) return thunk;
    functions_[index] = function;
    thunk = next_;
#ifdef _WIN64
    bytes({0x48, 0x89, 0x4C, 0x24, 0x08, 0x48, 0x89, 0x54, 0x24, 0x10});  // mov [rsp + 8], rcx; mov [rsp + 16], rdx
    bytes({0x4C, 0x89, 0x44, 0x24, 0x18, 0x4C, 0x89, 0x4C, 0x24, 0x20});  // mov [rsp + 24], r8; mov [rsp + 32], r9
    bytes({0x48, 0x83, 0xEC, 0x28, 0xB9}), number(index);                 // sub rsp, 40; mov ecx, index
    bytes({0x48, 0x8D, 0x54, 0x24, 0x30});                                // lea rdx, [rsp + 48]
    bytes({0x48, 0xB8}), number(reinterpret_cast<uintptr_t>(decide));     // mov rax, decide
    bytes({0xFF, 0xD0, 0x48, 0x83, 0xC4, 0x28});                          // call rax; add rsp, 40
    bytes({0x48, 0x8B, 0x4C, 0x24, 0x08, 0x48, 0x8B, 0x54, 0x24, 0x10});  // mov rcx, [rsp + 8]; mov rdx, [rsp + 16]
    bytes({0x4C, 0x8B, 0x44, 0x24, 0x18, 0x4C, 0x8B, 0x4C, 0x24, 0x20});  // mov r8, [rsp + 24]; mov r9, [rsp + 32]
    bytes({0x85, 0xC0, 0x75, 0x0C});                                      // test eax, eax; jne + 12
    bytes({0x48, 0xB8}), number(reinterpret_cast<uintptr_t>(function));   // mov rax, function
    bytes({0xFF, 0xE0});                                                  // jmp rax
    bytes({0x48, 0xC7, 0xC0}), number(kImports[index].failure);           // mov rax, failure, its sign extended
    bytes({0xC3});                                                        // ret
#else
    bytes({0x8D, 0x44, 0x24, 0x04, 0x50});  // lea eax, [esp + 4]; push eax
    bytes({0x68}), number(index);           // push index
    bytes({0xE8}), number(static_cast<uint32_t>(reinterpret_cast<uint8_t*>(decide) - (next_ + 4)));  // call decide
    bytes({0x83, 0xC4, 0x08, 0x85, 0xC0, 0x75, 0x06});                            // add esp, 8; test eax, eax; jne + 6
    bytes({0xFF, 0x25}), number(reinterpret_cast<uint32_t>(&functions_[index]));  // jmp [function]
    bytes({0xB8}), number(kImports[index].failure);                               // mov eax, failure
    const uint16_t taken = kImports[index].argument_bytes;
    bytes({0xC2, static_cast<uint8_t>(taken), static_cast<uint8_t>(taken >> 8)});  // ret taken
#endif
    return thunk;
  }

 private:
  static constexpr size_t kRoom = 65'536;

  void bytes(std::initializer_list<uint8_t> code) {
    for (const uint8_t byte : code) *next_++ = byte;
  }
  template <class Number>
  void number(Number value) {
    std::memcpy(next_, &value, sizeof value);
    next_ += sizeof value;
  }

  uint8_t* next_;
  void* made_[std::size(kImports)] = {};
  void* functions_[std::size(kImports)] = {};
};

void patch(HMODULE module);

template <class Load>
HMODULE loaded(Load load) {
  if (fails(kMemoryPart, "LoadLibrary")) return nullptr;
  const unsigned parts = std::exchange(armed.parts, 0u);
  HMODULE module = load();
  if (module != nullptr && GetProcAddress(module, "ImgError") == nullptr) patch(module);
  armed.parts = parts;
  return module;
}
HMODULE WINAPI load_named(LPCSTR name) {
  return loaded([&] { return LoadLibraryA(name); });
}
HMODULE WINAPI load_at(LPCWSTR path, HANDLE file, DWORD flags) {
  return loaded([&] { return LoadLibraryExW(path, file, flags); });
}
// Nobody is there to press the button.
int WINAPI no_box(HWND, LPCSTR text, LPCSTR title, UINT) {
  std::fprintf(stderr, "%s: %s\n", title, text);
  return IDOK;
}

// Ending the process counts as a crash.
void __cdecl ends_process() { std::raise(SIGABRT); }

// ---- global memory that ends at a page without access: handles are addresses

struct GuardedBlock {
  size_t bytes;
  std::unique_ptr<test::GuardedPages> pages;
};
size_t most_bytes = 0;  // zero while blocks are not guarded
std::map<void*, GuardedBlock> guarded_blocks;

HGLOBAL WINAPI guarded_alloc(UINT, SIZE_T bytes) {
  if (bytes > most_bytes) return nullptr;
  const size_t rounded = (bytes + 15) / 16 * 16;
  auto pages = std::make_unique<test::GuardedPages>(rounded);
  if (!*pages) return nullptr;
  uint8_t* const block = pages->end() - rounded;
  guarded_blocks[block] = {bytes, std::move(pages)};
  return block;
}
LPVOID WINAPI guarded_lock(HGLOBAL block) { return guarded_blocks.contains(block) ? block : nullptr; }
BOOL WINAPI guarded_unlock(HGLOBAL) { return FALSE; }
SIZE_T WINAPI guarded_size(HGLOBAL block) {
  const auto found = guarded_blocks.find(block);
  return found == guarded_blocks.end() ? 0 : found->second.bytes;
}
HGLOBAL WINAPI guarded_free(HGLOBAL block) { return guarded_blocks.erase(block) == 0 ? GlobalFree(block) : nullptr; }

void* guarded_replacement_of(const char* name) {
  if (most_bytes == 0) return nullptr;
  if (std::strcmp(name, "GlobalAlloc") == 0) return reinterpret_cast<void*>(guarded_alloc);
  if (std::strcmp(name, "GlobalLock") == 0) return reinterpret_cast<void*>(guarded_lock);
  if (std::strcmp(name, "GlobalUnlock") == 0) return reinterpret_cast<void*>(guarded_unlock);
  if (std::strcmp(name, "GlobalSize") == 0) return reinterpret_cast<void*>(guarded_size);
  if (std::strcmp(name, "GlobalFree") == 0) return reinterpret_cast<void*>(guarded_free);
  return nullptr;
}

void* replacement_of(const char* name, void* function) {
  static Thunks thunks;
  if (void* const guarded = guarded_replacement_of(name)) return guarded;
  if (std::strcmp(name, "LoadLibraryA") == 0) return reinterpret_cast<void*>(load_named);
  if (std::strcmp(name, "LoadLibraryExW") == 0) return reinterpret_cast<void*>(load_at);
  if (std::strcmp(name, "MessageBoxA") == 0) return reinterpret_cast<void*>(no_box);
  for (const char* end : {"abort", "exit", "_exit", "_amsg_exit"})
    if (std::strcmp(name, end) == 0) return reinterpret_cast<void*>(ends_process);
  for (uint32_t i = 0; i < std::size(kImports); ++i)
    if (std::strcmp(name, kImports[i].name) == 0) return thunks.of(i, function);
  return function;
}

// Replaces the imports of a module.
void patch(HMODULE module) {
  test::for_each_import(module,
                        [](const char* name, void** slot) { test::exchange_import(slot, replacement_of(name, *slot)); });
}

}  // namespace

namespace check {

void set_up_system() { patch(GetModuleHandleA(VOREL_FILE_NAME)); }
void use_device_contexts() {
  HDC contexts[64];
  for (HDC& context : contexts) context = GetDC(nullptr);
  for (HDC context : contexts) ReleaseDC(nullptr, context);
}
void keep_jpeg_loaded() {}

std::string FailingSystem::failed() const { return armed.failed == nullptr ? "" : armed.failed; }
void FailingSystem::begin() {
  armed = {.parts = parts_, .at = at_, .lasts = lasts_, .action = action_ ? &action_ : nullptr};
  armed_thread = GetCurrentThreadId();
}
void FailingSystem::end() { armed.parts = 0; }

void guard_blocks(size_t most) {
  most_bytes = most;
  patch(GetModuleHandleA(VOREL_FILE_NAME));
}
HGLOBAL new_guarded(const void* bytes, size_t size) {
  HGLOBAL block = guarded_alloc(GHND, size);
  std::memcpy(block, bytes, size);
  return block;
}
void* lock_guarded(HGLOBAL block) { return block; }
void unlock_guarded(HGLOBAL) {}
void free_guarded(HGLOBAL block) { guarded_free(block); }

Holdings Holdings::now() {
  DWORD handles = 0;
  GetProcessHandleCount(GetCurrentProcess(), &handles);
#ifdef VOREL_COVERAGE
  constexpr long blocks = 0;  // a module's counters take memory when it is unloaded
#else
  const auto blocks = static_cast<long>(test::heap_blocks());
#endif
  return {blocks, static_cast<long>(test::gdi_objects()), test::windows_of_thread(), static_cast<long>(handles)};
}

long resident_bytes() {
  long bytes = 0;
  test::for_each_block([&](size_t block) { bytes += static_cast<long>(block); });
  return bytes;
}

}  // namespace check
