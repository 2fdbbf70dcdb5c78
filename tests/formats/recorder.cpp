// Stands in for every codec module: adds each call to calls.txt in the current folder, a line with the entry point and its
// arguments. A status variable is noted by its value and set to 99; pictures are numbers here.
#include <cstdint>
#include <cstdio>

#include <vorel32.h>

#ifdef _WIN32
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif

namespace {

void note(std::FILE* calls, LPCSTR path) { std::fprintf(calls, " %s", path); }
void note(std::FILE* calls, int number) { std::fprintf(calls, " %d", number); }
void note(std::FILE* calls, HGLOBAL dib) {
  std::fprintf(calls, " dib%d", static_cast<int>(reinterpret_cast<intptr_t>(dib)));
}
void note(std::FILE* calls, int* status) {
  if (status == nullptr) {
    std::fputs(" null", calls);
  } else {
    std::fprintf(calls, " &%d", *status);
    *status = 99;
  }
}

template <class... Arguments>
intptr_t record(const char* entry, Arguments... arguments) {
  std::FILE* calls = std::fopen("calls.txt", "a");
  std::fputs(entry, calls);
  (note(calls, arguments), ...);
  std::fputc('\n', calls);
  std::fclose(calls);
  return 1234;
}

}  // namespace

#define LOADER(name, parameters, ...) \
  EXPORTED HGLOBAL VORELCALL name parameters { return reinterpret_cast<HGLOBAL>(record(#name, __VA_ARGS__)); }
#define SAVER(name, parameters, ...) \
  EXPORTED BOOL VORELCALL name parameters { return static_cast<BOOL>(record(#name, __VA_ARGS__)); }

LOADER(LoadTiffIntoDIB, (LPCSTR path, int page, int* status), path, page, status)
LOADER(LoadCALSIntoDIB, (LPCSTR path, int* status), path, status)
LOADER(LoadPCXIntoDIB, (LPCSTR path, int* status), path, status)
LOADER(LoadDCXIntoDIB, (LPCSTR path, int page, int* status), path, page, status)
LOADER(LoadGIFIntoDIB, (LPCSTR path, int page, int* status), path, page, status)
LOADER(LoadTGAIntoDIB, (LPCSTR path, int* status), path, status)
LOADER(LoadJPEGIntoDIB, (LPCSTR path), path)
LOADER(LoadPNGIntoDIB, (LPCSTR path, int* status), path, status)

SAVER(SaveDIBInTiffFormat, (LPCSTR path, HGLOBAL dib, int compression, int page), path, dib, compression, page)
SAVER(SAVEDIBINCALSFORMAT, (LPCSTR path, HGLOBAL dib, int a, int b, int c), path, dib, a, b, c)
SAVER(SaveDIBInPCXFormat, (LPCSTR path, HGLOBAL dib, int* status), path, dib, status)
SAVER(MakeDCXFile, (LPCSTR path, int* status), path, status)
SAVER(SaveDIBInDCXFormat, (LPCSTR path, HGLOBAL dib, int* status), path, dib, status)
SAVER(SaveDIBInGIFFormat, (LPCSTR path, HGLOBAL dib, int interlaced, int* status), path, dib, interlaced, status)
SAVER(SaveDIBInTGAFormat, (LPCSTR path, HGLOBAL dib, int run_length, int footer), path, dib, run_length, footer)
SAVER(SaveDIBInJPEGFile, (LPCSTR path, HGLOBAL dib, int quality), path, dib, quality)
