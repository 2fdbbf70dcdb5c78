// The image file formats: one table that feeds the library's dispatch, the programs and the tests. A new format is a row
// here and a codec module in its own folder.
#pragma once

#include <span>
#include <string_view>

namespace vorel {

// The numbers that GetImageFormat returns. 10 is a text file, 11 is unused.
enum class FormatCode {
  kUnknown = 0,
  kTiff = 1,
  kPcx = 2,
  kDcx = 3,
  kGif = 4,
  kTga = 5,
  kBitmap = 6,
  kMetafile = 7,
  kClipboard = 8,
  kColorFax = 9,
  kText = 10,
  kCals = 12,
  kJpeg = 13,
  kPng = 14,
  kEnhancedMetafile = 15,
};

// A function of a codec module. Empty for formats that the library handles itself.
struct EntryPoint {
  const char* module = nullptr;  // file name without extension
  const char* name = nullptr;

  explicit operator bool() const { return module != nullptr; }
};

// Arguments of a loader after the path.
enum class LoadArguments { kNone, kStatus, kNullStatus, kPageAndStatus, kPageAndNull };

// Arguments of a saver after the path and the DIB.
enum class SaveArguments { kStatus, kOptionAndStatus, kCompressionAndPage, kRunLengthAndFooter, kThreeZeros, kQuality };

// Who can save a format.
enum class Saver { kNobody, kProgramsAlone, kLibrary };

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): members in the reading order of a row
struct FileFormat {
  FormatCode code;
  const char* name;        // for display
  const char* word;        // option value
  const char* endings[3];  // file name extensions, the usual one first; null where there are fewer
  EntryPoint load = {};
  LoadArguments load_arguments = LoadArguments::kNone;
  EntryPoint save = {};
  SaveArguments save_arguments = SaveArguments::kStatus;
  EntryPoint make = {};   // makes the empty file that `save` adds pages to
  EntryPoint count = {};  // counts pages; none for files of one page
  Saver saver = Saver::kLibrary;
  bool holds_pages = false;           // saving can add a page to a file
  bool needs_windows = false;         // its pictures are drawn by the system
  int most_bits = 24;                 // per pixel, when saved
  const char* compression = nullptr;  // the same in all files; null where it varies
};

std::span<const FileFormat> file_formats();

// Null if no picture format has this number.
const FileFormat* format_of(int code);

// By its word or one of its endings, in lower case.
const FileFormat* format_called(std::string_view word);

// By the extension of a file name, in any case.
const FileFormat* format_for_name(std::string_view name);

}  // namespace vorel
