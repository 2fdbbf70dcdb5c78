#include "viewer/lens.h"

#include <algorithm>

#include "viewer/dpi.h"
#include "viewer/failure.h"

namespace vorel::viewer {
namespace {

constexpr int kTimes = 2;  // the view's scale times this, at least actual size

Bitmap picture_for_lens(const View& view) {
  SetImgError(IMG_OK);
  Bitmap bitmap(ConvertDIBToBitmap(view.picture().get()));
  if (!bitmap) throw Failure(L"The lens cannot be shown: " + reason(0, L"there is not enough memory"));
  if (view.has(IMG_DISPLAY_INVERTED)) InvertBitmap(bitmap.get());
  return bitmap;
}

void set_lens_size(HWND window) {
  constexpr int kWidth = 240, kHeight = 160;
  M_SetSizes(scaled_for(window, kWidth), scaled_for(window, kHeight));
}

}  // namespace

Lens::Lens(HWND window, const View& view) : window_(window), view_(view), picture_(picture_for_lens(view)) {
  const Ratio ratio = ratio_for(std::max(view.scale() * kTimes, 1.0));
  zoom_[0] = zoom_[2] = ratio.viewport;
  zoom_[1] = zoom_[3] = ratio.window;
  set_lens_size(window);
  M_StartMagnify(window, view.palette());
}

Lens::~Lens() { M_StopMagnify(); }

void Lens::move_to(POINT mouse) {
  const POINT middle = view_.image_point(mouse);
  RECT part{};
  M_CalcRect(middle.x, middle.y, zoom_, &part);
  M_StretchBitmap(picture_.get(), part.left, part.top, part.right - part.left, part.bottom - part.top);
  M_CopyBitmap(window_, mouse.x - M_GetWidth() / 2, mouse.y - M_GetHeight() / 2);
}

}  // namespace vorel::viewer
