// The records that metafiles consist of, looked at before they are played: not every system checks what they say of themselves.
#pragma once

#include <cstdint>
#include <span>

namespace vorel {

// The bytes of a Windows metafile up to the last of the records that are whole and name objects that it can have, for a metafile
// in memory of this length: the header is changed to say so. Empty for what is no header.
std::span<uint8_t> playable_windows_metafile(std::span<uint8_t> metafile);

// Whether all records of an enhanced metafile, up to one that says it is the last, are whole and name objects that it can have.
bool is_playable_enhanced_metafile(std::span<const uint8_t> metafile);

}  // namespace vorel
