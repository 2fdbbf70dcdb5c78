#include "frame/messages.h"

#include <array>

namespace vorel {
namespace {

// Programs compare these texts and users search for them: they stay as they are, spelling included.
constexpr std::array<const char*, kMessageCodes> kMessages = {
    "Operation was successful.",
    "Not enough memory.",
    "Unable to create DC",
    "Can't open file",
    "General I/O error in reading or writting.",
    "Can't open clipboard",
    "Could not receive from clipboard",
    "Can't copy bits from bitmap",
    "Parameter error",
    "Invalid file format",
    "Can't create palette",
    "Can't create bitmap",
    "Mapping mode is improperly set in metafile",
    "Invalid bit/pixel value",
    "Format not found in clipboard file",
    "Can't get bitmap parameters",
    "Can't create metafile",
    "Can't lock global memory",
    "DIB must be uncompressed",
    "Invalid DIB size",
    "Paramater error in Dithering",
    "Bad bit/pixel value in DIB header",
    "The QUENT algorithm creates only 1 or 4 bit image",
    "Could not get printer DC",
    "Device not capable to handle raster",
    "Could not get dispaly DC",
    "Escape failed SETABORTPROC",
    "Escape failed STARTDOC",
    "Escape failed NEXTBAND",
    "Clipboard error",
    "Nothing to do.",
    "Nothing to convert.",
};

}  // namespace

const char* message(int32_t code) { return has_message(code) ? kMessages[static_cast<uint32_t>(code)] : "Unknown error."; }

}  // namespace vorel
