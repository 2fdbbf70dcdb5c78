// The picture in a window with scroll bars: the library's display and the options chosen for it.
#pragma once

#include <vorel32.h>

#include "viewer/logic/zoom.h"

namespace vorel::viewer {

// How the displayed size of a picture is chosen.
enum class Sizing { kRatio, kFit, kFitWidth, kStretch };

// Options besides the sizing: IMG_DISPLAY_CENTRE, IMG_DISPLAY_RESOLUTION and IMG_DISPLAY_INVERTED.
using Option = UINT;

class View {
 public:
  // The window forwards WM_CREATE, WM_SIZE, WM_PAINT, WM_HSCROLL, WM_VSCROLL and WM_DESTROY.
  void create(HWND window);
  void resized();
  void paint();
  void scroll(int bar, WPARAM wParam);
  void destroy();
  // On displays with a palette: realises the picture's palette in the foreground. The library paints in the background.
  void realise_palette();

  // Shows another picture or, for a null handle, none. The DIB must live until the next is shown.
  //   show_first    at its actual size, or fitted if it is larger than the window
  //   show_next     with the sizing of the previous picture
  //   show_changed  with the sizing and the place of the previous picture
  void show_first(HGLOBAL dib);
  void show_next(HGLOBAL dib);
  void show_changed(HGLOBAL dib);

  bool is_showing() const { return dib_ != nullptr; }
  Sizing sizing() const { return sizing_; }
  bool has(Option option) const { return (options_ & option) != 0; }
  double scale() const;  // horizontal: window pixels per picture pixel

  void set_sizing(Sizing sizing);
  void toggle(Option option);
  void zoom_to_actual_size();
  // A step along the library's table. The picture point at `at`, by default the middle of the window, stays there.
  enum class Step { kLarger, kSmaller };
  void zoom_by_step(Step step, const POINT* at = nullptr);

  // A rectangle dragged with the mouse fills the window. A click without dragging is a step.
  void begin_band(POINT mouse, Step step_of_click);
  void move_band(POINT mouse);
  void end_band(POINT mouse);
  void cancel_band();

  void scroll_by(int x, int y);  // pixels of the window; 0 in both brings the picture back into view

  // For the lens and other drawing of the same picture.
  POINT image_point(POINT at) const;
  HGLOBAL dib() const { return dib_; }
  HPALETTE palette() const { return state_.palette; }

 private:
  void start();
  void start_in_place();
  void start_with_bars();
  void update_bars();
  UINT flags() const;
  Extent displayed() const;
  Extent whole_window() const;
  ScrolledAxis axis(int bar) const;
  int wanted_position(int bar, int code) const;
  void scroll_to(int bar, int position);
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
  mutable ImgDisplayState state_{};  // mapping a device context records its origins here
  ImgZoomTracker tracker_{};
};

}  // namespace vorel::viewer
