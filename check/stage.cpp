#include "check/stage.h"

#include <filesystem>
#include <stdexcept>

#ifdef _WIN32
#include "check/device.h"
#endif
#include "support/module.h"

using namespace test;

namespace check {
namespace {

const struct {
  const char* ending;
  int format, depth;
} kSaved[] = {
    {".bmp", IMG_FORMAT_BITMAP, 8},   {".tif", IMG_FORMAT_TIFF, 8},
    {".pcx", IMG_FORMAT_PCX, 8},      {".dcx", IMG_FORMAT_DCX, 8},
    {".gif", IMG_FORMAT_GIF, 8},      {".tga", IMG_FORMAT_TGA, 24},
    {".cal", IMG_FORMAT_CALS, 1},     {".jpg", IMG_FORMAT_JPEG, 24},
#ifdef _WIN32
    {".wmf", IMG_FORMAT_METAFILE, 8}, {".emf", IMG_FORMAT_ENHANCED_METAFILE, 8},
#endif
};

void write_text(const std::string& path, const std::string& text) { write_file(path, {text.begin(), text.end()}); }

// A page set of two planes.
void write_page_set(const std::string& path) {
  const std::string plane = std::filesystem::path(path).replace_filename("plane.bmp").string();
  write_file(plane, file_of(noise(30, 20, 1)));
  write_text(path,
             "[ColorFax]\nTotalPages=1\nPlanes=2\nFiles=2\nBitsPixel=1\n[Page1]\nPlane0=" + plane + "\nPlane1=" + plane);
}

bool write_picture(const std::string& path) {
  const std::string ending = std::filesystem::path(path).extension().string();
  for (const auto& [its_ending, format, depth] : kSaved)
    if (ending == its_ending)
      return SaveDIBInImageFormat(path.c_str(), block_of(noise(30, 20, depth)).get(), format, 0, 0) != FALSE;
  if (ending == ".png")
    return Module("WERT").entry<ImgSavePicture>("SaveDIBInPNGFormat")(path.c_str(), block_of(noise(30, 20, 24)).get(),
                                                                      nullptr) != FALSE;
  if (ending == ".fax") return write_page_set(path), true;
  if (ending == ".txt") return write_text(path, "A line of text\r\nand another one\r\n"), true;
  if (ending == ".kernel")
    return write_file(path, Bytes{1, 0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 4,  0, 0, 0,
                                  2, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 16, 0, 0, 0}),
           true;
#ifdef _WIN32
  if (ending == ".clp") return SaveClipboardFormat(path.c_str(), counting_bitmap(20, 20, 1).get()) != FALSE;
#endif
  return false;
}

}  // namespace

Stage::Stage() { SetImgError(0); }
Stage::~Stage() = default;

HGLOBAL Stage::gray_dib() {
  return kept("gray", [] {
    Bytes dib = noise(30, 20, 8);
    for (size_t i = 0; i < 256; ++i) std::memset(&dib[40 + 4 * i], static_cast<int>(i), 3);
    return dib;
  });
}

HGLOBAL Stage::compressed_dib() {
  return kept("compressed", [] { return bytes_of(Block(CompressDIB(block_of(noise(30, 20, 8)).get())).get()); });
}

HGLOBAL Stage::table() {
  return kept("table", [] {
    Bytes levels(256);
    for (size_t i = 0; i < levels.size(); ++i) levels[i] = static_cast<uint8_t>(255 - i);
    return levels;
  });
}

HGLOBAL Stage::histogram() {
  return kept("histogram", [] { return Bytes(512); });
}

HGLOBAL Stage::fresh(int depth) {
  HGLOBAL copy = GlobalAlloc(GHND, GlobalSize(dib(depth)));
  std::memcpy(GlobalLock(copy), GlobalLock(dib(depth)), GlobalSize(copy));
  GlobalUnlock(dib(depth));
  GlobalUnlock(copy);
  return copy;
}

const char* Stage::file(const std::string& name) {
  const auto found = files_.find(name);
  if (found != files_.end()) return found->second.c_str();
  std::string made = path(name);
  if (!write_picture(made)) throw std::runtime_error("no file could be made: " + name);
  return files_.emplace(name, std::move(made)).first->second.c_str();
}

const char* Stage::target(const std::string& name) {
  std::string& made = files_[name];
  if (made.empty()) made = path(name);
  std::error_code not_there;
  std::filesystem::remove(made, not_there);
  return made.c_str();
}

void Stage::take(HGLOBAL block) {
  outcome_.gave = block != nullptr;
  note_block(block);
  GlobalFree(block);
}

void Stage::note_block(HGLOBAL block) {
  const auto* data = static_cast<const uint8_t*>(GlobalLock(block));
  if (data == nullptr) return;
  outcome_.add({data, GlobalSize(block)});
  GlobalUnlock(block);
}

void Stage::note_file(const std::string& path) { outcome_.add(read_file(path)); }

void Stage::note_file_there(const std::string& path) { outcome_.add_value(std::filesystem::exists(path)); }

std::string Stage::changed_inputs(bool may_be_locked) {
  std::string changed;
  for (auto& [name, input] : kept_) {
    if (take_locks_back(input.block.get()) != 0 && !may_be_locked) changed += " " + name + " is locked";
    if (name != "histogram" && bytes_of(input.block.get()) != input.bytes) changed += " " + name + " has changed";
  }
  return changed;
}

}  // namespace check
