// Cutting pictures whose headers may lie.
#include "calls.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int32_t line = input.number();
  const fuzz::Picture picture(input);
  if (!picture.is_acceptable()) return 0;
  const auto part = [&](bool is_upper) {
    return [&, is_upper](HGLOBAL dib) -> HGLOBAL {
      HGLOBAL parts[2] = {};
      if (CutDIB(dib, line, &parts[0], &parts[1]) == FALSE) return nullptr;
      GlobalFree(parts[is_upper ? 0 : 1]);
      return parts[is_upper ? 1 : 0];
    };
  };
  fuzz::make(picture, part(false));
  fuzz::make(picture, part(true));
  return 0;
}
