// How a picture is shown in a window with scroll bars: the library's display, and what is chosen about it.
#pragma once

#include <vorel32.h>

#include "viewer/logic/zoom.h"

namespace vorel::viewer {

// What makes the size of a picture.
enum class Sizing { kRatio, kFit, kFitWidth, kStretch };

// Options that can be on or off besides: IMG_DISPLAY_CENTRE, IMG_DISPLAY_RESOLUTION and IMG_DISPLAY_INVERTED.
using Option = UINT;

class View {
 public:
  // Belongs to a window with scroll bars, and hears of all that it gets: WM_SIZE, WM_PAINT, WM_HSCROLL, WM_VSCROLL, WM_DESTROY.
  void create(HWND window);
  void resized();
  void paint();
  void scroll(int bar, WPARAM wParam);
  void destroy();
  // On displays with a palette: takes the picture's colours to the front. The library paints with what is there.
  void realise_palette();

  // Shows another picture, or none, from its beginning. The DIB must live until the next is shown.
  //   show_first    at its actual size, or as small as it takes to be seen whole
  //   show_next     as the picture before
  //   show_changed  as the picture before, and at the same place
  void show_first(HGLOBAL dib);
  void show_next(HGLOBAL dib);
  void show_changed(HGLOBAL dib);

  bool is_showing() const { return dib_ != nullptr; }
  Sizing sizing() const { return sizing_; }
  bool has(Option option) const { return (options_ & option) != 0; }
  double scale() const;  // across; of pixels on the screen to pixels of the picture

  void set_sizing(Sizing sizing);
  void toggle(Option option);
  void zoom_to_actual_size();
  // A step along the library's table. What is at a point of the window stays there, in its middle without a point.
  enum class Step { kLarger, kSmaller };
  void zoom_by_step(Step step, const POINT* at = nullptr);

  // A rectangle dragged with the mouse, which then fills the window. A click without dragging takes a step.
  void begin_band(POINT mouse, Step step_of_click);
  void move_band(POINT mouse);
  void end_band(POINT mouse);
  void cancel_band();

  void scroll_by(int x, int y);  // pixels of the window

  // For those who draw or look at the picture themselves.
  POINT image_point(POINT at) const;
  HGLOBAL dib() const { return dib_; }
  HPALETTE palette() const { return state_.palette; }

 private:
  struct Axis {
    int position, first, picture, window;  // device units
    bool is_larger_than_window() const { return picture > window; }
  };

  void start();
  void start_in_place();
  void start_with_bars();
  void update_bars();
  UINT flags() const;
  Extent displayed() const;
  Extent whole_window() const;
  Axis axis(int bar) const;
  void scroll_to(int bar, int position);
  void keep_in_view(int bar);
  void bring(POINT image_point, POINT at);
  void set_ratio(Ratio ratio, POINT image_point, POINT at);
  Ratio current_ratio() const;
  RECT current_ratio_rect() const;

  HWND window_ = nullptr;
  HGLOBAL dib_ = nullptr;
  Sizing sizing_ = Sizing::kRatio;
  Ratio ratio_ = kActualSize;
  Option options_ = IMG_DISPLAY_CENTRE;
  Bars bars_{};
  bool is_starting_ = false;
  mutable ImgDisplayState state_{};  // the library maps device contexts by it, and notes how
  ImgZoomTracker tracker_{};
};

}  // namespace vorel::viewer
