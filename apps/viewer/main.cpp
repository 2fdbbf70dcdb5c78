// Vorel Viewer: looks through picture files, and changes them.
// usage: vorelview [PICTURE]
#include "viewer/system.h"
#include "viewer/viewer_window.h"

namespace {

// The first argument, if there is one.
std::filesystem::path picture_to_open() {
  int count = 0;
  LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  const std::filesystem::path path = count > 1 ? arguments[1] : L"";
  LocalFree(arguments);
  return path;
}

int run_messages(vorel::viewer::ViewerWindow& viewer) {
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (viewer.take_key(message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return static_cast<int>(message.wParam);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int show) {
  const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_BAR_CLASSES};
  InitCommonControlsEx(&controls);
  vorel::viewer::ViewerWindow viewer;
  if (!viewer.create(show)) return EXIT_FAILURE;
  const auto path = picture_to_open();
  constexpr auto kBox = vorel::viewer::ViewerWindow::Telling::kBox;
  if (!path.empty()) viewer.attempt([&] { viewer.open(path, kBox); }, kBox);
  return run_messages(viewer);
}
