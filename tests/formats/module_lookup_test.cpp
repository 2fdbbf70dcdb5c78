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
constexpr const char* kLibrary = "VOREL32.DLL";

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
constexpr const char* kLibrary = "libvorel32.so.5";

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

std::string file_name(const std::string& module) { return module + test::kModuleEnding; }

class ModuleLookup : public testing::Test {
 protected:
  ModuleLookup() {
    fs::remove_all(folder_);
    fs::create_directories(folder_ / "current");
    fs::copy_file(kBuilt / kLibrary, folder_ / kLibrary);
    fs::current_path(folder_ / "current");
    library_.emplace(test::Module::Path{folder_ / kLibrary});
  }
  ~ModuleLookup() override {
    library_.reset();
    fs::current_path(kBuilt);
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  void put_module(const std::string& module, const fs::path& folder, const std::string& as) const {
    fs::copy_file(kBuilt / file_name(module), folder / file_name(as));
  }
  static const char* put_file(const char* name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
    return name;
  }
  // What a call shows; none of these calls succeeds or stores a code.
  std::vector<std::string> shown_by_loading(const char* path) const {
    const MessageBoxes boxes;
    int status = 77;
    const auto set_code = library_->entry<decltype(&SetImgError)>("SetImgError");
    set_code(6);
    EXPECT_EQ(library_->entry<decltype(&LoadImageIntoDIB)>("LoadImageIntoDIB")(path, 1, &status), nullptr);
    EXPECT_EQ(set_code(0), 6);
    return boxes.seen();
  }
  std::vector<std::string> shown_by_saving(const char* path, int format) const {
    const MessageBoxes boxes;
    const auto set_code = library_->entry<decltype(&SetImgError)>("SetImgError");
    set_code(6);
    EXPECT_EQ(library_->entry<decltype(&SaveDIBInImageFormat)>("SaveDIBInImageFormat")(path, nullptr, format, 0, 0), 0);
    EXPECT_EQ(set_code(0), 6);
    return boxes.seen();
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

TEST_F(ModuleLookup, AMissingModuleIsNamed) {
  EXPECT_EQ(shown_by_loading(put_file("a.tif", "II*")), Messages{no_module("MERV32")});
  EXPECT_EQ(shown_by_loading(put_file("a.pcx", "\n")), Messages{no_module("ODAL32")});
  EXPECT_EQ(shown_by_loading(put_file("a.dcx", "\xB1\x68\xDE\x3A")), Messages{no_module("ODAL32")});
  EXPECT_EQ(shown_by_loading(put_file("a.gif", "GIF89a")), Messages{no_module("SUNE32")});
  EXPECT_EQ(shown_by_loading(put_file("a.tga", "")), Messages{no_module("BRIX32")});
  EXPECT_EQ(shown_by_loading(put_file("a.cal", "srcdocid:")), Messages{no_module("MERV32")});
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{no_module("KALO32")});
  EXPECT_EQ(shown_by_loading(put_file("a.png", "\x89PNG")), Messages{no_module("WERT32")});

  EXPECT_EQ(shown_by_saving("a.tif", IMG_FORMAT_TIFF), Messages{no_module("MERV")});
  EXPECT_EQ(shown_by_saving("a.cal", IMG_FORMAT_CALS), Messages{no_module("MERV")});
  EXPECT_EQ(shown_by_saving("a.pcx", IMG_FORMAT_PCX), Messages{no_module("ODAL")});
  EXPECT_EQ(shown_by_saving("a.gif", IMG_FORMAT_GIF), Messages{no_module("SUNE")});
  EXPECT_EQ(shown_by_saving("a.tga", IMG_FORMAT_TGA), Messages{no_module("BRIX")});
  EXPECT_EQ(shown_by_saving("a.jpg", IMG_FORMAT_JPEG), Messages{no_module("KALO")});
  EXPECT_EQ(shown_by_saving("a.dcx", IMG_FORMAT_DCX), Messages{no_module("ODAL")}) << "the file is there, none is made";
  EXPECT_EQ(shown_by_saving("new.dcx", IMG_FORMAT_DCX), (Messages{no_module("ODAL"), no_module("ODAL")}));
}

TEST_F(ModuleLookup, AModuleWithoutTheEntryPointIsNamed) {
  put_module("WERT32", folder_, "KALO32");
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{no_entry("KALO32", "LoadJPEGIntoDIB")});
  EXPECT_FALSE(is_in_memory(file_name("KALO32")));
}

TEST_F(ModuleLookup, AnInstalledModuleComesBeforeAnyOther) {
  put_module("KALO32", folder_, "KALO32");
  put_module("WERT32", ".", "KALO32");
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{});
  EXPECT_FALSE(is_in_memory(file_name("KALO32"))) << "it goes when the call ends";
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

TEST_F(ModuleLookup, TheSystemLooksElsewhere) {
  put_module("WERT32", ".", "KALO32");
  EXPECT_EQ(shown_by_loading(put_file("a.jpg", kJpegStart)), Messages{no_entry("KALO32", "LoadJPEGIntoDIB")});
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
  EXPECT_EQ(shown_by_loading(put_file("a.wmf", "\xD7\xCD\xC6\x9A")), Messages{});
  EXPECT_EQ(shown_by_loading(put_file("a.clp", "\x50\xC3")), Messages{});
}

}  // namespace
