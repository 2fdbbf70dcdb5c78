// Turns, mirrors and inversions of pictures whose headers may lie, and turns of device bitmaps' bits.
#include "calls.h"
#include "geometry/device_bits.h"

namespace {

using namespace vorel;

void turn_bits(fuzz::Input& input) {
  using namespace geometry;
  const auto turn = static_cast<DeviceTurn>(input.byte() % 5);
  constexpr std::array kDepths = {1, 4, 8, 16, 24, 32};
  DeviceBitsFormat format{.width = input.byte(),
                          .height = input.byte(),
                          .width_bytes = 0,
                          .planes = 1 + input.byte() % 4,
                          .depth = kDepths[input.byte() % kDepths.size()]};
  format.width_bytes = (format.width * format.depth + 15) / 16 * 2 + input.byte() % 4 * 2;
  test::Bytes bits, result;
  bits.reserve(1), result.reserve(1);
  bits.resize(static_cast<size_t>(device_bits_size(format).value()));
  std::copy_n(input.rest().begin(), std::min(bits.size(), input.rest().size()), bits.begin());
  result.resize(static_cast<size_t>(turned_bits_size(format, turn).value()));
  turn_device_bits(format, turn, bits, result);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int operation = input.byte() % 8;
  if (operation == 7) return turn_bits(input), 0;
  const fuzz::Picture picture(input);
  if (!picture.is_acceptable()) return 0;
  constexpr std::array kTurns = {RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBVertical, FlipDIBHorizontal};
  if (operation < 5) {
    // The turned picture's rows are padded too.
    BITMAPINFOHEADER turned = picture.header();
    std::swap(turned.biWidth, turned.biHeight);
    if (fuzz::rows_bytes(turned) <= input.most_bytes()) fuzz::make(picture, kTurns[static_cast<size_t>(operation)]);
    return 0;
  }
  fuzz::change(picture, [&](HGLOBAL dib) {
    if (operation == 5) return InvertDIBPalette(dib) != FALSE ? dib : nullptr;
    InvertMonoDIB(dib);
    return dib;
  });
  return 0;
}
