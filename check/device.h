// Inputs of a stage that only Windows has.
#pragma once

#include <memory>

#include "check/stage.h"
#include "win32/support/dialog.h"
#include "win32/support/gdi.h"
#include "win32/support/printer.h"
#include "win32/support/window.h"

namespace check {

struct DeviceInputs {
  test::Object<HBITMAP> mono = test::counting_bitmap(20, 20, 1), color = make_color();
  test::Object<HPALETTE> palette{make_palette()};
  HDC dc = CreateCompatibleDC(nullptr);
  test::Object<HBITMAP> canvas = make_color();
  HGDIOBJ before = SelectObject(dc, canvas.get());
  HMETAFILE metafile = make_metafile();

  // Made by the first call that needs it.
  HWND window() {
    if (window_ == nullptr) window_ = std::make_unique<test::ActiveWindow>();
    // Another program may have been activated meanwhile.
    if (GetActiveWindow() != window_->get()) SetActiveWindow(window_->get());
    return window_->get();
  }

  ~DeviceInputs() {
    DeleteMetaFile(metafile);
    SelectObject(dc, before);
    DeleteDC(dc);
  }

  static test::Object<HBITMAP> make_color();
  static HPALETTE make_palette();
  static HMETAFILE make_metafile();

 private:
  std::unique_ptr<test::ActiveWindow> window_;
};

}  // namespace check
