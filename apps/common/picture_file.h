// Picture files of any format, page by page.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "common/bitmap_file.h"
#include "common/exif.h"
#include "common/picture.h"
#include "common/pnm_file.h"
#include "common/tags.h"
#include "core/file_formats.h"

namespace vorel::programs {

// A file that pictures are loaded from. Its functions throw Problem.
class PictureFile {
 public:
  // The file is there and can be read. `name` decides about TGA where the path does not show the name, as of a file in memory.
  explicit PictureFile(std::filesystem::path path, std::string name = {});

  const std::filesystem::path& path() const { return path_; }
  const std::string& usable_name() const { return usable_name_; }  // as the library takes it
  uint64_t bytes() const { return bytes_; }

  // By what it holds, and for TGA by its name. Throws for what the programs cannot load.
  const FileFormat& format() const;

  // None if the module does not tell.
  std::optional<int> count_pages() const;

  // A page, counted from 1, in the form that the file has it in.
  Picture load(int page) const;

  // The header of a page as load() gives it, without decoding rows where the module can do that.
  DibHeader header(int page) const;

  // The same before anything is decoded, with fewer bits than GIF pictures may turn out to have; none where it is unknown.
  std::optional<DibHeader> stated_header(int page) const;

  // Of a bitmap, without its pixels.
  BitmapFacts bitmap_facts() const;

  // Of a PNM file, without its pixels.
  PnmFacts pnm_facts(int page) const;

  // What loading a page takes from it, each as "what is lost; what to do".
  std::vector<std::string> losses(int page) const;

  // What the file tells of a page in words.
  std::vector<Tag> tags(int page) const;

  // Of a page, in words; none where it is unknown.
  std::optional<std::string> compression(int page) const;

 private:
  bool is_bitmap() const;
  bool is_pnm() const;
  bool is_tga_by_name(int found) const;
  const FileFormat& recognised_format() const;
  std::optional<int> counted_pages() const;
  uint64_t pnm_start(int page) const;
  Picture load_by_library(const FileFormat& format, int page) const;
  Picture load_tga() const;
  std::optional<ImgDescription> described(const FileFormat& format, int page) const;
  ExifFacts exif() const;

  std::filesystem::path path_;
  std::string usable_name_, name_;
  uint64_t bytes_;
  // Once they were asked for.
  mutable const FileFormat* format_ = nullptr;
  mutable bool is_counted_ = false;
  mutable std::optional<int> pages_;
  mutable std::vector<uint64_t> pnm_starts_;
};

// Throws Problem where this build does not draw, which `what` needs.
void require_drawing(const char* what);

}  // namespace vorel::programs
