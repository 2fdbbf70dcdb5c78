// How long the viewer takes to load and show files, to zoom, to scroll and to turn pages.
// usage: time_viewer FILE...
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "viewer/failure.h"
#include "viewer/viewer_window.h"

namespace {

using namespace vorel::viewer;

double now() {
  using Milliseconds = std::chrono::duration<double, std::milli>;
  return Milliseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void pump() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

// Runs an action and everything that the window does about it, painting included.
template <class Action>
double milliseconds_of(ViewerWindow& viewer, Action action) {
  const double start = now();
  action();
  for (pump(); viewer.is_loading(); pump()) WaitMessage();
  RedrawWindow(viewer.canvas().window(), nullptr, nullptr, RDW_UPDATENOW);
  GdiFlush();
  return now() - start;
}

double load_alone(const std::filesystem::path& path) {
  const double start = now();
  try {
    load_page({path, 1});
  } catch (const Failure&) {  // its time counts all the same
  }
  return now() - start;
}

// Frames a second of steps that each repaint.
template <class Step>
double frames(ViewerWindow& viewer, Step step) {
  constexpr int kSteps = 30;
  double sum = 0;
  for (int i = 0; i < kSteps; ++i) sum += milliseconds_of(viewer, [&] { step(i); });
  return 1000 * kSteps / sum;
}

void scroll(const ViewerWindow& viewer, int i) {
  constexpr int kPixels = 24;
  const HWND canvas = viewer.canvas().window();
  const POINT from = {400, 300}, to = {400 - kPixels, i % 2 == 0 ? 300 - kPixels : 300 + kPixels / 2};
  SendMessageW(canvas, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(from.x, from.y));
  SendMessageW(canvas, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(to.x, to.y));
  SendMessageW(canvas, WM_LBUTTONUP, 0, MAKELPARAM(to.x, to.y));
}

void measure(ViewerWindow& viewer, const std::filesystem::path& path) {
  const double loading = load_alone(path);
  const double shown = milliseconds_of(viewer, [&] { viewer.open(path, ViewerWindow::Telling::kStatus); });
  std::printf("%-14s load %7.0f ms, open and show %7.0f ms", path.filename().string().c_str(), loading, shown);
  if (viewer.document().is_open() && viewer.document().path() == path) {
    Canvas& canvas = viewer.canvas();
    const auto change = [&](void (*action)(View&)) { return [&canvas, action](int) { canvas.change(action); }; };
    const double fit = frames(viewer, change([](View& view) { view.set_sizing(Sizing::kFit); }));
    const double reduced = frames(viewer, [&](int i) {
      canvas.change([i](View& view) { view.zoom_by_step(i % 6 < 3 ? View::Step::kLarger : View::Step::kSmaller); });
    });
    canvas.change([](View& view) { view.zoom_to_actual_size(); });
    const double dragged = frames(viewer, [&](int i) { scroll(viewer, i); });
    std::printf(", frames a second: fitted %.0f, zooming %.0f, scrolling %.0f", fit, reduced, dragged);
    if (viewer.document().pages() > 1) {
      const double page = milliseconds_of(viewer, [&] { viewer.go_by_page(View::Way::kOn); });
      Sleep(1000);
      const double ahead = milliseconds_of(viewer, [&] { viewer.go_by_page(View::Way::kOn); });
      std::printf("; next page %.0f ms, read ahead %.0f ms", page, ahead);
    }
  }
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_BAR_CLASSES};
  InitCommonControlsEx(&controls);
  ViewerWindow viewer;
  if (!viewer.create(SW_SHOWNORMAL)) return 1;
  SetWindowPos(viewer.window(), nullptr, 0, 0, 1200, 900, SWP_NOZORDER);
  for (int i = 1; i < count; ++i) measure(viewer, std::filesystem::absolute(arguments[i]));
  DestroyWindow(viewer.window());
  return 0;
}
