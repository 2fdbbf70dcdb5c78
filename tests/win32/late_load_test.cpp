// Threads that are older than the library: no notice tells it of them, so their first call makes their context.
#include <gtest/gtest.h>
#include <windows.h>

#include "win32/support/imports.h"

namespace {

int(WINAPI* img_error)() = nullptr;
int(WINAPI* set_img_error)(int) = nullptr;

HGLOBAL WINAPI no_memory(UINT, SIZE_T) { return nullptr; }

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
  HMODULE library = LoadLibraryA("VOREL32.DLL");
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
