#include "cli/picture.h"

#include <fmt/format.h>
#include <fstream>

#include "cli/bitmap.h"
#include "cli/codec.h"
#include "cli/failure.h"

namespace vorel::cli {
namespace {

// ---- Loading ----

// A bitmap file without its file header, which has no signature.
bool begins_with_a_bitmap_header(const Input& input) {
  uint32_t size = 0;
  std::ifstream(input.path(), std::ios::binary).read(reinterpret_cast<char*>(&size), sizeof size);
  return size == sizeof(BITMAPINFOHEADER) || size == sizeof(BITMAPCOREHEADER);
}

Failure unknown_format(const Input& input, int code) {
  const auto failure = [&](const char* text) { return Failure(ExitCode::kFormat, input.label(), text); };
  switch (code) {
    case IMG_FORMAT_TEXT: return failure("this is a text; give a picture file, or draw it with \"vorel text\"");
    default:
      return failure(
          "the format is not recognised, or the file is damaged; give a picture file (TGA files go by their name)");
  }
}

// Why a module gave no picture. `status` is negative where it does not say.
Failure not_loaded(const Input& input, const Format& format, int status) {
  const auto failure = [&](ExitCode code, const std::string& text) { return Failure(code, input.label(), text); };
  switch (status) {
    case IMG_E_MEMORY:
      return failure(ExitCode::kLimit,
                     "the picture is too large for the memory there is, or claims more than such a file can hold; close "
                     "programs, or get another copy of the file");
    case IMG_E_OPEN_FILE:
    case IMG_E_FILE_IO:
      return failure(ExitCode::kInput, "the file cannot be read; check the disk and that no other program holds it");
    default:
      return failure(ExitCode::kFormat,
                     fmt::format("the {} file is damaged or of a variant that is not supported; get another copy of it, or "
                                 "save it in another way",
                                 format.name));
  }
}

Failure set_not_loaded(const Input& input) {
  return {ExitCode::kFormat, input.label(),
          "a file that the page set lists is missing, or is no 1-bit picture of the size of the others; check the names in "
          "it, which count from the current folder"};
}

void check_page(const Input& input, const Format& format, int page) {
  const auto pages = page == 1 ? std::nullopt : count_pages(input, format);
  if (page == 1 || !pages || page <= *pages) return;
  throw Failure(ExitCode::kWrongUse, input.label(),
                fmt::format("there is no page {}; the file has {} page{}", page, *pages, *pages == 1 ? "" : "s"));
}

// ---- Expanding ----

void expand(Picture& picture) {
  if (picture.header.biCompression == BI_RGB) return;
  if (is_top_down(picture.header)) {
    throw Failure(ExitCode::kFormat, picture.label,
                  "the picture is run-length compressed top row first, which no program reads; get another copy of it");
  }
  const Dib whole = with_whole_table(picture.dib);
  SetImgError(IMG_OK);
  picture.dib.reset(ExpandCompressedDIB(whole.get()));
  if (!picture.dib) {
    const bool is_short = ImgError() == IMG_E_MEMORY;
    throw Failure(is_short ? ExitCode::kLimit : ExitCode::kFormat, picture.label,
                  is_short ? "there is not enough memory for the picture; close programs or scale it down"
                           : "the run-length codes cannot be expanded; get another copy of the file");
  }
  picture.header = DibLock(picture.dib).header();
}

// ---- Saving ----

int value_for(const Saving& saving) {
  return saving.format->code == IMG_FORMAT_TIFF ? saving.tiff_compression : saving.run_length ? 1 : 0;
}

bool write_file(const std::string& path, const std::string& label, const Picture& picture, const Saving& saving, int page) {
  const Format& format = *saving.format;
  const HGLOBAL dib = picture.dib.get();
  if (format.code == IMG_FORMAT_BITMAP) return SaveDIB(path.c_str(), dib) != FALSE;
  if (format.is_drawn) return SaveDIBInImageFormat(path.c_str(), dib, format.code, 0, 0) != FALSE;
  const Codec codec(format.save, label);
  switch (format.code) {
    case IMG_FORMAT_TIFF:
      if (page > 1) return codec.as<ImgSaveTiff>()(path.c_str(), dib, saving.tiff_compression, page) != FALSE;
      break;
    case IMG_FORMAT_DCX: {  // the file is there already, empty
      const auto make = codec.other<ImgMakeFile>("MakeDCXFile");
      if (make == nullptr || !make(path.c_str(), nullptr)) return false;
      break;
    }
    case IMG_FORMAT_PNG: return codec.as<ImgSavePicture>()(path.c_str(), dib, nullptr) != FALSE;  // the library does not
    default: break;
  }
  return SaveDIBInImageFormat(path.c_str(), dib, format.code, saving.interlaced ? 1 : 0, value_for(saving)) != FALSE;
}

// SaveDIB can miss that a disk is full, and another maker's module may too.
bool is_written(const std::string& path, const std::string& label, const Picture& picture, const Saving& saving, int page) {
  if (saving.format->code == IMG_FORMAT_BITMAP) {
    std::error_code error;
    return std::filesystem::file_size(path, error) == sizeof(BITMAPFILEHEADER) + GlobalSize(picture.dib.get());
  }
  Codec::require(saving.format->load, label);
  if (GetImageFormat(path.c_str()) != saving.format->code) return false;
  int status = 0;
  const Dib copy(LoadImageIntoDIB(path.c_str(), page, &status));
  if (!copy) return false;
  const BITMAPINFOHEADER header = DibLock(copy).header();
  // An enhanced metafile tells its size in hundredths of a millimetre, which takes the last pixel.
  const uint64_t most_lost = saving.format->code == IMG_FORMAT_ENHANCED_METAFILE ? 1 : 0;
  const auto is_as_long = [&](uint64_t is, uint64_t was) { return is <= was && is + most_lost >= was; };
  return is_as_long(static_cast<uint32_t>(header.biWidth), static_cast<uint32_t>(picture.header.biWidth)) &&
         is_as_long(row_count(header), row_count(picture.header));
}

void prepare_for(const Saving& saving, Picture& picture) {
  const auto fail = [&](const std::string& text) { throw Failure(ExitCode::kFormat, picture.label, text); };
  if (saving.format->code == IMG_FORMAT_BITMAP) return;
  if (saving.format->is_drawn) require_drawing(picture.label, saving.format->name);
  expand(picture);
  const int depth = picture.header.biBitCount;
  if (depth == 16 || depth == 32) {
    fail(fmt::format("pixels of {} bits cannot be saved as {}; save the picture with 24 bits per pixel", depth,
                     saving.format->name));
  }
  if (saving.format->code == IMG_FORMAT_CALS && depth != 1) {
    fail(fmt::format("CALS raster holds 1 bit per pixel, the picture has {}; choose another format", depth));
  }
  for (const TiffCompression& compression : tiff_compressions()) {
    if (compression.number == saving.tiff_compression && compression.bilevel_only && depth != 1) {
      fail(fmt::format("{} compresses 1 bit per pixel, the picture has {}; choose another compression", compression.name,
                       depth));
    }
  }
}

void save_picture(const std::string& path, const std::string& label, const Picture& picture, const Saving& saving,
                  int page) {
  if (write_file(path, label, picture, saving, page) && is_written(path, label, picture, saving, page)) return;
  throw Failure(
      ExitCode::kOutput, label,
      fmt::format("the picture could not be written whole as {}; check that there is room on the disk and that the "
                  "format and its compression suit a picture of {} x {} pixels with {} bit{}",
                  saving.format->name, picture.header.biWidth, row_count(picture.header), picture.header.biBitCount,
                  picture.header.biBitCount == 1 ? "" : "s"));
}

// TGA files are known by their names.
std::string scratch_ending(const Saving& saving) { return saving.format->code == IMG_FORMAT_TGA ? ".tga" : ""; }

}  // namespace

uint64_t pixel_row_bytes(const BITMAPINFOHEADER& header) {
  return (uint64_t{header.biBitCount} * static_cast<uint32_t>(header.biWidth) + 7) / 8;
}

uint64_t stored_row_bytes(const BITMAPINFOHEADER& header) { return (pixel_row_bytes(header) + 3) / 4 * 4; }

uint64_t row_count(const BITMAPINFOHEADER& header) {
  const int64_t height = header.biHeight;
  return static_cast<uint64_t>(height < 0 ? -height : height);
}

void prepare(Picture& picture, Reach reach) {
  const auto fail = [&](const std::string& text) { throw Failure(ExitCode::kFormat, picture.label, text); };
  const auto depth = picture.header.biBitCount;
  expand(picture);
  if (reach >= Reach::kMovesRows && is_top_down(picture.header)) {
    fail("the picture is stored top row first, so its pixels cannot be moved; save it bottom row first");
  }
  if (reach >= Reach::kMovesPixels && (depth == 16 || depth == 32)) {
    fail(fmt::format("pixels of {} bits cannot be moved within a row; save the picture with 24 bits per pixel", depth));
  }
}

void complete_table(Picture& picture) {
  const int depth = picture.header.biBitCount;
  if (depth > 8 || picture.header.biClrUsed == 0 || picture.header.biClrUsed == 1u << depth) return;
  picture.dib = with_whole_table(picture.dib);
  picture.header = DibLock(picture.dib).header();
}

const Format& recognise(const Input& input) {
  const int code = GetImageFormat(input.loading_path().c_str());
  if (code == IMG_FORMAT_UNKNOWN && begins_with_a_bitmap_header(input)) return *format_of(IMG_FORMAT_BITMAP);
  const Format* format = format_of(code);
  if (format == nullptr) throw unknown_format(input, code);
  return *format;
}

void require_drawing(const std::string& label, const char* what) {
  if (has_drawing()) return;
  throw Failure(
      ExitCode::kFormat, label,
      fmt::format("this build does not draw, which a {} needs; use the Windows build of this tool, vorel.exe", what));
}

std::optional<int> count_pages(const Input& input, const Format& format) {
  if (format.code == IMG_FORMAT_COLOR_FAX) return GetNumberOfImagesInFaxFile(input.loading_path().c_str());
  if (format.count.module == nullptr) return 1;
  const Codec codec(format.load, input.label());
  const auto count = codec.other<ImgCountPages>(format.count.name);
  if (count == nullptr) return std::nullopt;
  int status = -1;
  const int pages = count(input.loading_path().c_str(), &status);
  if (pages < 1) throw not_loaded(input, format, status);
  return pages;
}

void keep_pages(const Input& input, const Output& output) {
  if (!output.replaces(input)) return;
  const auto pages = count_pages(input, recognise(input));
  if (!pages || *pages == 1) return;
  throw Failure(
      ExitCode::kWrongUse, input.label(),
      fmt::format("the file has {} pages, and one of them would take the place of all; give OUT another name, or use "
                  "\"vorel pages split\" and \"join\"",
                  *pages));
}

Picture load_picture(const Input& input, int page) {
  const Format& format = recognise(input);
  Codec::require(format.load, input.label());
  check_page(input, format, page);
  if (format.code == IMG_FORMAT_BITMAP) return load_bitmap(input);
  if (format.is_drawn) require_drawing(input.label(), format.name);

  int status = -1;
  SetImgError(IMG_OK);
  Dib dib(LoadImageIntoDIB(input.loading_path().c_str(), page, &status));
  if (!dib && format.code == IMG_FORMAT_COLOR_FAX) throw set_not_loaded(input);
  if (!dib) throw not_loaded(input, format, format.is_drawn ? ImgError() : status);
  const BITMAPINFOHEADER header = DibLock(dib).header();
  return {.label = input.label(), .header = header, .dib = std::move(dib)};
}

void write_picture(const Output& output, Picture& picture, const Saving& saving) {
  prepare_for(saving, picture);
  output.write(scratch_ending(saving),
               [&](const std::string& path) { save_picture(path, output.label(), picture, saving, 1); });
}

void write_pages(const Output& output, const NextPicture& next, const Saving& saving) {
  output.write(scratch_ending(saving), [&](const std::string& path) {
    int page = 0;
    while (auto picture = next()) {
      prepare_for(saving, *picture);
      save_picture(path, output.label(), *picture, saving, ++page);
    }
  });
}

}  // namespace vorel::cli
