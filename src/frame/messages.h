#pragma once

#include <cstdint>
#include <string_view>

namespace vorel {

// Title of the message box that shows an error's text.
inline constexpr const char* kErrorTitle = "VOREL error";
inline constexpr std::string_view kVersionText = "Version 5.59";

// Codes that SetImgError accepts and that have a message: 0 to 31.
inline constexpr int32_t kMessageCodes = 32;
constexpr bool has_message(int32_t code) { return static_cast<uint32_t>(code) < kMessageCodes; }

// The message of a code, zero-terminated; for a code without a message, the text for an unknown error.
const char* message(int32_t code);

}  // namespace vorel
