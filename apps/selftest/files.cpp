// What needs no window.
#include <filesystem>
#include <map>

#include "random_exports.h"
#include "selftest/checks.h"

namespace vorel::selftest {
namespace {

struct NamedOrdinal {
  WORD ordinal;
  const char* name;
};
constexpr NamedOrdinal kNames[] = {
#include "vorel32-names.inc"
};

// Digests of the lines of kCalls random calls, by export. hash_results --digest prints them.
constexpr long kCalls = 3000;
const std::map<std::string_view, uint64_t> kDigests = {
#include "selftest/digests.inc"
};

std::string file_version(const std::filesystem::path& file) {
  DWORD ignored = 0;
  std::string block(GetFileVersionInfoSizeW(file.c_str(), &ignored), '\0');
  VS_FIXEDFILEINFO* info = nullptr;
  UINT size = 0;
  if (!GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
      !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &size)) {
    return "none";
  }
  return fmt::format("{}.{}.{}.{}", HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                     HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS));
}

std::string system_version() {
  const HMODULE system = GetModuleHandleA("ntdll.dll");
  RTL_OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof version;
  const auto get =
      reinterpret_cast<LONG(WINAPI*)(RTL_OSVERSIONINFOW*)>(reinterpret_cast<void*>(GetProcAddress(system, "RtlGetVersion")));
  if (get != nullptr) get(&version);
  const auto wine =
      reinterpret_cast<const char*(__cdecl*)()>(reinterpret_cast<void*>(GetProcAddress(system, "wine_get_version")));
  return fmt::format("{}.{}.{}{}{}", version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber,
                     wine == nullptr ? "" : ", Wine ", wine == nullptr ? "" : wine());
}

// A path as the library takes it.
std::string in_code_page(const std::filesystem::path& path) {
  const auto convert = [&](std::string& text) {
    return WideCharToMultiByte(CP_ACP, 0, path.c_str(), -1, text.data(), static_cast<int>(text.size()), nullptr, nullptr);
  };
  std::string text;
  text.resize(static_cast<size_t>(convert(text)));
  convert(text);
  return text;
}

struct Format {
  const char *name, *file;
  int format;
  bool is_exact;
};
constexpr Format kFormats[] = {
    {"bitmap", "a.bmp", IMG_FORMAT_BITMAP, true}, {"TIFF", "a.tif", IMG_FORMAT_TIFF, true},
    {"PCX", "a.pcx", IMG_FORMAT_PCX, true},       {"DCX", "a.dcx", IMG_FORMAT_DCX, true},
    {"TGA", "a.tga", IMG_FORMAT_TGA, true},       {"JPEG", "a.jpg", IMG_FORMAT_JPEG, false},
};

bool have_equal_pixels(HGLOBAL a, HGLOBAL b, int width, int height) {
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (pixel_of(a, x, y) != pixel_of(b, x, y)) return false;
  return true;
}

}  // namespace

void describe_machine(Report& report, const Library& library) {
  report.section("Machine");
  report.fact("Windows", fmt::format("{}, {}-bit program", system_version(), 8 * sizeof(void*)));
  report.fact("code page", std::to_string(GetACP()));
  HDC screen = GetDC(nullptr);
  report.fact("screen",
              fmt::format("{} x {}, {} bits per pixel, {} dots per inch, palette of {}", GetDeviceCaps(screen, HORZRES),
                          GetDeviceCaps(screen, VERTRES), GetDeviceCaps(screen, BITSPIXEL),
                          GetDeviceCaps(screen, LOGPIXELSX), GetDeviceCaps(screen, SIZEPALETTE)));
  ReleaseDC(nullptr, screen);
  char version[13] = "";
  library.module.entry<decltype(&GetImageVersion)>("GetImageVersion")(version, sizeof version);
  report.fact("library", fmt::format("{} ({}), file version {}", version, VOREL_FILE_NAME,
                                     file_version(test::program_folder() / VOREL_FILE_NAME)));
  for (const char* name : {"KALO32", "MERV32", "SUNE32", "WERT32"}) {
    try {
      const test::Module module(name);
      report.fact(name, module.entry<ImgNameOfLibraries>("NameOfLibraries")());
    } catch (const std::exception&) {
      report.check(fmt::format("module {}", name), false, "does not load");
    }
  }
}

void check_exports(Report& report, const Library& library) {
  report.section("Exports");
  const HMODULE module = GetModuleHandleA(VOREL_FILE_NAME);
  std::string missing;
  for (const auto& [ordinal, name] : kNames) {
    const FARPROC by_name = GetProcAddress(module, name), by_ordinal = GetProcAddress(module, MAKEINTRESOURCEA(ordinal));
    if (by_name == nullptr || by_name != by_ordinal) missing += fmt::format(" {}", name);
  }
  report.check(fmt::format("{} functions by name and by ordinal", std::size(kNames)), missing.empty(), missing);
  report.check("error codes are the thread's own",
               library.SetImgError(7) == 0 && library.ImgError() == 7 && library.SetImgError(0) == 7);
}

void check_arithmetic(Report& report, const Library& library) {
  report.section("Arithmetic");
  const auto digests = random_exports::digests(library, kCalls);
  for (const auto& [name, digest] : kDigests) {
    const auto found = digests.find(name);
    report.check(std::string(name), found != digests.end() && found->second == digest,
                 "other results than other machines give");
  }
}

void check_formats(Report& report, const Library& library) {
  report.section("Files");
  constexpr int kWidth = 61, kHeight = 43;
  const auto save = library.module.entry<decltype(&SaveDIBInImageFormat)>("SaveDIBInImageFormat");
  const auto load = library.module.entry<decltype(&LoadImageIntoDIB)>("LoadImageIntoDIB");
  const auto folder = std::filesystem::temp_directory_path() / fmt::format("vorel-selftest-{}", GetCurrentProcessId());
  std::filesystem::create_directories(folder);
  HGLOBAL picture = test_picture(kWidth, kHeight);
  for (const Format& format : kFormats) {
    const std::string path = in_code_page(folder / format.file);
    const bool is_saved = save(path.c_str(), picture, format.format, 0, 0) != FALSE;
    HGLOBAL loaded = is_saved ? load(path.c_str(), 1, nullptr) : nullptr;
    const bool holds = loaded != nullptr && (!format.is_exact || have_equal_pixels(picture, loaded, kWidth, kHeight));
    report.check(format.name, holds,
                 !is_saved           ? "cannot be saved"
                 : loaded == nullptr ? "cannot be loaded"
                                     : "another picture");
    GlobalFree(loaded);
  }
  GlobalFree(picture);
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

}  // namespace vorel::selftest
