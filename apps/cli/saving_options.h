// The options of verbs that write pictures.
#pragma once

#include <string>

#include "cli/arguments.h"
#include "common/saving.h"

namespace vorel::cli {

struct SavingOptions {
  std::string to, compression;
  int quality = 0;
  bool progressive = false, interlaced = false, overwrite = false, numbered = false, is_strict = false;

  // Verbs may leave these options out.
  struct Offered {
    bool numbering = true, strict = true;
  };
  void declare(Arguments& arguments, Offered offered);
  void declare(Arguments& arguments) { declare(arguments, {}); }

  // How to save under a name. Throws Failure if that and the options do not tell, or do not go together.
  programs::Saving saving_for(const std::string& output) const;
};

// The same in help texts, under the verb's own words.
inline constexpr const char* kSavingHelp =
    "The ending of OUT tells its format: .bmp .tif .png .jpg .gif .pcx .dcx .tga .cal .pnm and, on Windows, .wmf\n"
    ".emf .clp. Without one, and on standard output, it is a Windows bitmap. JPEG gets quality 75 and grey pictures stay "
    "grey; GIF keeps at most 256\n"
    "colours; CALS takes 1 bit per pixel. TIFF, DCX and PNM files hold several pages, other files one.\n"
    "KIND is for TIFF none, huffman, g3, g4 (these three for 1 bit per pixel), lzw, jpeg (for 24 bits and greys of 8),\n"
    "deflate or packbits, and without it g4 for 1 bit and deflate else; for TGA it is none (the usual one) or rle, which\n"
    "pictures with a colour table do not get.\n\n";

}  // namespace vorel::cli
