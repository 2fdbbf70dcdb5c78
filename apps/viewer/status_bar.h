// The bar at the bottom of the window: facts about the picture, or a message over its whole width.
#pragma once

#include <string>

#include "viewer/gdi.h"
#include "viewer/logic/texts.h"

namespace vorel::viewer {

class StatusBar {
 public:
  bool create(HWND parent, WORD id);
  void follow_dpi();
  HWND window() const { return window_; }

  // At the bottom of its parent. Returns its height, 0 while it is hidden.
  int lay_out(int width, bool is_hidden) const;

  void show(const PictureFacts& facts) const;       // empty ones without a picture
  void show_pixel(const std::wstring& text) const;  // position and colour under the mouse
  void tell(const std::wstring& message) const;     // until it is told an empty one

 private:
  HWND window_ = nullptr;
  OwnedFont font_;
};

}  // namespace vorel::viewer
