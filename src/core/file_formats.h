// The image file formats: one table, which the library's dispatch, the programs and the tests are fed from. A new format is a row
// here and a codec module in a folder of its own.
#pragma once

#include <span>
#include <string_view>

namespace vorel {

// The numbers that GetImageFormat returns. 10 is a text, 11 is never used.
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

// A function of a codec module. Formats that the library handles by itself have none.
struct EntryPoint {
  const char* module = nullptr;  // file name without its ending
  const char* name = nullptr;

  explicit operator bool() const { return module != nullptr; }
};

// What a loader takes behind the path.
enum class LoadArguments { kNone, kStatus, kNullStatus, kPageAndStatus, kPageAndNull };

// What a saver takes behind the path and the DIB.
enum class SaveArguments { kStatus, kOptionAndStatus, kCompressionAndPage, kRunLengthAndFooter, kThreeZeros, kQuality };

// Who saves a format.
enum class Saver { kNobody, kProgramsAlone, kLibrary };

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): a row reads in this order
struct FileFormat {
  FormatCode code;
  const char* name;        // for people
  const char* word;        // as the value of an option
  const char* endings[3];  // of file names, the usual one first; null where there are fewer
  EntryPoint load = {};
  LoadArguments load_arguments = LoadArguments::kNone;
  EntryPoint save = {};
  SaveArguments save_arguments = SaveArguments::kStatus;
  EntryPoint make = {};   // makes the empty file that `save` adds pages to
  EntryPoint count = {};  // counts pages; none for files of one page
  Saver saver = Saver::kLibrary;
  bool holds_pages = false;           // saving can add a page to a file
  bool needs_windows = false;         // pictures of it are drawn
  int most_bits = 24;                 // to a pixel, when saved
  const char* compression = nullptr;  // of all files; null where they differ
};

std::span<const FileFormat> file_formats();

// Null for a number that no picture format has.
const FileFormat* format_of(int code);

// By its word or one of its endings, in lower case.
const FileFormat* format_called(std::string_view word);

// By the ending of a file's name, whatever its case.
const FileFormat* format_for_name(std::string_view name);

}  // namespace vorel
