// Windows bitmap files, checked before the library loads them: it fills up with zeros what a damaged file lacks.
#pragma once

#include <string>

#include "cli/files.h"

namespace vorel::cli {

// What a bitmap file says about itself.
struct Bitmap {
  BITMAPINFOHEADER header{};  // as a 40-byte header, whichever the file has
  std::string variant;        // of the file's headers, in words
  bool states_image_size = true;
};

// A loaded picture.
struct Picture {
  std::string label;  // for messages
  BITMAPINFOHEADER header{};
  Dib dib;
};

// Reads the headers of a bitmap. Throws Failure unless the file is whole and means what it says.
Bitmap inspect_bitmap(const Input& input);

// Loads a bitmap. Throws Failure if it is damaged or of a kind that the library cannot load.
Picture load_bitmap(const Input& input);

// What a verb does to pixels, and so what it needs of a picture: each needs what those before it need, and more.
enum class Reach { kChangesPixels, kMovesRows, kMovesPixels };

// Throws Failure for pictures whose pixels cannot be reached in this way.
void require(const Picture& picture, Reach reach);

inline bool is_top_down(const BITMAPINFOHEADER& header) { return header.biHeight < 0; }

// Bytes of one row's pixels, without the padding behind them and with it.
uint64_t pixel_row_bytes(const BITMAPINFOHEADER& header);
uint64_t stored_row_bytes(const BITMAPINFOHEADER& header);

// Number of rows.
uint64_t row_count(const BITMAPINFOHEADER& header);

}  // namespace vorel::cli
