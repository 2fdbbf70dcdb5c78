/* A module of a codec's name that tells that it was loaded: its name is added to the file that PLANTED names. */
#include <stdio.h>
#include <stdlib.h>

static void tell(void) {
  const char* path = getenv("PLANTED");
  FILE* file = path == NULL ? NULL : fopen(path, "a");
  if (file == NULL) return;
  fputs("loaded\n", file);
  fclose(file);
}

#ifdef _WIN32
#include <windows.h>
BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
  (void)module, (void)reserved;
  if (reason == DLL_PROCESS_ATTACH) tell();
  return TRUE;
}
#else
__attribute__((constructor)) static void begin(void) { tell(); }
#endif
