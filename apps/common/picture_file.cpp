#include "common/picture_file.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <fmt/format.h>
#include <fstream>
#include <mutex>

#include "common/codec.h"
#include "common/formats.h"
#include "common/platform.h"
#include "common/problem.h"
#include "common/saving.h"

namespace vorel::programs {
namespace {

// Why a module gave no picture. `status` is negative where it does not say.
Problem not_loaded(const FileFormat& format, int status) {
  switch (status) {
    case IMG_E_MEMORY:
      return {Fault::kLimit,
              "the picture is too large for the memory there is, or claims more than such a file can hold; close programs, "
              "or get "
              "another copy of the file"};
    case IMG_E_OPEN_FILE:
    case IMG_E_FILE_IO: return {Fault::kInput, "the file cannot be read; check the disk and that no other program holds it"};
    default:
      return {Fault::kFormat,
              fmt::format("the {} file is damaged or of a variant that is not supported; get another copy of "
                          "it, or save it in another way",
                          format.name)};
  }
}

Problem set_not_loaded() {
  return {
      Fault::kFormat,
      "a file that the page set lists is missing, or is no 1-bit picture of the size of the others; check the names in it, "
      "which count from the current folder"};
}

Problem unknown_format(int code) {
  if (code == IMG_FORMAT_TEXT)
    return {Fault::kFormat, "this is a text; give a picture file, or draw it with \"vorel text\""};
  return {Fault::kFormat,
          "the format is not recognised, or the file is damaged; give a picture file (TGA files go by their name)"};
}

uint64_t size_of(const std::filesystem::path& path) {
  std::error_code error;
  const auto bytes = std::filesystem::file_size(path, error);
  if (error) throw Problem(Fault::kInput, fmt::format("its size is unknown ({}); try again", error.message()));
  return bytes;
}

std::string usable_path(const std::filesystem::path& path) {
  if (auto usable = path_for_library(path)) return *usable;
  throw Problem(Fault::kInput, "the path is longer than 127 characters; move the file nearer to the root folder");
}

constexpr uint32_t kPlaceableKey = 0x9AC6CDD7;

}  // namespace

PictureFile::PictureFile(std::filesystem::path path, std::string name)
    : path_(std::move(path)), usable_name_(usable_path(path_)), name_(std::move(name)), bytes_(size_of(path_)) {}

bool PictureFile::is_bitmap() const {
  std::ifstream file(path_, std::ios::binary);
  return begins_as_bitmap(file);
}

// Whether the name makes a file TGA, which has no signature. By chance, the header of one with a colour table and run-length
// codes is that of a plain metafile. The library itself has looked at the path's ending before it finds any of the other
// formats.
bool PictureFile::is_tga_by_name(int found) const {
  static constexpr int kTestedLater[] = {IMG_FORMAT_JPEG, IMG_FORMAT_CALS, IMG_FORMAT_TEXT, IMG_FORMAT_PNG,
                                         IMG_FORMAT_UNKNOWN};
  const bool is_later = !name_.empty() && std::ranges::find(kTestedLater, found) != std::end(kTestedLater);
  if (found != IMG_FORMAT_METAFILE && !is_later) return false;
  uint32_t key = 0;
  std::ifstream(path_, std::ios::binary).read(reinterpret_cast<char*>(&key), sizeof key);
  const FileFormat* const named = picture_format_for_name(name_.empty() ? path_.filename().string() : name_);
  return key != kPlaceableKey && named != nullptr && named->code == FormatCode::kTga;
}

// Threads that share a file may ask at the same time; each finds the same.
const FileFormat& PictureFile::format() const {
  const std::atomic_ref known(format_);
  if (known.load() == nullptr) known.store(&recognised_format());
  return *known.load();
}

// A plain one may pass for a text.
bool PictureFile::is_pnm() const {
  std::ifstream file(path_, std::ios::binary);
  return begins_as_pnm(file);
}

const FileFormat& PictureFile::recognised_format() const {
  int code = GetImageFormat(usable_name_.c_str());
  if ((code == IMG_FORMAT_UNKNOWN || code == IMG_FORMAT_TEXT) && is_pnm()) return pnm_format();
  if (is_tga_by_name(code)) code = IMG_FORMAT_TGA;
  if (code == IMG_FORMAT_UNKNOWN && is_bitmap()) code = IMG_FORMAT_BITMAP;
  const FileFormat* format = format_of(code);
  if (format == nullptr) throw unknown_format(code);
  return *format;
}

std::optional<int> PictureFile::count_pages() const {
  if (!is_counted_) pages_ = counted_pages();
  is_counted_ = true;
  return pages_;
}

// Each page of a long file would take a search of its own.
uint64_t PictureFile::pnm_start(int page) const {
  if (page == 1) return 0;
  if (pnm_starts_.empty()) {
    std::ifstream file(path_, std::ios::binary);
    pnm_starts_ = find_pnm_pages(file, bytes_);
  }
  if (page < 1 || static_cast<size_t>(page) > pnm_starts_.size())
    throw Problem(Fault::kWrongUse, fmt::format("there is no page {}; choose one that the file has", page));
  return pnm_starts_[static_cast<size_t>(page - 1)];
}

std::optional<int> PictureFile::counted_pages() const {
  const FileFormat& kind = format();
  if (kind.code == FormatCode::kColorFax) return GetNumberOfImagesInFaxFile(usable_name_.c_str());
  if (programs::is_pnm(kind)) {
    std::ifstream file(path_, std::ios::binary);
    pnm_starts_ = find_pnm_pages(file, bytes_);
    return static_cast<int>(pnm_starts_.size());
  }
  if (!kind.count) return 1;
  const Codec codec(kind.load);
  const auto count = codec.other<ImgCountPages>(kind.count.name);
  if (count == nullptr) return std::nullopt;
  int status = -1;
  const int pages = count(usable_name_.c_str(), &status);
  if (pages < 1) throw not_loaded(kind, status);
  return pages;
}

Picture PictureFile::load(int page) const {
  const FileFormat& kind = format();
  Codec::require(kind.load);
  if (const auto pages = page == 1 ? std::nullopt : count_pages(); pages && page > *pages) {
    throw Problem(Fault::kWrongUse,
                  fmt::format("there is no page {}; the file has {} page{}", page, *pages, *pages == 1 ? "" : "s"));
  }
  if (programs::is_pnm(kind)) {
    std::ifstream file(path_, std::ios::binary);
    return read_pnm(file, bytes_, pnm_start(page));
  }
  switch (kind.code) {
    case FormatCode::kBitmap: {
      std::ifstream file(path_, std::ios::binary);
      return read_bitmap(file, bytes_);
    }
    case FormatCode::kTga: return load_tga();
    default: return load_by_library(kind, page);
  }
}

// The colours of a GIF file do not tell the depth for sure.
DibHeader PictureFile::header(int page) const {
  const auto header = format().code == FormatCode::kGif ? std::nullopt : stated_header(page);
  return header ? *header : load(page).header();
}

std::optional<DibHeader> PictureFile::stated_header(int page) const {
  const FileFormat& kind = format();
  if (kind.code == FormatCode::kBitmap) return bitmap_facts().header;
  if (programs::is_pnm(kind)) return pnm_facts(page).header;
  const auto description = described(kind, page);
  if (!description) return std::nullopt;
  const auto header = std::bit_cast<DibHeader>(description->header);
  return kind.code == FormatCode::kJpeg ? turned_by_exif(header, exif()) : header;
}

std::optional<ImgDescription> PictureFile::described(const FileFormat& kind, int page) const {
  if (!kind.load) return std::nullopt;
  const Codec codec(kind.load);
  const auto describe_only = codec.other<ImgDescribeOnly>("DescribeOnly");
  if (describe_only == nullptr) return std::nullopt;
  static std::mutex one_at_a_time;
  const std::lock_guard guard(one_at_a_time);
  ImgDescription description{};
  int status = -1;
  if (!describe_only(&description)) return std::nullopt;
  switch (kind.load_arguments) {
    case LoadArguments::kNone: codec.as<ImgLoadFile>()(usable_name_.c_str()); break;
    case LoadArguments::kStatus:
    case LoadArguments::kNullStatus: codec.as<ImgLoadPicture>()(usable_name_.c_str(), &status); break;
    default: codec.as<ImgLoadPage>()(usable_name_.c_str(), page, &status);
  }
  describe_only(nullptr);
  if (description.header.biSize == 0) return std::nullopt;  // loading it tells why
  return description;
}

ExifFacts PictureFile::exif() const {
  std::ifstream file(path_, std::ios::binary);
  return read_exif(file);
}

Picture PictureFile::load_by_library(const FileFormat& kind, int page) const {
  if (kind.needs_windows) require_drawing(kind.name);
  int status = -1;
  SetImgError(IMG_OK);
  const HGLOBAL dib = LoadImageIntoDIB(usable_name_.c_str(), page, &status);
  const bool is_metafile = kind.code == FormatCode::kMetafile || kind.code == FormatCode::kEnhancedMetafile;
  if (dib != nullptr && kind.code == FormatCode::kJpeg) return turned_by_exif(Picture(dib), exif());
  if (dib != nullptr) return is_metafile ? whole_metafile(path_, Picture(dib)) : Picture(dib);
  if (kind.code == FormatCode::kColorFax) throw set_not_loaded();
  throw not_loaded(kind, kind.needs_windows ? ImgError() : status);
}

// By its module, which does not ask for the name's ending and tells why it fails.
Picture PictureFile::load_tga() const {
  const FileFormat& kind = *format_of(IMG_FORMAT_TGA);
  int status = -1;
  const HGLOBAL dib = Codec(kind.load).as<ImgLoadPicture>()(usable_name_.c_str(), &status);
  if (dib == nullptr) throw not_loaded(kind, status);
  return Picture(dib);
}

BitmapFacts PictureFile::bitmap_facts() const {
  std::ifstream file(path_, std::ios::binary);
  return inspect_bitmap(file, bytes_);
}

PnmFacts PictureFile::pnm_facts(int page) const {
  std::ifstream file(path_, std::ios::binary);
  return inspect_pnm(file, bytes_, pnm_start(page));
}

std::vector<std::string> PictureFile::losses(int page) const {
  const FileFormat& kind = format();
  std::vector<std::string> losses;
  const auto note_bits = [&](int bits) {
    if (bits > 8)
      losses.push_back(fmt::format("its samples of {} bits become 8 bits; keep the file if you need them all", bits));
  };
  const auto note_opacity = [&](bool has_opacity, const char* fate) {
    if (has_opacity) losses.push_back(fmt::format("its opacity is {}; keep the file if you need it", fate));
  };
  if (kind.code == FormatCode::kBitmap) {
    note_opacity(bitmap_facts().has_opacity, "left out");
  } else if (programs::is_pnm(kind)) {
    note_bits(pnm_facts(page).most > 255 ? 16 : 8);
  } else if (const auto description = described(kind, page)) {
    note_bits(description->sampleBits);
    note_opacity(description->hasOpacity != FALSE, "blended over white");
  }
  return losses;
}

std::vector<Tag> PictureFile::tags(int page) const {
  std::ifstream file(path_, std::ios::binary);
  return read_tags(file, format().code, page);
}

std::optional<std::string> PictureFile::compression(int page) const {
  const FileFormat& kind = format();
  if (kind.compression != nullptr) return kind.compression;
  switch (kind.code) {
    case FormatCode::kBitmap: return bitmap_facts().compression;
    case FormatCode::kTiff: {
      const Codec codec(kind.load);
      const auto ask = codec.other<ImgTiffCompression>("GetTiffCompression");
      const int number = ask == nullptr ? 0 : ask(usable_name_.c_str(), page, nullptr);
      return number == 0 ? std::nullopt : std::optional(tiff_compression_name(number));
    }
    case FormatCode::kTga: {  // byte 2 of the header is the type; from 9 on its rows are compressed
      char start[3] = {};
      std::ifstream(path_, std::ios::binary).read(start, sizeof start);
      return start[2] >= 9 ? "run-length" : "none";
    }
    default: return std::nullopt;
  }
}

void require_drawing(const char* what) {
  if (has_drawing()) return;
  throw Problem(
      Fault::kFormat,
      fmt::format("this build does not draw, which a {} needs; use the Windows build of this tool, vorel.exe", what));
}

}  // namespace vorel::programs
