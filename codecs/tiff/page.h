// The tags of a TIFF page, and the plan by which its samples become a DIB.
#pragma once

#include <optional>
#include <vector>

#include "common/dib.h"
#include "tiff/components.h"
#include "tiff/handle.h"

namespace codec {

struct TiffPage {
  Description picture;  // of the DIB, before the page is turned
  int orientation = 1;
  unsigned bits = 0, samples = 0;
  bool has_planes = false;  // a plane for each sample
  bool has_tiles = false;
  SampleKind kind = SampleKind::kCount;
  std::optional<Range> range;  // of numbers, where the page states it
  bool is_lab = false;         // once assembled, pixels are still b*, a*, L*
  uint32_t tile_width = 0, tile_height = 0;
  // Empty if the library converts the colours.
  std::vector<Component> components;
  Colors colors;  // of a picture with a colour table

  unsigned planes() const { return has_planes ? samples : 1; }
  unsigned samples_in_plane() const { return has_planes ? 1 : samples; }
};

// Throws Failure for an unsupported variant, and for a page that claims more than a file of this size may.
TiffPage read_tags(const TiffHandle& tiff, uint64_t file_bytes);

}  // namespace codec
