// The records of metafiles, checked before they are played: a player that trusts a count or an offset reads outside the record
// and may end the process.
#pragma once

#include <cstdint>
#include <span>

namespace vorel::metafile {

// Bytes behind a Windows metafile that the check may use: it puts an end record there, and zeros, since players read a short font
// name to its full length.
inline constexpr size_t kRoomBehindRecords = 64;

// The part of a Windows metafile that can be played: its records up to the first one that is incomplete, contradicts its own
// size or names an object that the metafile cannot have. The header is updated to match, and escapes become comments: a
// bitmap executes none, and some of them write through pointers.
//   block    the metafile, and behind it kRoomBehindRecords bytes
//   Empty if there is no header.
std::span<uint8_t> playable_windows_metafile(std::span<uint8_t> block);

// An enhanced metafile up to its end record, which is its last. Empty if any record fails these checks.
std::span<uint8_t> playable_enhanced_metafile(std::span<uint8_t> metafile);

}  // namespace vorel::metafile
