// Where codec modules come from and what a missing one shows. The library runs in a folder of its own, with just the modules
// beside it that a case puts there, and this program in another, so that no module is found by chance.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vorel32.h>

#include "support/module.h"
#ifdef _WIN32
#include "win32/support/imports.h"
#include "win32/support/message_box.h"
#endif

namespace fs = std::filesystem;

namespace {

#ifdef _WIN32

// Notes what would be shown; real boxes take two seconds each on a screen without a window manager.
class MessageBoxes {
 public:
  MessageBoxes() { seen_.clear(); }
  const std::vector<std::string>& seen() const { return seen_; }

 private:
  static int WINAPI note(HWND owner, LPCSTR text, LPCSTR title, UINT kind) {
    EXPECT_TRUE(owner == nullptr && kind == MB_TASKMODAL);
    seen_.push_back(std::string(title) + ": " + text);
    return IDOK;
  }

  inline static std::vector<std::string> seen_;
  test::Replacement replacement_{"MessageBoxA", note};
};

bool is_in_memory(const std::string& module) { return GetModuleHandleA(module.c_str()) != nullptr; }
#else

// Messages go to the standard error stream here, one a line.
class MessageBoxes {
 public:
  MessageBoxes() { testing::internal::CaptureStderr(); }
  std::vector<std::string> seen() const {
    std::istringstream all(testing::internal::GetCapturedStderr());
    std::vector<std::string> lines;
    for (std::string line; std::getline(all, line);) lines.push_back(line);
    return lines;
  }
};

bool is_in_memory(const std::string& module) {
  std::ifstream map("/proc/self/maps");
  const std::string text((std::istreambuf_iterator<char>(map)), std::istreambuf_iterator<char>());
  return text.find(module) != std::string::npos;
}
#endif

const fs::path kBuilt = test::program_folder().parent_path();

// Where the system finds modules by their bare names: on Linux in the run path of this program.
#ifdef _WIN32
const fs::path kElsewhere = ".";
#else
const fs::path kElsewhere = test::program_folder() / "elsewhere";
#endif

std::string file_name(const std::string& module) { return module + test::kModuleEnding; }

class ModuleLookup : public testing::Test {
 protected:
  ModuleLookup() {
    fs::remove_all(folder_);
    fs::create_directories(folder_ / "current");
    fs::copy_file(kBuilt / VOREL_FILE_NAME, folder_ / VOREL_FILE_NAME);
    fs::current_path(folder_);
    library_.emplace(test::Module::Path{fs::path(".") / VOREL_FILE_NAME});
    fs::current_path("current");
  }
  ~ModuleLookup() override {
    library_.reset();
    fs::current_path(kBuilt);
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
    if (kElsewhere.is_absolute())
      for (const auto& entry : fs::directory_iterator(kElsewhere)) fs::remove(entry);
  }

  void put_module(const std::string& module, const fs::path& folder, const std::string& as) const {
    fs::remove(folder / file_name(as));
    fs::copy_file(kBuilt / file_name(module), folder / file_name(as));
  }
  static std::vector<std::string> taken_calls() {
    std::vector<std::string> lines;
    std::ifstream calls("calls.txt");
    for (std::string line; std::getline(calls, line);) lines.push_back(line);
    calls.close();
    fs::remove("calls.txt");
    return lines;
  }
  static const char* put_file(const char* name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
    return name;
  }
  // What a call shows; none of these calls succeeds or stores a code.
  template <class Function>
  std::vector<std::string> shown(const char* entry, auto... arguments) const {
    const MessageBoxes boxes;
    const auto set_code = library_->entry<decltype(&SetImgError)>("SetImgError");
    set_code(6);
    EXPECT_FALSE(library_->entry<Function>(entry)(arguments...));
    EXPECT_EQ(set_code(0), 6);
    return boxes.seen();
  }
  std::vector<std::string> shown_by_loading(const char* path) const {
    int status = 77;
    return shown<decltype(&LoadImageIntoDIB)>("LoadImageIntoDIB", path, 1, &status);
  }
  std::vector<std::string> shown_by_saving(const char* path, int format) const {
    return shown<decltype(&SaveDIBInImageFormat)>("SaveDIBInImageFormat", path, nullptr, format, 0, 0);
  }
  static std::string no_module(const std::string& module) {
    return "VOREL DLL: '" + file_name(module) + "' module has not found (0)";
  }
  static std::string no_entry(const std::string& module, const std::string& entry) {
    return "VOREL-DLL: '" + entry + "' function has not found in '" + file_name(module) + "' module";
  }

  const fs::path folder_ = kBuilt / "module_lookup";
  std::optional<test::Module> library_;
};

using Messages = std::vector<std::string>;
const std::string kJpegStart = "\xFF\xD8\xFF";

// What is loaded as page 3 with a status of 77, and which call that makes of which module.
const struct {
  const char *module, *file;
  std::string content;
  const char* call;
} kLoaded[] = {
    {"MERV32", "a.tif", "II*", "LoadTiffIntoDIB a.tif 3 null"},
    {"MERV32", "a.cal", "srcdocid:", "LoadCALSIntoDIB a.cal null"},
    {"ODAL32", "a.pcx", "\n", "LoadPCXIntoDIB a.pcx &77"},
    {"ODAL32", "a.dcx", "\xB1\x68\xDE\x3A", "LoadDCXIntoDIB a.dcx 3 &77"},
    {"SUNE32", "a.gif", "GIF89a", "LoadGIFIntoDIB a.gif 3 &77"},
    {"BRIX32", "a.tga", "", "LoadTGAIntoDIB a.tga null"},
    {"KALO32", "a.jpg", kJpegStart, "LoadJPEGIntoDIB a.jpg"},
    {"WERT32", "a.png", "\x89PNG", "LoadPNGIntoDIB a.png &77"},
};

// What is saved with option 4 and a value.
const struct {
  const char *module, *file;
  int format, value;
  std::vector<std::string> calls;
} kSaved[] = {
    {"MERV", "a.tif", IMG_FORMAT_TIFF, 6, {"SaveDIBInTiffFormat a.tif dib7 6 1"}},
    {"MERV", "a.cal", IMG_FORMAT_CALS, 6, {"SAVEDIBINCALSFORMAT a.cal dib7 0 0 0"}},
    {"ODAL", "a.pcx", IMG_FORMAT_PCX, 6, {"SaveDIBInPCXFormat a.pcx dib7 &6"}},
    {"ODAL", "there.dcx", IMG_FORMAT_DCX, 6, {"SaveDIBInDCXFormat there.dcx dib7 &6"}},
    {"ODAL", "new.dcx", IMG_FORMAT_DCX, 6, {"MakeDCXFile new.dcx &6", "SaveDIBInDCXFormat new.dcx dib7 &99"}},
    {"SUNE", "a.gif", IMG_FORMAT_GIF, 6, {"SaveDIBInGIFFormat a.gif dib7 4 &6"}},
    {"BRIX", "a.tga", IMG_FORMAT_TGA, 6, {"SaveDIBInTGAFormat a.tga dib7 1 1"}},
    {"BRIX", "a.tga", IMG_FORMAT_TGA, 0, {"SaveDIBInTGAFormat a.tga dib7 0 1"}},
    {"KALO", "a.jpg", IMG_FORMAT_JPEG, 6, {"SaveDIBInJPEGFile a.jpg dib7 75"}},
};

#ifndef _WIN32
TEST_F(ModuleLookup, ModulesMayHaveAFolderBelowTheLibrary) {
  const auto load = library_->entry<decltype(&LoadImageIntoDIB)>("LoadImageIntoDIB");
  fs::create_directory(folder_ / "vorel32");
  put_module("RECORDER", folder_ / "vorel32", "KALO32");
  put_file("a.jpg", kJpegStart);
  EXPECT_NE(load("a.jpg", 1, nullptr), nullptr);
  EXPECT_EQ(taken_calls(), Messages{"LoadJPEGIntoDIB a.jpg"});
  put_file("../KALO32.so", "is no module");
  EXPECT_EQ(load("a.jpg", 1, nullptr), nullptr) << "the library's folder comes first";
}
#endif

TEST_F(ModuleLookup, AMissingModuleIsNamed) {
  for (const auto& row : kLoaded)
    EXPECT_EQ(shown_by_loading(put_file(row.file, row.content)), Messages{no_module(row.module)}) << row.file;
  put_file("there.dcx", "");
  for (const auto& row : kSaved)
    EXPECT_EQ(shown_by_saving(row.file, row.format), Messages(row.calls.size(), no_module(row.module))) << row.file;
}

TEST_F(ModuleLookup, EveryFormatHasItsCallAndArguments) {
  const auto load = library_->entry<decltype(&LoadImageIntoDIB)>("LoadImageIntoDIB");
  const auto save = library_->entry<decltype(&SaveDIBInImageFormat)>("SaveDIBInImageFormat");
  const auto number = [](HGLOBAL dib) { return reinterpret_cast<intptr_t>(dib); };
  for (const auto& row : kLoaded) {
    put_module("RECORDER", folder_, row.module);
    int status = 77;
    EXPECT_EQ(number(load(put_file(row.file, row.content), 3, &status)), 1234) << row.file;
    EXPECT_EQ(taken_calls(), std::vector<std::string>{row.call});
    EXPECT_EQ(status, std::string(row.call).ends_with("&77") ? 99 : 77) << row.file << ": the caller's own variable";
    EXPECT_FALSE(is_in_memory(file_name(row.module))) << row.module;
  }
  put_file("there.dcx", "");
  for (const auto& row : kSaved) {
    put_module("RECORDER", folder_, row.module);
    EXPECT_EQ(save(row.file, reinterpret_cast<HGLOBAL>(intptr_t{7}), row.format, 4, row.value), 1234) << row.file;
    EXPECT_EQ(taken_calls(), row.calls);
    EXPECT_FALSE(is_in_memory(file_name(row.module))) << row.module;
  }
}

TEST_F(ModuleLookup, AnInstalledModuleComesBeforeAnyOther) {
  put_module("WERT32", kElsewhere, "KALO32");
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{no_entry("KALO32", "LoadJPEGIntoDIB")})
      << "the system looks elsewhere";
  EXPECT_FALSE(is_in_memory(file_name("KALO32")));
  put_module("KALO32", folder_, "KALO32");
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{});
  EXPECT_FALSE(is_in_memory(file_name("KALO32"))) << "it goes when the call ends";
}

TEST_F(ModuleLookup, ADamagedModuleIsNotReplaced) {
  put_module("KALO32", kElsewhere, "KALO32");
  std::ofstream(folder_ / file_name("KALO32")) << "damaged";
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{no_module("KALO32")});
}

#ifdef _WIN32
TEST_F(ModuleLookup, ThePersonSeesABox) {
  const test::MessageBoxes boxes;
  const auto load = library_->entry<decltype(&LoadImageIntoDIB)>("LoadImageIntoDIB");
  EXPECT_EQ(load(put_file("a.tga", ""), 1, nullptr), nullptr);
  put_module("WERT32", folder_, "BRIX32");
  EXPECT_EQ(load("a.tga", 1, nullptr), nullptr);
  EXPECT_EQ(boxes.seen(), (Messages{no_module("BRIX32"), no_entry("BRIX32", "LoadTGAIntoDIB")}));
}
#else
TEST_F(ModuleLookup, NothingIsLoadedFromTheCurrentFolder) {
  put_module("KALO32", ".", "KALO32");
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{no_module("KALO32")});
}
#endif

TEST_F(ModuleLookup, FormatsWithoutAModuleShowNothing) {
  for (int format : {-1, 0, 7, 8, 9, 10, 11, 14, 15, 16})
    EXPECT_EQ(shown_by_saving("out.bin", format), Messages{}) << format;
  EXPECT_FALSE(fs::exists("out.bin"));
#ifndef _WIN32  // where they are read, and tell what is wrong with them
  EXPECT_EQ(shown_by_loading(put_file("a.wmf", "\xD7\xCD\xC6\x9A")), Messages{});
  EXPECT_EQ(shown_by_loading(put_file("a.clp", "\x50\xC3")), Messages{});
#endif
}

}  // namespace
