// The records that a Windows metafile consists of, made safe to be played: systems follow their lengths without looking.
#pragma once

#include <cstdint>
#include <span>

namespace vorel {

// The bytes of a Windows metafile up to the last record that lies in them whole, for a metafile in memory of this length: the
// header is changed to say so. Empty for what is no header.
std::span<uint8_t> playable_windows_metafile(std::span<uint8_t> metafile);

}  // namespace vorel
