// A codec module that begins a PNG file and reports success.
#include <cstdio>

#include <vorel32.h>

#ifdef _WIN32
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif

EXPORTED BOOL VORELCALL SaveDIBInPNGFormat(LPCSTR path, HGLOBAL, int*) {
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) return FALSE;
  std::fputs("\x89PNG\r\n\x1A\n", file);
  std::fclose(file);
  return TRUE;
}
