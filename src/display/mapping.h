// The mapping between image pixels and window pixels, scroll ranges and visible parts: pure arithmetic.
#pragma once

#include <cstdint>

#include <vorel32.h>

namespace vorel::display {

struct Point {
  int x = 0, y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

// Left and top are inside, right and bottom are outside.
struct Box {
  int left = 0, top = 0, right = 0, bottom = 0;

  bool is_empty() const { return right <= left || bottom <= top; }
  int64_t width() const { return int64_t{right} - left; }
  int64_t height() const { return int64_t{bottom} - top; }
  Box grown_by(int pixels) const;
  friend bool operator==(const Box&, const Box&) = default;
};

Box intersection(const Box& a, const Box& b);

// One axis of an anisotropic mapping: `viewport` device units equal `window` logical units; device 0 is logical `origin`.
struct AxisMapping {
  int window = 1, viewport = 1;  // both positive
  int origin = 0;                // logical

  // Rounded to the nearest unit, halves up.
  int to_device(int logical) const;
  int to_logical(int device) const;
  friend bool operator==(const AxisMapping&, const AxisMapping&) = default;
};

struct Mapping {
  AxisMapping x, y;

  Point to_device(Point logical) const { return {x.to_device(logical.x), y.to_device(logical.y)}; }
  Point to_logical(Point device) const { return {x.to_logical(device.x), y.to_logical(device.y)}; }
  Box to_device(const Box& logical) const;
  Box to_logical(const Box& device) const;
  // The same scale with logical (0, 0) at device (0, 0).
  Mapping without_origin() const;
};

// Whether set_up_mapping recomputes the centring offsets and resets the scroll positions of a fitted image.
enum class Offsets { kReset, kKeep };

// Computes the mapping from a display's options, zoom and resolutions. Records the origins in the layout.
Mapping set_up_mapping(ImgDisplayLayout& layout, Offsets offsets);

// Whether `after` puts every logical point exactly `offset` device units from where `before` puts it. Rounded origins can
// differ by fractions of a unit.
bool is_moved_by(Point offset, const Mapping& before, const Mapping& after);

// The ranges span the whole image, not the image minus the window.
void set_scroll_ranges(ImgDisplayLayout& layout, const Mapping& mapping);

// Moves the positions into their ranges. Returns true if they were in range already. A centred image smaller than the window
// keeps position 0, which is outside its range: 0 is where it is centred.
bool clamp_positions(ImgDisplayLayout& layout);

// Sets the positions that show an image point in the upper left corner.
void bring_to_corner(ImgDisplayLayout& layout, const Mapping& mapping, Point image_point);

Box client_box(const ImgDisplayLayout& layout);

// The device rectangle of the whole image.
Box image_box(const ImgDisplayLayout& layout, const Mapping& mapping);

// The part of the image to draw for the device rectangle `painted`: a few pixels larger on every side and extended to whole
// groups of image pixels, so that parts drawn separately fit together. With `whole_rows` it has the full width.
Box visible_part(const ImgDisplayLayout& layout, const Mapping& mapping, const Box& painted, bool whole_rows);

// Whether the visible part ends at a whole group of image pixels. A group cut off by the image's edge changes the scaling of
// everything drawn in the same call, so parts drawn separately would differ from the whole.
bool shows_whole_groups(const ImgDisplayLayout& layout, const Mapping& mapping, bool whole_rows);

// Dots per inch from a header's pixels per metre. Below 1 if the header does not state a resolution.
int dots_per_inch(int pixels_per_metre);

}  // namespace vorel::display
