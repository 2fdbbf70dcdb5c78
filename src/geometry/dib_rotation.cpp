#include "geometry/dib_rotation.h"

#include <cstdlib>

#include "core/pixel.h"
#include "dib/open_dib.h"

namespace vorel::geometry {
namespace {

Error check(const DibHeader& header) {
  const auto low_word = [](int32_t size) { return static_cast<uint16_t>(size); };
  if (header.size != kHeaderBytes) return Error::kTurnParameter;
  if (header.compression != Compression::kNone) return Error::kTurnCompressed;
  if (low_word(header.width) == 0 || low_word(header.height) == 0) return Error::kTurnSize;
  return Error::kNone;
}

struct Resolution {
  int32_t x, y;
};

// The two resolutions, blended by how far the angle is past the last quarter turn. A quirk that is kept: the divisor is a little
// more than 90, so every multiple of 90 degrees but 0 counts as 90 degrees past one. The half turn swaps the two as well.
Resolution blended(const DibHeader& header, int angle) {
  constexpr double kInchesPerMetre = 39.37;
  const int dpi_x = static_cast<int>(header.x_per_metre / kInchesPerMetre);
  const int dpi_y = static_cast<int>(header.y_per_metre / kInchesPerMetre);
  const double share = std::abs(angle - 90 * static_cast<int>(angle / 90.001)) / 90.0;
  const auto per_metre = [&](int own, int other) {
    return static_cast<int32_t>((own * (1 - share) + other * share) * kInchesPerMetre + 0.5);
  };
  return {per_metre(dpi_x, dpi_y), per_metre(dpi_y, dpi_x)};
}

void store(const std::array<kernels::Point, 4>& corners, int32_t* numbers) {
  for (const kernels::Point& corner : corners) {
    *numbers++ = static_cast<int32_t>(static_cast<int64_t>(corner.x));
    *numbers++ = static_cast<int32_t>(static_cast<int64_t>(corner.y));
  }
}

DibHeader turned_header(DibHeader header, const kernels::Rotation& rotation, int angle) {
  header.width = static_cast<int32_t>(rotation.width);
  header.height = static_cast<int32_t>(rotation.height);
  header.image_bytes = static_cast<uint32_t>(Layout::of(header).rows.value());
  const Resolution resolution = blended(header, angle);
  header.x_per_metre = resolution.x;
  header.y_per_metre = resolution.y;
  return header;
}

}  // namespace

Result<OwnedDib> rotated(const LockedDib& source, int32_t angle, kernels::Stepping stepping, int32_t* corners) {
  const DibHeader& header = source.header();
  if (const Error refusal = check(header); refusal != Error::kNone) return refusal;
  angle = kernels::Rotation::normalized(angle);
  const kernels::Rotation rotation(header.width, header.height, angle);
  if (corners != nullptr) store(rotation.corners, corners);
  if (!rotation.is_countable()) return Error::kTurnMemory;

  const OpenDib opened = VOREL_TRY(OpenDib::open(source).or_error(Error::kTurnMemory));
  const ConstDibView held = opened.held_rows();
  const bool is_overwritten = is_pixel_depth(header.depth) && held.height() > 0;
  NewDib::Allocate* const allocate = is_overwritten ? OwnedDib::allocate_unset_or_retry : OwnedDib::allocate_or_retry;
  auto result = NewDib::like(opened, turned_header(header, rotation, angle), allocate);
  if (!result) return result.error() == Error::kLock ? Error::kTurnLock : Error::kTurnMemory;
  if (is_overwritten) result->clear_padding();
  kernels::turn().rotate(held, result->pixels(), rotation, stepping);
  return OwnedDib(std::move(*result));
}

}  // namespace vorel::geometry
