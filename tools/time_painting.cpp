// How long a window takes to paint what is seen of a large picture, as a ratio to a picture of the window's size.
// usage: time_painting
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <vorel32.h>

namespace {

constexpr int kWidth = 1000, kHeight = 700, kLargeWidth = 12'000, kLargeHeight = 9'000;

ImgDisplayState state;

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return message == WM_PAINT ? DisplayWmPaint(window, &state) : DefWindowProcA(window, message, wParam, lParam);
}

HGLOBAL picture(int width, int height, int depth) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<WORD>(depth);
  const size_t colors = depth <= 8 ? size_t{1} << depth : 0, stride = static_cast<size_t>((width * depth + 31) / 32 * 4);
  const size_t size = sizeof header + 4 * colors + stride * static_cast<size_t>(height);
  HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
  auto* bytes = static_cast<uint8_t*>(GlobalLock(block));
  if (bytes == nullptr) return nullptr;
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 2'654'435'761u >> 13);
  std::memcpy(bytes, &header, sizeof header);
  GlobalUnlock(block);
  return block;
}

double milliseconds_a_painting(HWND window) {
  constexpr int kTimes = 20;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kTimes; ++i) {
    InvalidateRect(window, nullptr, FALSE);
    UpdateWindow(window);
    GdiFlush();
  }
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count() / kTimes;
}

}  // namespace

int main() {
  const WNDCLASSA window_class{0, procedure, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, "time_painting"};
  RegisterClassA(&window_class);
  HWND window = CreateWindowA("time_painting", "", WS_POPUP, 0, 0, kWidth, kHeight, nullptr, nullptr, nullptr, nullptr);
  ShowWindow(window, SW_SHOWNOACTIVATE);
  constexpr UINT kNoBars = IMG_DISPLAY_NO_HSCROLL | IMG_DISPLAY_NO_VSCROLL;
  for (int depth : {1, 8, 24}) {
    HGLOBAL small = picture(kWidth, kHeight, depth), large = picture(kLargeWidth, kLargeHeight, depth);
    if (small == nullptr || large == nullptr) return 1;
    int middle[4] = {kLargeWidth / 2, kLargeHeight / 2, 0, 0};
    const int enlarged[] = {4, 1, 4, 1};
    DisplayDIBStart(window, small, nullptr, nullptr, kNoBars, &state);
    const double alone = milliseconds_a_painting(window);
    const auto tell = [&](const char* name, int* view, const int* zoom, UINT flags) {
      DisplayDIBStart(window, large, view, zoom, kNoBars | flags, &state);
      std::printf("%2d bits, %-13s %6.2f times\n", depth, name, milliseconds_a_painting(window) / alone);
    };
    tell("plain", middle, nullptr, 0);
    tell("enlarged", middle, enlarged, 0);
    tell("fitted", nullptr, nullptr, IMG_DISPLAY_FIT);
    tell("fit to width", nullptr, nullptr, IMG_DISPLAY_FIT_WIDTH);
    std::printf("%2d bits: a picture of the window's size takes %.2f ms\n", depth, alone);
    DisplayWmDestroy(window, 0, 0, &state);
    GlobalFree(small);
    GlobalFree(large);
  }
  return 0;
}
