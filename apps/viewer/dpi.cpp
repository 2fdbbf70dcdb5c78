#include "viewer/dpi.h"

#include "viewer/resource.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

constexpr int kUsualDpi = 96;

// A function of newer systems; null on older ones.
template <class Function>
Function* newer_function(const char* name) {
  const FARPROC address = GetProcAddress(GetModuleHandleW(L"user32.dll"), name);
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

int dpi_of(HWND window) {
  static const auto ask = newer_function<UINT WINAPI(HWND)>("GetDpiForWindow");
  if (const UINT dpi = ask != nullptr ? ask(window) : 0; dpi != 0) return static_cast<int>(dpi);
  const WindowDc dc(window);
  return GetDeviceCaps(dc.get(), LOGPIXELSX);
}

}  // namespace

int scaled_for(HWND window, int length) { return MulDiv(length, dpi_of(window), kUsualDpi); }

OwnedFont text_font_for(HWND window) {
  static const auto ask = newer_function<BOOL WINAPI(UINT, UINT, PVOID, UINT, UINT)>("SystemParametersInfoForDpi");
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  const auto dpi = static_cast<UINT>(dpi_of(window));
  if (ask == nullptr || !ask(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi))
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  return OwnedFont(CreateFontIndirectW(&metrics.lfStatusFont));
}

HICON icon_for(HWND window, IconSize size) {
  static const auto ask = newer_function<int WINAPI(int, UINT)>("GetSystemMetricsForDpi");
  const auto length = [&](int metric) {
    return ask != nullptr ? ask(metric, static_cast<UINT>(dpi_of(window))) : GetSystemMetrics(metric);
  };
  const bool is_small = size == IconSize::kSmall;
  return static_cast<HICON>(LoadImageW(this_program(), MAKEINTRESOURCEW(IDI_VIEWER), IMAGE_ICON,
                                       length(is_small ? SM_CXSMICON : SM_CXICON),
                                       length(is_small ? SM_CYSMICON : SM_CYICON), LR_SHARED));
}

}  // namespace vorel::viewer
