// A picture in memory, and files of any format that it comes from and goes to.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "cli/files.h"
#include "common/formats.h"

namespace vorel::cli {

// A loaded picture.
struct Picture {
  std::string label;  // for messages
  BITMAPINFOHEADER header{};
  Dib dib;
};

inline bool is_top_down(const BITMAPINFOHEADER& header) { return header.biHeight < 0; }

// Bytes of one row's pixels, without the padding behind them and with it.
uint64_t pixel_row_bytes(const BITMAPINFOHEADER& header);
uint64_t stored_row_bytes(const BITMAPINFOHEADER& header);

// Number of rows.
uint64_t row_count(const BITMAPINFOHEADER& header);

// What a verb does to pixels, and so what it needs of a picture: each needs what those before it need, and more.
enum class Reach { kChangesPixels, kMovesRows, kMovesPixels };

// Makes a picture's pixels reachable: expands run-length compressed ones. Throws Failure where there is no way.
void prepare(Picture& picture, Reach reach);

// Makes the colour table of a picture of at most 8 bits as long as the depth has colours.
void complete_table(Picture& picture);

// What a file holds. Throws Failure for what the tool cannot load.
const Format& recognise(const Input& input);

// Throws Failure, in the name of a file, where this build does not draw.
void require_drawing(const std::string& label, const char* what);

// The number of pages; none if the module does not tell. Throws Failure for a damaged file.
std::optional<int> count_pages(const Input& input, const Format& format);

// Throws Failure if a file of several pages would be replaced by one of them.
void keep_pages(const Input& input, const Output& output);

// Loads a page, counted from 1. Throws Failure.
Picture load_picture(const Input& input, int page);

// How a picture is saved.
struct Saving {
  const Format* format = nullptr;
  int tiff_compression = 0;  // by TIFF number; 0 lets the module choose
  bool run_length = false;   // TGA
  bool interlaced = false;   // GIF
};

// Writes a picture, expanding what the format has no room for, and reads back what was written. Throws Failure.
void write_picture(const Output& output, Picture& picture, const Saving& saving);

// Writes pictures as the pages of one TIFF file: each as it comes, until there is none. Throws Failure.
using NextPicture = std::function<std::optional<Picture>()>;
void write_pages(const Output& output, const NextPicture& next, const Saving& saving);

}  // namespace vorel::cli
