// The magnifying lens over a view, for a scope.
#pragma once

#include "viewer/gdi.h"
#include "viewer/view.h"

namespace vorel::viewer {

class Lens {
 public:
  // The view must not change while the lens exists. Throws Failure if there is not enough memory for the picture.
  Lens(HWND window, const View& view);
  Lens(const Lens&) = delete;
  Lens& operator=(const Lens&) = delete;
  ~Lens();

  void move_to(POINT mouse);

 private:
  HWND window_;
  const View& view_;
  Bitmap picture_;
  int zoom_[4];  // numerator and denominator, horizontal, then vertical
};

}  // namespace vorel::viewer
