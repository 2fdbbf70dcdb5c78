// The formats of the programs: those of the library, and those that the programs read and write themselves.
#pragma once

#include <string_view>
#include <vector>

#include "core/file_formats.h"

namespace vorel::programs {

// Portable any map: PNM chooses between the three others by the picture. Their codes are none of the library's.
inline constexpr FormatCode kPnm{0x504E4D}, kPbm{0x50424D}, kPgm{0x50474D}, kPpm{0x50504D};

bool is_pnm(const FileFormat& format);
const FileFormat& pnm_format();

// All of them, those of the library first.
std::vector<const FileFormat*> picture_formats();

// By its word or one of its endings, in lower case; null if there is none.
const FileFormat* picture_format_called(std::string_view word);

// By the extension of a file name, in any case; null if there is none.
const FileFormat* picture_format_for_name(std::string_view name);

}  // namespace vorel::programs
