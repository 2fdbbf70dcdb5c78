// How a window maps image pixels to its own, and what follows from it: in numbers alone.
#pragma once

#include <cstdint>

#include <vorel32.h>

namespace vorel {

struct Point {
  int x = 0, y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

// Left and top belong to it, right and bottom no more.
struct Box {
  int left = 0, top = 0, right = 0, bottom = 0;

  bool is_empty() const { return right <= left || bottom <= top; }
  int64_t width() const { return int64_t{right} - left; }
  int64_t height() const { return int64_t{bottom} - top; }
  Box grown_by(int pixels) const;
  friend bool operator==(const Box&, const Box&) = default;
};

Box intersection(const Box& a, const Box& b);

// One axis of an anisotropic mapping: `viewport` device units are as long as `window` logical ones, and device 0 shows `origin`.
struct AxisMapping {
  int window = 1, viewport = 1;  // both positive
  int origin = 0;                // logical

  // To the nearest unit, halves going up.
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
  // The same scale, logical (0, 0) at device (0, 0).
  Mapping without_origin() const;
};

// Whether setting up a mapping works out anew how far a centred image is moved, and takes a fitted one back to its start.
enum class Offsets { kReset, kKeep };

// The mapping that a display's options, zoom and resolutions ask for; notes in the layout where its origins lie.
Mapping set_up_mapping(ImgDisplayLayout& layout, Offsets offsets);

// Whether each logical point lies exactly `way` device units further under `after`; a rounded origin makes it less or more.
bool is_moved_by(Point way, const Mapping& before, const Mapping& after);

// The ranges span the whole image, not the image less the window.
void set_scroll_ranges(ImgDisplayLayout& layout, const Mapping& mapping);

// Moves the positions into their ranges and tells whether nothing had to be moved. A centred image smaller than the window
// may stand at 0, which is outside its range: that is where it is centred.
bool clamp_positions(ImgDisplayLayout& layout);

// Moves the positions so that an image point comes to the left upper corner.
void bring_to_corner(ImgDisplayLayout& layout, const Mapping& mapping, Point image_point);

Box client_box(const ImgDisplayLayout& layout);

// The device rectangle of the whole image.
Box image_box(const ImgDisplayLayout& layout, const Mapping& mapping);

// The part of the image that painting `painted`, in device units, has to draw: some pixels more on every side, and whole
// groups of image pixels, so that what is drawn in parts fits together. `whole_rows` is for what is drawn row by row.
Box visible_part(const ImgDisplayLayout& layout, const Mapping& mapping, const Box& painted, bool whole_rows);

// Whether the client area shows no part of a group that the image's end cuts off. Such a group is scaled together with all that
// is drawn with it, so that it comes out alike only when the same part is drawn.
bool shows_whole_groups(const ImgDisplayLayout& layout, const Mapping& mapping, bool whole_rows);

// Dots per inch of so many pixels per metre; 0 where these say nothing.
int dots_per_inch(int pixels_per_metre);

}  // namespace vorel
