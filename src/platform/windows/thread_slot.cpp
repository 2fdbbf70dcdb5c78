#include "platform/thread_slot.h"

namespace vorel::thread_slot {
namespace {

DWORD slot = TLS_OUT_OF_INDEXES;

}  // namespace

bool create() {
  slot = TlsAlloc();
  return slot != TLS_OUT_OF_INDEXES;
}

void destroy() {
  TlsFree(slot);
  slot = TLS_OUT_OF_INDEXES;
}

HGLOBAL get() { return TlsGetValue(slot); }

bool set(HGLOBAL block, void (*)(HGLOBAL)) { return TlsSetValue(slot, block) != FALSE; }

void end_thread() { ExitThread(0); }

}  // namespace vorel::thread_slot
