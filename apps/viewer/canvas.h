// The part of the viewer's window that shows the picture, with its mouse and keyboard control.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "viewer/lens.h"
#include "viewer/view.h"

namespace vorel::viewer {

class Canvas {
 public:
  // Notifications to the owner. They may be called while the window handles a message.
  struct Events {
    std::function<void()> changed;                            // the displayed size
    std::function<void(const std::wstring& text)> failed;     // the reason of a failure
    std::function<void(std::optional<POINT> pixel)> pointed;  // at a pixel of the picture, or beside it
    std::function<void()> escaped;                            // Esc was pressed, and nothing here was to be ended
  };

  // What dragging with the left button does. Shift gives the other.
  enum class Dragging { kMove, kBand };

  bool create(HWND parent, Events events);
  HWND window() const { return window_; }

  // Every change of the view goes through here: it stops the lens and notifies the owner.
  void change(const std::function<void(View&)>& action);
  const View& view() const { return view_; }

  // Scrolling leaves the displayed size.
  bool scroll_by_screen(View::Way way);
  void scroll_to_end(View::Way way);

  void realise_palette() { view_.realise_palette(); }

  bool has_lens() const { return lens_.has_value(); }
  void toggle_lens();

  Dragging dragging() const { return dragging_; }
  void set_dragging(Dragging dragging) { dragging_ = dragging; }

  // The picture's pixel at a point of the window.
  std::optional<POINT> pixel_at(POINT at) const;

  void attach(HWND window) { window_ = window; }
  LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  LRESULT handle_display(UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT handle_mouse(UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT handle_key(UINT message, WPARAM wParam);
  void turn_wheel(UINT message, WPARAM wParam, LPARAM lParam);
  void press_button(POINT mouse, WPARAM keys, View::Step step);
  void release_button(POINT mouse);
  void move_mouse(POINT mouse);
  void switch_size(POINT mouse);
  void begin_band(POINT mouse, View::Step step);
  void end_band(POINT mouse);
  void cancel_band();
  void start_lens();
  void stop_lens();

  HWND window_ = nullptr;
  Events events_;
  View view_;
  std::optional<Lens> lens_;
  Dragging dragging_ = Dragging::kMove;
  bool has_band_ = false;
  std::optional<POINT> held_;  // the pixel that is dragged
  WheelSteps zoom_wheel_{1};
  WheelSteps scroll_wheel_{kPixelsPerNotch};

  static constexpr int kPixelsPerNotch = 96;
};

}  // namespace vorel::viewer
