// The image formats that the programs know, and which codec modules they need.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include <vorel32.h>

namespace vorel {

// One entry point of a codec module. Formats that the library handles by itself have none.
struct Entry {
  const char* module = nullptr;  // without the ending
  const char* name = nullptr;
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): a row reads in this order
struct Format {
  ImgFormat code;
  const char* name;                  // for people
  const char* word;                  // as an option's value
  std::vector<const char*> endings;  // of file names; the first is the usual one
  Entry load, save;
  Entry count;              // counts pages; none if a file has one page
  const char* compression;  // none if files differ
  bool is_drawn = false;    // by the system: on Windows alone
};

// None for what the programs cannot load.
const Format* format_of(int code);

const Format* format_called(const std::string& word);

// By the ending of a file's name, whatever its case.
const Format* format_for_name(const std::string& name);

// The words of all formats that can be saved.
std::vector<std::string> saving_words();

// The compressions of TIFF files by the words of the command line.
struct TiffCompression {
  const char* word;
  const char* name;
  int number;
  bool bilevel_only;
};
std::span<const TiffCompression> tiff_compressions();
std::string tiff_compression_name(int number);

}  // namespace vorel
