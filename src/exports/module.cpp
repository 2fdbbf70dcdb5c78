// The module's entry point.
#include "frame/thread_context.h"
#include "platform/win32.h"
#include "platform/windows/instance.h"

namespace {

// Systems of the Windows 9x family set the top bit of their version and repeat process notices.
bool repeats_process_notices() { return (GetVersion() & 0x80000000u) != 0; }

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  const auto notice = static_cast<vorel::ModuleNotice>(reason);
  const bool accepted = vorel::follow_module_notice(notice, repeats_process_notices());
  if (accepted && notice == vorel::ModuleNotice::kProcessAttach) vorel::set_module_instance(module);
  return accepted ? TRUE : FALSE;
}
