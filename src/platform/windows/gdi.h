// Owning types for GDI objects, device contexts and selections.
#pragma once

#include <utility>

#include "platform/win32.h"

namespace vorel {

// A GDI object (bitmap, palette, pen, ...) that is deleted with its scope unless it is released to the caller.
template <class Handle>
class OwnedObject {
 public:
  OwnedObject() = default;
  explicit OwnedObject(Handle handle) : handle_(handle) {}
  OwnedObject(OwnedObject&& other) noexcept : handle_(other.release()) {}
  OwnedObject& operator=(OwnedObject&& other) noexcept {
    OwnedObject old(std::exchange(handle_, other.release()));
    return *this;
  }
  ~OwnedObject() {
    if (handle_ != nullptr) DeleteObject(handle_);
  }

  explicit operator bool() const { return handle_ != nullptr; }
  Handle get() const { return handle_; }
  [[nodiscard]] Handle release() { return std::exchange(handle_, nullptr); }

 private:
  Handle handle_ = nullptr;
};

using OwnedBitmap = OwnedObject<HBITMAP>;
using OwnedPalette = OwnedObject<HPALETTE>;
using OwnedPen = OwnedObject<HPEN>;
using OwnedRegion = OwnedObject<HRGN>;

// A window's device context; without a window, the screen's.
class WindowDc {
 public:
  explicit WindowDc(HWND window) : window_(window), dc_(GetDC(window)) {}
  WindowDc(const WindowDc&) = delete;
  WindowDc& operator=(const WindowDc&) = delete;
  ~WindowDc() {
    if (dc_ != nullptr) ReleaseDC(window_, dc_);
  }

  explicit operator bool() const { return dc_ != nullptr; }
  HDC get() const { return dc_; }

 private:
  HWND window_;
  HDC dc_;
};

class ScreenDc : public WindowDc {
 public:
  ScreenDc() : WindowDc(nullptr) {}
};

// A device context that is deleted with its scope unless it is released to the caller.
class OwnedDc {
 public:
  explicit OwnedDc(HDC dc) : dc_(dc) {}
  OwnedDc(OwnedDc&& other) noexcept : dc_(other.release()) {}
  OwnedDc& operator=(OwnedDc&&) = delete;
  ~OwnedDc() {
    if (dc_ != nullptr) DeleteDC(dc_);
  }

  explicit operator bool() const { return dc_ != nullptr; }
  HDC get() const { return dc_; }
  [[nodiscard]] HDC release() { return std::exchange(dc_, nullptr); }

 private:
  HDC dc_;
};

// A memory device context compatible with another one or, without one, with the screen.
class MemoryDc : public OwnedDc {
 public:
  explicit MemoryDc(HDC compatible_with) : OwnedDc(CreateCompatibleDC(compatible_with)) {}
};

// Saves mapping, clipping, colours, modes and selected objects of a context for a scope and restores them.
class [[nodiscard]] SavedDc {
 public:
  explicit SavedDc(HDC dc) : dc_(dc), level_(SaveDC(dc)) {}
  SavedDc(const SavedDc&) = delete;
  SavedDc& operator=(const SavedDc&) = delete;
  ~SavedDc() {
    if (level_ != 0) RestoreDC(dc_, level_);
  }

 private:
  HDC dc_;
  int level_;
};

// Selects an object for a scope. Declared after context and object, so that it is undone before either is destroyed.
class [[nodiscard]] Selection {
 public:
  Selection(HDC dc, HGDIOBJ object) : dc_(dc), previous_(SelectObject(dc, object)) {}
  Selection(const Selection&) = delete;
  Selection& operator=(const Selection&) = delete;
  ~Selection() {
    if (previous_ != nullptr) SelectObject(dc_, previous_);
  }

 private:
  HDC dc_;
  HGDIOBJ previous_;
};

// Whether a palette may take the screen's entries for itself, or is limited to the existing ones.
enum class PaletteUse : BOOL { kForeground = FALSE, kBackground = TRUE };

// Selects and realises a palette for a scope; without a palette it does nothing.
class [[nodiscard]] PaletteSelection {
 public:
  PaletteSelection(HDC dc, HPALETTE palette, PaletteUse use = PaletteUse::kForeground)
      : dc_(dc), use_(use), previous_(palette == nullptr ? nullptr : SelectPalette(dc, palette, static_cast<BOOL>(use))) {
    if (palette != nullptr) RealizePalette(dc);
  }
  PaletteSelection(const PaletteSelection&) = delete;
  PaletteSelection& operator=(const PaletteSelection&) = delete;
  ~PaletteSelection() {
    if (previous_ != nullptr) SelectPalette(dc_, previous_, static_cast<BOOL>(use_));
  }

 private:
  HDC dc_;
  PaletteUse use_;
  HPALETTE previous_;
};

}  // namespace vorel
