#include "common/formats.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace vorel {
namespace {

const Format kFormats[] = {
    {IMG_FORMAT_TIFF,
     "TIFF",
     "tiff",
     {"tif", "tiff"},
     {"MERV32", "LoadTiffIntoDIB"},
     {"MERV", "SaveDIBInTiffFormat"},
     {"MERV32", "GetNumberOfImagesInTiffFile"},
     nullptr},
    {IMG_FORMAT_PCX, "PCX", "pcx", {"pcx"}, {"ODAL32", "LoadPCXIntoDIB"}, {"ODAL", "SaveDIBInPCXFormat"}, {}, "run-length"},
    {IMG_FORMAT_DCX,
     "DCX",
     "dcx",
     {"dcx"},
     {"ODAL32", "LoadDCXIntoDIB"},
     {"ODAL", "SaveDIBInDCXFormat"},
     {"ODAL32", "GetNumberOfImagesInDCXFile"},
     "run-length"},
    {IMG_FORMAT_GIF,
     "GIF",
     "gif",
     {"gif"},
     {"SUNE32", "LoadGIFIntoDIB"},
     {"SUNE", "SaveDIBInGIFFormat"},
     {"SUNE32", "GetNumberOfImagesInGIFFile"},
     "LZW"},
    {IMG_FORMAT_TGA, "TGA", "tga", {"tga"}, {"BRIX32", "LoadTGAIntoDIB"}, {"BRIX", "SaveDIBInTGAFormat"}, {}, nullptr},
    {IMG_FORMAT_BITMAP, "Windows bitmap", "bmp", {"bmp", "dib"}, {}, {}, {}, nullptr},
    {IMG_FORMAT_METAFILE, "Windows metafile", "wmf", {"wmf"}, {}, {}, {}, "none", true},
    {IMG_FORMAT_CLIPBOARD, "clipboard file", "clp", {"clp"}, {}, {}, {}, "none", true},
    {IMG_FORMAT_COLOR_FAX, "colour fax page set", "fax", {}, {}, {}, {}, nullptr},
    {IMG_FORMAT_CALS,
     "CALS raster",
     "cals",
     {"cal", "cals", "ras"},
     {"MERV32", "LoadCALSIntoDIB"},
     {"MERV", "SAVEDIBINCALSFORMAT"},
     {},
     "Group 4"},
    {IMG_FORMAT_JPEG,
     "JPEG",
     "jpeg",
     {"jpg", "jpeg"},
     {"KALO32", "LoadJPEGIntoDIB"},
     {"KALO", "SaveDIBInJPEGFile"},
     {},
     "JPEG"},
    {IMG_FORMAT_PNG, "PNG", "png", {"png"}, {"WERT32", "LoadPNGIntoDIB"}, {"WERT", "SaveDIBInPNGFormat"}, {}, "deflate"},
    {IMG_FORMAT_ENHANCED_METAFILE, "enhanced metafile", "emf", {"emf"}, {}, {}, {}, "none", true},
};

const TiffCompression kTiffCompressions[] = {
    {"none", "none", 1, false},       {"huffman", "modified Huffman", 2, true},
    {"g3", "Group 3", 3, true},       {"g4", "Group 4", 4, true},
    {"lzw", "LZW", 5, false},         {"jpeg", "JPEG", 7, false},
    {"deflate", "deflate", 8, false}, {"packbits", "PackBits", 32773, false},
};

template <class Predicate>
const Format* first_format(Predicate predicate) {
  const auto* found = std::ranges::find_if(kFormats, predicate);
  return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace

const Format* format_of(int code) {
  return first_format([code](const Format& format) { return format.code == code; });
}

const Format* format_called(const std::string& word) {
  return first_format([&](const Format& format) { return format.word == word; });
}

const Format* format_for_name(const std::string& name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string::npos) return nullptr;
  std::string ending = name.substr(dot + 1);
  std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return first_format(
      [&](const Format& format) { return std::ranges::find(format.endings, ending) != format.endings.end(); });
}

std::vector<std::string> saving_words() {
  std::vector<std::string> words;
  for (const Format& format : kFormats)
    if (!format.endings.empty()) words.emplace_back(format.word);
  return words;
}

std::span<const TiffCompression> tiff_compressions() { return kTiffCompressions; }

std::string tiff_compression_name(int number) {
  for (const TiffCompression& compression : kTiffCompressions)
    if (compression.number == number) return compression.name;
  return number == 32946 ? "deflate" : fmt::format("TIFF compression {}", number);
}

}  // namespace vorel
