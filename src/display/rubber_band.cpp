#include "display/rubber_band.h"

#include <algorithm>
#include <optional>
#include <span>

#include "core/saturate.h"
#include "display/zoom_ratio.h"

namespace vorel::display {
namespace {

Point anchor_of(const ImgZoomTracker& tracker) { return {tracker.anchorX, tracker.anchorY}; }
Point corner_of(const ImgZoomTracker& tracker) { return {tracker.cornerX, tracker.cornerY}; }

Point in_client(HWND window, POINT point, const ImgZoomTracker& tracker) {
  if (tracker.screenCoordinates) ScreenToClient(window, &point);
  return point_of(point);
}

// Drawing the same twice restores the window.
template <class Draw>
void draw_inverting(HWND window, Draw draw) {
  const WindowDc dc(window);
  const SavedDc saved(dc.get());
  unmap(dc.get());
  SetROP2(dc.get(), R2_NOTXORPEN);
  draw(dc.get());
}

// The outline of a band as a closed line from its anchor.
struct BandCorners {
  BandCorners(Point anchor, Point corner)
      : points{
            {anchor.x, anchor.y}, {corner.x, anchor.y}, {corner.x, corner.y}, {anchor.x, corner.y}, {anchor.x, anchor.y}} {}
  POINT points[5];
};

void draw_band(HWND window, const ImgZoomTracker& tracker) {
  const BandCorners band(anchor_of(tracker), corner_of(tracker));
  draw_inverting(window, [&](HDC dc) {
    MoveToEx(dc, band.points[0].x, band.points[0].y, nullptr);
    for (const POINT& point : std::span(band.points).subspan(1)) LineTo(dc, point.x, point.y);
  });
}

// Erases the old band and draws the new one as a single line.
void redraw_band(HWND window, const ImgZoomTracker& tracker, Point mouse) {
  const BandCorners old(anchor_of(tracker), corner_of(tracker)), moved(anchor_of(tracker), mouse);
  POINT line[9];
  std::ranges::copy(old.points, line);
  std::ranges::copy(std::span(moved.points).subspan(1), line + 5);
  draw_inverting(window, [&](HDC dc) { Polyline(dc, line, static_cast<int>(std::size(line))); });
}

void set_result(ImgZoomTracker& tracker, Ratio ratio) {
  tracker.resultViewportX = tracker.resultViewportY = ratio.viewport;
  tracker.resultWindowX = tracker.resultWindowY = ratio.window;
}

void set_result(ImgZoomTracker& tracker, Point corner) {
  tracker.resultLeft = corner.x;
  tracker.resultTop = corner.y;
}

// The horizontal ratio is used for both axes.
void step_ratio(ImgZoomTracker& tracker) {
  const Ratio start = {tracker.startViewportX, tracker.startWindowX};
  set_result(tracker, stepped(start, zoom_action(tracker.mode), zoom_steps(thread_zoom_tables())));
}

// Ends mouse capture and erases the band. Returns whether the gesture is a rectangle.
bool take_band_away(HWND window, const Point* end, const ImgZoomTracker& tracker) {
  if (!(tracker.mode & kZoomByMouse)) return false;
  ReleaseCapture();
  if (tracker.bandShown) draw_band(window, tracker);
  return end != nullptr && is_drag(anchor_of(tracker), *end);
}

// The client area in image units at ratio 1, not fitted.
Box client_at_ratio_one(ImgDisplayLayout layout) {
  layout.zoomViewportX = layout.zoomWindowX = layout.zoomViewportY = layout.zoomWindowY = 1;
  layout.flags &= ~(IMG_DISPLAY_FIT | IMG_DISPLAY_FIT_WIDTH);
  return set_up_mapping(layout, Offsets::kKeep).to_logical(client_box(layout));
}

constexpr UINT kPositionedByZoom = 0x04;

// Copies the new ratio into the state. A quirk that is kept: the fit options are cleared only after the new mapping is made, so
// for a fitted image the corner follows from the fitted size.
void recentre(Point device_point, ImgZoomTracker& tracker, ImgDisplayLayout& layout) {
  const Point point = set_up_mapping(layout, Offsets::kKeep).to_logical(device_point);
  layout.zoomViewportX = tracker.resultViewportX;
  layout.zoomWindowX = tracker.resultWindowX;
  layout.zoomViewportY = tracker.resultViewportY;
  layout.zoomWindowY = tracker.resultWindowY;
  const Mapping mapping = set_up_mapping(layout, Offsets::kKeep);
  layout.flags = (layout.flags & ~(IMG_DISPLAY_FIT | IMG_DISPLAY_FIT_WIDTH)) | kPositionedByZoom;
  set_result(tracker, corner_around(point, mapping.to_logical(client_box(layout))));
}

Point centre_of(const Box& box) {
  return {static_cast<int>((int64_t{box.left} + box.right) / 2), static_cast<int>((int64_t{box.top} + box.bottom) / 2)};
}

void zoom_to_rectangle(Point end, ImgZoomTracker& tracker, ImgDisplayLayout& layout) {
  const Mapping mapping = set_up_mapping(layout, Offsets::kKeep);
  const Box rectangle = mapping.to_logical(ordered(anchor_of(tracker), end));
  const Ratio ratio = filling(rectangle, client_at_ratio_one(layout), thread_zoom_tables().base);
  set_result(tracker, ratio);
  recentre(mapping.to_device(centre_of(rectangle)), tracker, layout);
}

// The mapping of a window without a display state.
class ScreenMapping {
 public:
  explicit ScreenMapping(const ImgScreenZoom& state)
      : state_(state), client_(box_of(state.client)), zoom_(box_of(state.zoom)) {}

  bool is_usable() const { return !client_.is_empty() && !zoom_.is_empty(); }
  Point to_logical(Point device) const {
    const Mapping mapping = {{saturated(zoom_.width()), saturated(client_.width()), zoom_.left},
                             {saturated(zoom_.height()), saturated(client_.height()), zoom_.top}};
    return mapping.to_logical(
        Point{saturated(int64_t{device.x} - client_.left), saturated(int64_t{device.y} - client_.top)});
  }
  // The size of the client area in picture pixels at a ratio. Corrected for screens whose dots are not square.
  Box client_at(Ratio ratio) const {
    const int64_t window = std::max(ratio.window, 1), viewport = std::max(ratio.viewport, 1);
    const int64_t dpi_x = std::max(state_.screenDpiX, 1), dpi_y = std::max(state_.screenDpiY, 1);
    const int64_t width = saturated(client_.width()), height = saturated(saturated(client_.height()) * dpi_x / dpi_y);
    return {0, 0, saturated(width * window / viewport), saturated(height * window / viewport)};
  }

 private:
  const ImgScreenZoom& state_;
  Box client_, zoom_;
};

void recentre(Point point, ImgZoomTracker& tracker, const ScreenMapping& mapping, ImgScreenZoom& state) {
  const Box shown = mapping.client_at({tracker.resultViewportX, tracker.resultWindowX});
  const Point corner = corner_around(point, shown);
  set_result(tracker, corner);
  state.zoom =
      rect_of({corner.x, corner.y, saturated(int64_t{corner.x} + shown.right), saturated(int64_t{corner.y} + shown.bottom)});
}

Point mouse_of(const MSG& message) {
  return {static_cast<int16_t>(LOWORD(message.lParam)), static_cast<int16_t>(HIWORD(message.lParam))};
}

void draw_rectangle(HDC dc, Point a, Point b) { Rectangle(dc, a.x, a.y, b.x, b.y); }

// The thread's next mouse message; none if the application quits. Peeks before it waits: WaitMessage returns for new
// messages only.
std::optional<MSG> next_mouse_message() {
  constexpr UINT kFirstOfMouse = WM_MOUSEFIRST, kLastOfMouse = WM_MBUTTONDBLCLK;
  MSG message{};
  while (!PeekMessageA(&message, nullptr, kFirstOfMouse, kLastOfMouse, PM_REMOVE))
    if (!WaitMessage()) return std::nullopt;
  if (message.message != WM_QUIT) return message;
  PostQuitMessage(static_cast<int>(message.wParam));  // for the application's loop
  return std::nullopt;
}

// Follows the mouse until the left button is released. Returns the last position.
Point follow_mouse(HDC dc, Point start) {
  Point corner = start;
  bool is_pressed = true;
  while (is_pressed) {
    const auto message = next_mouse_message();
    if (!message) break;
    is_pressed = message->message != WM_LBUTTONUP;
    const Point mouse = mouse_of(*message);
    POINT logical = {mouse.x, mouse.y};
    DPtoLP(dc, &logical, 1);
    if (point_of(logical) == corner) continue;
    draw_rectangle(dc, start, corner);
    corner = point_of(logical);
    draw_rectangle(dc, start, corner);
  }
  draw_rectangle(dc, start, corner);
  return corner;
}

// Confines the cursor to the client area for a scope.
class [[nodiscard]] ConfinedCursor {
 public:
  ConfinedCursor(HWND window, const Box& client) {
    POINT corners[2] = {{client.left, client.top}, {client.right, client.bottom}};
    for (POINT& corner : corners) ClientToScreen(window, &corner);
    const RECT area = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
    ClipCursor(&area);
  }
  ConfinedCursor(const ConfinedCursor&) = delete;
  ConfinedCursor& operator=(const ConfinedCursor&) = delete;
  ~ConfinedCursor() { ClipCursor(nullptr); }
};

Point dragged_corner(HWND window, const Box& client, Point start) {
  const ConfinedCursor confined(window, client);
  const WindowDc dc(window);
  const SavedDc saved(dc.get());
  SetROP2(dc.get(), R2_NOTXORPEN);
  return follow_mouse(dc.get(), start);
}

}  // namespace

void start_zoom(HWND window, const POINT* start, const RECT* current, int mode, bool screen_coordinates,
                ImgZoomTracker& tracker) {
  tracker = {};
  tracker.mode = mode;
  tracker.screenCoordinates = screen_coordinates;
  const Point point = start == nullptr ? Point{} : in_client(window, *start, tracker);
  tracker.anchorX = tracker.cornerX = point.x;
  tracker.anchorY = tracker.cornerY = point.y;
  const LONG base = thread_zoom_tables().base;
  const RECT ratio = current != nullptr ? *current : RECT{base, base, base, base};
  tracker.startViewportX = static_cast<int>(ratio.left);
  tracker.startWindowX = static_cast<int>(ratio.top);
  tracker.startViewportY = static_cast<int>(ratio.right);
  tracker.startWindowY = static_cast<int>(ratio.bottom);
  if (mode & kZoomByMouse) SetCapture(window);
}

void move_band(HWND window, const POINT& mouse, ImgZoomTracker& tracker) {
  constexpr int kFirstBand = 5;  // pixels
  if (!(tracker.mode & kZoomByMouse)) return;
  const Point point = in_client(window, mouse, tracker);
  if (!tracker.bandShown) {
    if (!is_drag(anchor_of(tracker), point)) return;
    tracker.cornerX = saturated(int64_t{tracker.cornerX} + kFirstBand);
    tracker.cornerY = saturated(int64_t{tracker.cornerY} + kFirstBand);
    tracker.bandShown = 1;
    draw_band(window, tracker);
  }
  redraw_band(window, tracker, point);
  tracker.cornerX = point.x;
  tracker.cornerY = point.y;
}

void end_zoom(HWND window, const POINT* end, ImgZoomTracker& tracker, ImgDisplayState& state) {
  const Point point = end == nullptr ? Point{} : in_client(window, *end, tracker);
  const bool is_rectangle = take_band_away(window, end == nullptr ? nullptr : &point, tracker);
  set_result(tracker, Point{state.layout.originLogicalX, state.layout.originLogicalY});
  if (is_rectangle) return zoom_to_rectangle(point, tracker, state.layout);
  step_ratio(tracker);
  if (end != nullptr) recentre(point, tracker, state.layout);
}

void end_screen_zoom(HWND window, const POINT* end, ImgZoomTracker& tracker, ImgScreenZoom& state) {
  const Point point = end == nullptr ? Point{} : in_client(window, *end, tracker);
  const bool is_rectangle = take_band_away(window, end == nullptr ? nullptr : &point, tracker);
  const ScreenMapping mapping(state);
  set_result(tracker, Point{static_cast<int>(state.zoom.left), static_cast<int>(state.zoom.top)});
  step_ratio(tracker);
  if (!mapping.is_usable()) return;
  Point centre = centre_of(box_of(state.zoom));
  if (is_rectangle) {
    const Box device = ordered(anchor_of(tracker), point);
    const Point first = mapping.to_logical(Point{device.left, device.top});
    const Point last = mapping.to_logical(Point{device.right, device.bottom});
    const Ratio ratio = filling({first.x, first.y, last.x, last.y}, mapping.client_at({}), thread_zoom_tables().base);
    set_result(tracker, ratio);
    centre = centre_of({first.x, first.y, last.x, last.y});
  } else if (end != nullptr) {
    centre = mapping.to_logical(point);
  }
  recentre(centre, tracker, mapping, state);
}

void drag_zoom(HWND window, Point start, int* zoom) {
  const Box client = client_of(window);
  const RECT area = rect_of(client);
  if (!PtInRect(&area, {start.x, start.y})) {
    MessageBeep(0);
    return;
  }
  const Point corner = dragged_corner(window, client, start);
  const int hundredths = filling_hundredths(std::span<const int, 4>(zoom, 4), ordered(start, corner), client_of(window));
  constexpr int kHundred = 100;
  zoom[0] = zoom[2] = hundredths;
  zoom[1] = zoom[3] = kHundred;
  InvalidateRect(window, nullptr, TRUE);
  UpdateWindow(window);
}

}  // namespace vorel::display
