#include "common/saving.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

#include "common/codec.h"
#include "common/formats.h"
#include "common/forms.h"
#include "common/picture_file.h"
#include "common/pnm_file.h"
#include "common/problem.h"

namespace vorel::programs {
namespace {

using Needs = TiffCompression::Needs;

constexpr TiffCompression kTiffCompressions[] = {
    {"none", "none", 1, Needs::kNothing},       {"huffman", "modified Huffman", 2, Needs::kOneBit},
    {"g3", "Group 3", 3, Needs::kOneBit},       {"g4", "Group 4", 4, Needs::kOneBit},
    {"lzw", "LZW", 5, Needs::kNothing},         {"jpeg", "JPEG", 7, Needs::kPhoto},
    {"deflate", "deflate", 8, Needs::kNothing}, {"packbits", "PackBits", 32773, Needs::kNothing},
};

const char* bits_of(const Picture& picture) { return picture.depth() == 1 ? "bit" : "bits"; }

void check_compression(const Picture& picture, const TiffCompression& compression) {
  const auto fail = [&](const std::string& text) { throw Problem(Fault::kFormat, text + "; choose another compression"); };
  const int depth = picture.depth();
  if (compression.needs == Needs::kOneBit && depth != 1)
    fail(fmt::format("{} compresses 1 bit per pixel, the picture has {}", compression.name, depth));
  if (compression.needs == Needs::kPhoto && depth != 24 && !has_gray_ramp(picture)) {
    fail(fmt::format("{} compresses 24 bits per pixel and greys of 8, the picture has {} {}", compression.name, depth,
                     depth == 8 ? "with colours" : bits_of(picture)));
  }
}

bool write_jpeg(const Codec& codec, const std::string& path, HGLOBAL dib, const Saving& saving) {
  constexpr int kUsualQuality = 75;
  const int quality = saving.quality != 0 ? saving.quality : kUsualQuality;
  if (!saving.progressive) return codec.as<ImgSaveJpeg>()(path.c_str(), dib, quality) != FALSE;
  const auto save = codec.other<ImgSaveJpegForm>("SaveDIBInJPEGForm");
  if (save != nullptr) return save(path.c_str(), dib, quality, 1) != FALSE;
  throw Problem(Fault::kModule,
                "the codec module KALO of another maker saves no progressive files; leave --progressive out");
}

bool write_page(const std::string& path, const Picture& picture, const Saving& saving, int page) {
  const FileFormat& format = *saving.format;
  const HGLOBAL dib = picture.get();
  if (!format.save) return SaveDIBInImageFormat(path.c_str(), dib, static_cast<int>(format.code), 0, 0) != FALSE;
  const Codec codec(format.save);
  if (format.make && page == 1) {  // the file is there already, empty
    const auto make = codec.other<ImgMakeFile>(format.make.name);
    if (make == nullptr || !make(path.c_str(), nullptr)) return false;
  }
  if (format.save_arguments == SaveArguments::kCompressionAndPage)
    return codec.as<ImgSaveTiff>()(path.c_str(), dib, saving.tiff_compression, page) != FALSE;
  if (format.code == FormatCode::kJpeg && (saving.quality != 0 || saving.progressive))
    return write_jpeg(codec, path, dib, saving);
  if (format.saver == Saver::kProgramsAlone) return codec.as<ImgSavePicture>()(path.c_str(), dib, nullptr) != FALSE;
  return SaveDIBInImageFormat(path.c_str(), dib, static_cast<int>(format.code), saving.interlaced ? 1 : 0,
                              saving.run_length ? 1 : 0) != FALSE;
}

// Whether the module that saves a format fails when a write does. Modules of other makers may not.
bool reports_failed_writes(const FileFormat& format) {
  if (!format.save) return false;
  const auto reports = Codec(format.save).other<ImgReportsFailedWrites>("ReportsFailedWrites");
  return reports != nullptr && reports() != FALSE;
}

// SaveDIB can miss that a disk is full, so a bitmap is measured. What no module of ours has written is read back.
bool is_written(const std::string& path, const Picture& picture, const Saving& saving, int page) {
  if (saving.format->code == FormatCode::kBitmap) {
    std::error_code error;
    return std::filesystem::file_size(path, error) == kFileHeaderBytes + GlobalSize(picture.get());
  }
  const bool is_tga =
      saving.format->code == FormatCode::kTga;  // the path need not show the name by which the library knows it
  if (!is_tga && GetImageFormat(path.c_str()) != static_cast<int>(saving.format->code)) return false;
  if (reports_failed_writes(*saving.format)) return true;
  Codec::require(saving.format->load);
  int status = 0;
  const HGLOBAL dib = is_tga ? Codec(saving.format->load).as<ImgLoadPicture>()(path.c_str(), &status)
                             : LoadImageIntoDIB(path.c_str(), page, &status);
  if (dib == nullptr) return false;
  const Picture copy(dib);
  // An enhanced metafile tells its size in hundredths of a millimetre, which takes the last pixel.
  const int most_lost = saving.format->code == FormatCode::kEnhancedMetafile ? 1 : 0;
  const auto is_as_long = [&](int is, int was) { return is <= was && is + most_lost >= was; };
  return is_as_long(copy.width(), picture.width()) && is_as_long(copy.height(), picture.height());
}

}  // namespace

std::span<const TiffCompression> tiff_compressions() { return kTiffCompressions; }

std::string tiff_compression_name(int number) {
  const auto* found = std::ranges::find(kTiffCompressions, number, &TiffCompression::number);
  if (found != std::end(kTiffCompressions)) return found->name;
  return number == 32946 ? "deflate" : fmt::format("TIFF compression {}", number);
}

Picture suited(Picture picture, const Saving& saving) {
  const FileFormat& format = *saving.format;
  if (format.code == FormatCode::kBitmap) return picture;
  if (format.needs_windows) require_drawing(format.name);
  if (is_pnm(format)) return suited_for_pnm(std::move(picture), format);
  picture = workable(std::move(picture));
  if (picture.depth() > format.most_bits) {
    throw Problem(Fault::kFormat, fmt::format("{} holds {} bit per pixel, the picture has {}; choose another format",
                                              format.name, format.most_bits, picture.depth()));
  }
  if (saving.tiff_compression != 0)
    check_compression(picture, *std::ranges::find(kTiffCompressions, saving.tiff_compression, &TiffCompression::number));
  return picture;
}

void save_page(const std::string& path, const Picture& picture, const Saving& saving, int page) {
  if (is_pnm(*saving.format) && write_pnm(path, picture, *saving.format, page)) return;
  if (!is_pnm(*saving.format) && write_page(path, picture, saving, page) && is_written(path, picture, saving, page)) return;
  throw Problem(
      Fault::kOutput,
      fmt::format("the picture could not be written whole as {}; check that there is room on the disk and that the "
                  "format suits a picture of {} x {} pixels with {} {}",
                  saving.format->name, picture.width(), picture.height(), picture.depth(), bits_of(picture)));
}

}  // namespace vorel::programs
