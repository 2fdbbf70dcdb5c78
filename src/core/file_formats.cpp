#include "core/file_formats.h"

#include <algorithm>
#include <string>

namespace vorel {
namespace {

using Load = LoadArguments;
using Save = SaveArguments;

constexpr FileFormat kFormats[] = {
    {.code = FormatCode::kTiff,
     .name = "TIFF",
     .word = "tiff",
     .endings = {"tif", "tiff"},
     .load = {"MERV32", "LoadTiffIntoDIB"},
     .load_arguments = Load::kPageAndNull,
     .save = {"MERV", "SaveDIBInTiffFormat"},
     .save_arguments = Save::kCompressionAndPage,
     .count = {"MERV32", "GetNumberOfImagesInTiffFile"},
     .holds_pages = true},
    {.code = FormatCode::kPcx,
     .name = "PCX",
     .word = "pcx",
     .endings = {"pcx"},
     .load = {"ODAL32", "LoadPCXIntoDIB"},
     .load_arguments = Load::kStatus,
     .save = {"ODAL", "SaveDIBInPCXFormat"},
     .compression = "run-length"},
    {.code = FormatCode::kDcx,
     .name = "DCX",
     .word = "dcx",
     .endings = {"dcx"},
     .load = {"ODAL32", "LoadDCXIntoDIB"},
     .load_arguments = Load::kPageAndStatus,
     .save = {"ODAL", "SaveDIBInDCXFormat"},
     .make = {"ODAL", "MakeDCXFile"},
     .count = {"ODAL32", "GetNumberOfImagesInDCXFile"},
     .holds_pages = true,
     .compression = "run-length"},
    {.code = FormatCode::kGif,
     .name = "GIF",
     .word = "gif",
     .endings = {"gif"},
     .load = {"SUNE32", "LoadGIFIntoDIB"},
     .load_arguments = Load::kPageAndStatus,
     .save = {"SUNE", "SaveDIBInGIFFormat"},
     .save_arguments = Save::kOptionAndStatus,
     .count = {"SUNE32", "GetNumberOfImagesInGIFFile"},
     .compression = "LZW"},
    {.code = FormatCode::kTga,
     .name = "TGA",
     .word = "tga",
     .endings = {"tga"},
     .load = {"BRIX32", "LoadTGAIntoDIB"},
     .load_arguments = Load::kNullStatus,
     .save = {"BRIX", "SaveDIBInTGAFormat"},
     .save_arguments = Save::kRunLengthAndFooter},
    {.code = FormatCode::kBitmap, .name = "Windows bitmap", .word = "bmp", .endings = {"bmp", "dib"}, .most_bits = 32},
    {.code = FormatCode::kMetafile,
     .name = "Windows metafile",
     .word = "wmf",
     .endings = {"wmf"},
     .needs_windows = true,
     .compression = "none"},
    {.code = FormatCode::kClipboard,
     .name = "clipboard file",
     .word = "clp",
     .endings = {"clp"},
     .needs_windows = true,
     .compression = "none"},
    {.code = FormatCode::kColorFax, .name = "colour fax page set", .word = "fax", .endings = {}, .saver = Saver::kNobody},
    {.code = FormatCode::kCals,
     .name = "CALS raster",
     .word = "cals",
     .endings = {"cal", "cals", "ras"},
     .load = {"MERV32", "LoadCALSIntoDIB"},
     .load_arguments = Load::kNullStatus,
     .save = {"MERV", "SAVEDIBINCALSFORMAT"},
     .save_arguments = Save::kThreeZeros,
     .most_bits = 1,
     .compression = "Group 4"},
    {.code = FormatCode::kJpeg,
     .name = "JPEG",
     .word = "jpeg",
     .endings = {"jpg", "jpeg"},
     .load = {"KALO32", "LoadJPEGIntoDIB"},
     .load_arguments = Load::kNone,
     .save = {"KALO", "SaveDIBInJPEGFile"},
     .save_arguments = Save::kQuality,
     .compression = "JPEG"},
    {.code = FormatCode::kPng,
     .name = "PNG",
     .word = "png",
     .endings = {"png"},
     .load = {"WERT32", "LoadPNGIntoDIB"},
     .load_arguments = Load::kStatus,
     .save = {"WERT", "SaveDIBInPNGFormat"},
     .saver = Saver::kProgramsAlone,
     .compression = "deflate"},
    {.code = FormatCode::kEnhancedMetafile,
     .name = "enhanced metafile",
     .word = "emf",
     .endings = {"emf"},
     .needs_windows = true,
     .compression = "none"},
};

template <class Predicate>
const FileFormat* first_format(Predicate predicate) {
  const auto* found = std::ranges::find_if(kFormats, predicate);
  return found == std::end(kFormats) ? nullptr : found;
}

bool has_ending(const FileFormat& format, std::string_view ending) {
  return std::ranges::any_of(format.endings, [&](const char* known) { return known != nullptr && ending == known; });
}

}  // namespace

std::span<const FileFormat> file_formats() { return kFormats; }

const FileFormat* format_of(int code) {
  return first_format([code](const FileFormat& format) { return static_cast<int>(format.code) == code; });
}

const FileFormat* format_called(std::string_view word) {
  return first_format([word](const FileFormat& format) { return word == format.word || has_ending(format, word); });
}

const FileFormat* format_for_name(std::string_view name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return nullptr;
  std::string ending(name.substr(dot + 1));
  for (char& letter : ending)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return first_format([&](const FileFormat& format) { return has_ending(format, ending); });
}

}  // namespace vorel
