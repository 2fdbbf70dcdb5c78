// The picture in a window with scroll bars: the library's display and the options chosen for it. The library draws pictures at their
// size and larger; smaller ones are drawn from their reductions, which keep thin lines.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "viewer/gdi.h"
#include "viewer/logic/zoom.h"
#include "viewer/shown_picture.h"

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

  // Shows another picture or, for a null pointer, none.
  //   show_first    at its actual size, or fitted if it is larger than the window; as wide as the window if the previous one was
  //   show_next     with the sizing of the previous picture, at its beginning
  //   show_changed  with the sizing and the place of the previous picture
  void show_first(SharedPicture picture);
  void show_next(SharedPicture picture);
  void show_changed(SharedPicture picture);

  bool is_showing() const { return picture_ != nullptr; }
  Sizing sizing() const { return sizing_; }
  bool has(Option option) const { return (options_ & option) != 0; }
  double scale() const;  // horizontal: window pixels per picture pixel

  void set_sizing(Sizing sizing);
  void toggle(Option option);
  // The picture point at `at`, by default the middle of the window, stays there.
  void zoom_to_actual_size(const POINT* at = nullptr);
  // A step along the library's table, in the same way.
  enum class Step { kLarger, kSmaller };
  void zoom_by_step(Step step, const POINT* at = nullptr);

  // A rectangle dragged with the mouse fills the window. A click without dragging is a step.
  void begin_band(POINT mouse, Step step_of_click);
  void move_band(POINT mouse);
  void end_band(POINT mouse);
  void cancel_band();

  void scroll_by(int x, int y);  // pixels of the window; 0 in both brings the picture back into view

  // By a window's height down, then to the top of the next columns, or back. False at the end.
  enum class Way { kOn, kBack };
  bool scroll_by_screen(Way way);
  void scroll_to_end(Way way);

  // Scrolls until a point of the picture is at a point of the window, as nearly as whole steps allow.
  void bring(POINT image_point, POINT at);

  // For the lens and other drawing of the same picture.
  POINT image_point(POINT at) const;  // the edge of pixels that is nearest
  POINT pixel_at(POINT at) const;     // may lie beside the picture
  const programs::Picture& picture() const { return picture_->picture; }
  HPALETTE palette() const { return mixtures_ ? mixtures_.get() : state_.palette; }

 private:
  HGLOBAL dib() const { return picture_ ? picture_->picture.get() : nullptr; }
  bool is_reduced() const;
  void paint_reduced();
  void show(SharedPicture picture);
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
  void set_ratio(Ratio ratio, POINT image_point, POINT at);
  Ratio current_ratio() const;
  RECT current_ratio_rect() const;

  HWND window_ = nullptr;
  SharedPicture picture_;
  OwnedPalette mixtures_;  // on displays with a palette: the colours of reductions of pictures with two colours
  Sizing sizing_ = Sizing::kRatio;
  Ratio ratio_ = kActualSize;
  Option options_ = IMG_DISPLAY_CENTRE;
  Bars bars_{};
  bool is_starting_ = false;
  mutable ImgDisplayState state_{};  // mapping a device context records its origins here
  ImgZoomTracker tracker_{};
  std::vector<uint32_t> pixels_;  // of the part that was painted last: new memory for each would be slow
};

}  // namespace vorel::viewer
