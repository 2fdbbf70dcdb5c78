// The library loaded late: by a process without free thread-local-storage indexes, and among threads that are older than it.
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include <vorel32.h>

#include "win32/support/imports.h"

namespace {

int(WINAPI* img_error)() = nullptr;
int(WINAPI* set_img_error)(int) = nullptr;

HGLOBAL WINAPI no_memory(UINT, SIZE_T) { return nullptr; }

// All thread-local-storage indexes of the process but a few.
class TakenIndexes {
 public:
  explicit TakenIndexes(size_t left) {
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) taken_.push_back(index);
    for (; left > 0; --left) give_back();
  }
  TakenIndexes(const TakenIndexes&) = delete;
  TakenIndexes& operator=(const TakenIndexes&) = delete;
  ~TakenIndexes() {
    while (!taken_.empty()) give_back();
  }

  size_t count() const { return taken_.size(); }

 private:
  void give_back() {
    TlsFree(taken_.back());
    taken_.pop_back();
  }

  std::vector<DWORD> taken_;
};

// Which modules load while so many indexes are free.
std::map<std::string, bool> loaded_with_indexes(size_t left) {
  std::map<std::string, bool> loaded{
      {VOREL_FILE_NAME, false}, {"KALO.DLL", false}, {"MERV32.DLL", false}, {"WERT32.DLL", false}};
  const TakenIndexes taken(left);
  for (auto& [name, is_loaded] : loaded) {
    const HMODULE module = LoadLibraryA(name.c_str());
    is_loaded = module != nullptr && FreeLibrary(module);
  }
  return loaded;
}

// The runtime inside each DLL needs an index, the library one more.
TEST(ThreadLocalStorage, WithoutAFreeIndexLoadingFailsAndTheProcessGoesOn) {
  using Loaded = std::map<std::string, bool>;
  EXPECT_EQ(loaded_with_indexes(0),
            (Loaded{{VOREL_FILE_NAME, false}, {"KALO.DLL", false}, {"MERV32.DLL", false}, {"WERT32.DLL", false}}));
  const size_t free = TakenIndexes(0).count();
  EXPECT_EQ(loaded_with_indexes(1),
            (Loaded{{VOREL_FILE_NAME, false}, {"KALO.DLL", true}, {"MERV32.DLL", true}, {"WERT32.DLL", true}}));
  EXPECT_EQ(loaded_with_indexes(2),
            (Loaded{{VOREL_FILE_NAME, true}, {"KALO.DLL", true}, {"MERV32.DLL", true}, {"WERT32.DLL", true}}));
  EXPECT_EQ(TakenIndexes(0).count(), free) << "refused DLLs keep no index";
}

// A thread that waits until it is let go, then asks for its code and returns 100 more than that.
class OlderThread {
 public:
  OlderThread() : thread_(CreateThread(nullptr, 0, run, this, 0, nullptr)) { WaitForSingleObject(started_, INFINITE); }
  OlderThread(const OlderThread&) = delete;
  OlderThread& operator=(const OlderThread&) = delete;
  ~OlderThread() {
    CloseHandle(thread_);
    CloseHandle(go_);
    CloseHandle(started_);
  }

  DWORD exit_code() {
    SetEvent(go_);
    WaitForSingleObject(thread_, 10'000);
    DWORD code = 0;
    GetExitCodeThread(thread_, &code);
    return code;
  }

 private:
  static DWORD WINAPI run(void* thread) {
    SetEvent(static_cast<OlderThread*>(thread)->started_);
    WaitForSingleObject(static_cast<OlderThread*>(thread)->go_, INFINITE);
    return static_cast<DWORD>(img_error() + 100);
  }

  HANDLE started_ = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  HANDLE go_ = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  HANDLE thread_;
};

TEST(OlderThreads, GetTheirContextOnFirstUseOrEnd) {
  OlderThread lucky, unlucky;
  HMODULE library = LoadLibraryA(VOREL_FILE_NAME);
  ASSERT_NE(library, nullptr);
  img_error = reinterpret_cast<int(WINAPI*)()>(reinterpret_cast<void*>(GetProcAddress(library, "ImgError")));
  set_img_error = reinterpret_cast<int(WINAPI*)(int)>(reinterpret_cast<void*>(GetProcAddress(library, "SetImgError")));
  ASSERT_TRUE(img_error != nullptr && set_img_error != nullptr);
  EXPECT_EQ(GetProcAddress(library, MAKEINTRESOURCEA(1)), reinterpret_cast<FARPROC>(reinterpret_cast<void*>(img_error)));

  set_img_error(9);
  EXPECT_EQ(lucky.exit_code(), 100u) << "a code of its own, 0";
  {
    const test::Replacement replaced("GlobalAlloc", no_memory);
    EXPECT_EQ(unlucky.exit_code(), 0u) << "without a context the thread is ended in the call";
  }
  EXPECT_EQ(img_error(), 9);
  EXPECT_TRUE(FreeLibrary(library));
}

}  // namespace
