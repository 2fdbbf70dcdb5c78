// libyuv: planes of bytes, and colours of 24 or 32 bits.
#include <cstdlib>
#include <libyuv.h>

#include "peers/worker.h"

namespace peers {
namespace {

class Plane {
 public:
  Plane(int width, int height, int pixel_bytes)
      : stride((width * pixel_bytes + 63) / 64 * 64),
        bytes_(static_cast<std::uint8_t*>(
                   std::aligned_alloc(64, static_cast<std::size_t>(stride) * static_cast<std::size_t>(height))),
               std::free) {}
  std::uint8_t* data() const { return bytes_.get(); }

  const int stride;

 private:
  std::unique_ptr<std::uint8_t, decltype(&std::free)> bytes_;
};

using Source = std::shared_ptr<Plane>;

Source plane_of(const Picture& picture, int pixel_bytes) {
  const Extent extent = picture.extent;
  auto plane = std::make_shared<Plane>(extent.width, extent.height, pixel_bytes);
  for (int y = 0; y < extent.height; ++y) {
    std::uint8_t* to = plane->data() + static_cast<std::ptrdiff_t>(y) * plane->stride;
    if (pixel_bytes != 4) {
      std::copy(picture.row(y), picture.row(y) + extent.row_bytes(), to);
      continue;
    }
    for (int x = 0; x < extent.width; ++x) {
      std::copy_n(picture.row(y) + 3 * x, 3, to + 4 * x);
      to[4 * x + 3] = 255;
    }
  }
  return plane;
}

Work turning(const Picture& picture, Extent result, libyuv::RotationMode mode) {
  const Extent from = picture.extent;
  if (from.depth == 8)
    return [=, source = plane_of(picture, 1)] {
      const Plane to(result.width, result.height, 1);
      return libyuv::RotatePlane(source->data(), source->stride, to.data(), to.stride, from.width, from.height, mode) == 0;
    };
  return [=, source = plane_of(picture, 4)] {
    const Plane to(result.width, result.height, 4);
    return libyuv::ARGBRotate(source->data(), source->stride, to.data(), to.stride, from.width, from.height, mode) == 0;
  };
}

Work mirroring(const Picture& picture) {
  const Extent from = picture.extent;
  return [=, source = plane_of(picture, from.depth / 8)] {
    const Plane to(from.width, from.height, from.depth / 8);
    if (from.depth == 24)
      return libyuv::RGB24Mirror(source->data(), source->stride, to.data(), to.stride, from.width, from.height) == 0;
    libyuv::MirrorPlane(source->data(), source->stride, to.data(), to.stride, from.width, from.height);
    return true;
  };
}

// A negative height turns the rows over.
Work turning_over(const Picture& picture) {
  const Extent from = picture.extent;
  return [=, source = plane_of(picture, from.depth / 8)] {
    const Plane to(from.width, from.height, from.depth / 8);
    libyuv::CopyPlane(source->data(), source->stride, to.data(), to.stride, from.width * from.depth / 8, -from.height);
    return true;
  };
}

Work scaling(const Picture& picture, Extent result) {
  const Extent from = picture.extent;
  if (from.depth == 8)
    return [=, source = plane_of(picture, 1)] {
      const Plane to(result.width, result.height, 1);
      libyuv::ScalePlane(source->data(), source->stride, from.width, from.height, to.data(), to.stride, result.width,
                         result.height, libyuv::kFilterBilinear);
      return true;
    };
  return [=, source = plane_of(picture, 4)] {
    const Plane to(result.width, result.height, 4);
    return libyuv::ARGBScale(source->data(), source->stride, from.width, from.height, to.data(), to.stride, result.width,
                             result.height, libyuv::kFilterBilinear) == 0;
  };
}

// In place.
Work brightening(const Picture& picture) {
  const Extent from = picture.extent;
  std::vector<std::uint8_t> table;
  for (const std::uint8_t value : tone_table()) table.insert(table.end(), 4, value);
  return [=, source = plane_of(picture, 4)] {
    return libyuv::RGBColorTable(source->data(), source->stride, table.data(), 0, 0, from.width, from.height) == 0;
  };
}

}  // namespace

Work prepare(const Workload& workload, const Picture& picture, const std::string&) {
  using enum Operation;
  const Extent from = workload.source;
  if (from.depth == 1) return nullptr;
  switch (workload.operation) {
    case kQuarterTurn: return turning(picture, workload.result(), libyuv::kRotate90);
    case kHalfTurn: return turning(picture, workload.result(), libyuv::kRotate180);
    case kBackTurn: return turning(picture, workload.result(), libyuv::kRotate270);
    case kMirrorSides: return mirroring(picture);
    case kMirrorTop: return turning_over(picture);
    case kLinear: return scaling(picture, workload.result());
    case kGray:
      return [=, source = plane_of(picture, 3)] {
        const Plane to(from.width, from.height, 1);
        return libyuv::RGB24ToJ400(source->data(), source->stride, to.data(), to.stride, from.width, from.height) == 0;
      };
    case kBrighten: return brightening(picture);
    default: return nullptr;
  }
}

}  // namespace peers
