// A window over the whole screen.
#pragma once

#include "viewer/system.h"

namespace vorel::viewer {

class FullScreen {
 public:
  bool is_on() const { return is_on_; }
  void toggle(HWND window);

 private:
  void enter(HWND window);
  void leave(HWND window);

  bool is_on_ = false;
  WINDOWPLACEMENT placement_{};
  LONG_PTR style_ = 0;
  HMENU menu_ = nullptr;
};

}  // namespace vorel::viewer
