// The viewer's windows, in process: what they show beside what they should, and what they leave behind.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>

#include "common/saving.h"
#include "core/pixel.h"
#include "viewer/commands.h"
#include "viewer/failure.h"
#include "viewer/viewer_window.h"
#include "win32/support/window.h"

using namespace test;
using namespace vorel;
using namespace vorel::viewer;
using programs::Picture;

namespace {

constexpr int kWidth = 500, kHeight = 380;

// Lines and blocks in colours that every display has.
SharedPicture picture_of(int depth) {
  const Cells cells = {depth == 4 ? 60 : 731, depth == 4 ? 45 : 547, depth, depth == 4 ? 1 : 3};
  const Block block = block_of(cells.dib());
  Picture borrowed(block.get());
  SharedPicture picture = share(borrowed.copy());
  static_cast<void>(borrowed.release());
  return picture;
}

bool has_palette() {
  static const bool has = [] {
    const WindowDc dc(nullptr);
    return (GetDeviceCaps(dc.get(), RASTERCAPS) & RC_PALETTE) != 0;
  }();
  return has;
}

void pump() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

// A canvas in a window of its own.
class ShownCanvas {
 public:
  explicit ShownCanvas(const SharedPicture& picture)
      : frame_(kWidth, kHeight, [](HWND, UINT, WPARAM, LPARAM) { return false; }) {
    canvas.create(frame_.get(), {[] {}, [](const std::wstring&) {}, [](std::optional<POINT>) {}, [] {}});
    MoveWindow(canvas.window(), 0, 0, kWidth, kHeight, TRUE);
    canvas.change([&](View& view) { view.show_first(picture); });
  }

  Pixels shown() const {
    pump();
    const WindowDc dc(canvas.window());
    RECT client{};
    GetClientRect(canvas.window(), &client);
    return pixels_of(dc.get(), static_cast<int>(client.right), static_cast<int>(client.bottom));
  }
  Pixels repainted() const {
    RedrawWindow(canvas.window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    return shown();
  }
  void send(UINT message, WPARAM wParam, LPARAM lParam = 0) const { SendMessageW(canvas.window(), message, wParam, lParam); }

  Canvas canvas;

 private:
  Window frame_;
};

COLORREF color_of_pixel(const Picture& picture, int x, int y) {
  uint32_t color = 0;
  with_depth(picture.depth(), [&](auto depth) {
    color = programs::color_of(picture, Pixel<depth>::load(picture.pixels().row_from_top(y).data(), x));
  });
  return RGB(color >> 16 & 0xFF, color >> 8 & 0xFF, color & 0xFF);
}

// Enlarged and at actual size every window pixel has the colour of the picture's pixel under it. Enlarged by fractions the system
// may take the pixel beside it.
int wrong_pixels_enlarged(const ShownCanvas& shown, const Picture& picture) {
  const Pixels pixels = shown.repainted();
  const View& view = shown.canvas.view();
  const int slack = percent(view.scale()) % 100 == 0 ? 0 : 1;
  std::vector<int> columns, rows;
  for (int x = 0; x < pixels.width; ++x) columns.push_back(static_cast<int>(view.pixel_at({x, 0}).x));
  for (int y = 0; y < pixels.height; ++y) rows.push_back(static_cast<int>(view.pixel_at({0, y}).y));
  const auto is_inside = [&](int x, int y) { return x >= 0 && y >= 0 && x < picture.width() && y < picture.height(); };
  const auto is_right = [&](int x, int y) {
    const int column = columns[static_cast<size_t>(x)], row = rows[static_cast<size_t>(y)];
    // Around the picture there may be no such colour in a palette.
    if (!is_inside(column, row)) return has_palette() || pixels.at(x, y) == GetSysColor(COLOR_APPWORKSPACE);
    for (int v = row - slack; v <= row + slack; ++v)
      for (int u = column - slack; u <= column + slack; ++u)
        if (is_inside(u, v) && pixels.at(x, y) == color_of_pixel(picture, u, v)) return true;
    return false;
  };
  int wrong = 0;
  for (int y = 0; y < pixels.height; ++y)
    for (int x = 0; x < pixels.width; ++x) wrong += !is_right(x, y);
  return wrong;
}

// Reduced it has the mean of its area, whatever part is painted.
int wrong_pixels_reduced(const ShownCanvas& shown, const ShownPicture& picture, Ratio ratio) {
  const Pixels pixels = shown.repainted();
  const Size size = {scaled_length(picture.picture.width(), ratio), scaled_length(picture.picture.height(), ratio)};
  std::vector<uint32_t> expected(static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
  picture.reductions().draw(size, {0, 0, size.width, size.height}, expected);
  const int left = (pixels.width - size.width) / 2, top = (pixels.height - size.height) / 2;
  if (left < 0 || top < 0) return 0;  // scrolled: compared with a repaint by the random actions
  int wrong = 0;
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const uint32_t color = expected[static_cast<size_t>(y * size.width + x)];
      bool is_there = false;  // the space around the picture may be odd
      for (const int dx : {0, 1})
        for (const int dy : {0, 1})
          is_there |= left + x + dx < pixels.width && top + y + dy < pixels.height &&
                      pixels.at(left + x + dx, top + y + dy) == RGB(color >> 16 & 0xFF, color >> 8 & 0xFF, color & 0xFF);
      wrong += !is_there;
    }
  return wrong;
}

TEST(ViewerCanvas, ShowsThePictureAtEveryStep) {
  for (const int depth : {1, 4, 24}) {
    if (depth == 24 && has_palette()) continue;
    const SharedPicture picture = picture_of(depth);
    ShownCanvas shown(picture);
    shown.canvas.change([](View& view) { view.zoom_to_actual_size(); });
    for (int step = 0; step < 9; ++step) {
      SCOPED_TRACE(testing::Message() << depth << " bits, " << percent(shown.canvas.view().scale()) << " %");
      EXPECT_EQ(wrong_pixels_enlarged(shown, picture->picture), 0);
      shown.canvas.change([](View& view) { view.zoom_by_step(View::Step::kLarger); });
    }
    if (has_palette()) continue;  // mixtures are the nearest of its colours
    for (const int reduced : {24, 32, 48, 64, 128, 512}) {
      SCOPED_TRACE(testing::Message() << depth << " bits, 16 : " << reduced);
      shown.canvas.change([](View& view) { view.zoom_to_actual_size(); });
      while (percent(shown.canvas.view().scale()) > percent(16.0 / reduced))
        shown.canvas.change([](View& view) { view.zoom_by_step(View::Step::kSmaller); });
      EXPECT_EQ(wrong_pixels_reduced(shown, *picture, {16, reduced}), 0);
    }
  }
}

// Scrolling moves what is shown and paints the rest; that must be as a repaint of everything.
TEST(ViewerCanvas, StaysWholeWhateverHappens) {
  std::mt19937 random(22);
  const auto below = [&](unsigned bound) { return static_cast<int>(random() % bound); };
  for (const int depth : {1, 24}) {
    const SharedPicture picture = picture_of(depth);
    ShownCanvas shown(picture);
    const HWND window = shown.canvas.window();
    const Window other(160, 120, [](HWND, UINT, WPARAM, LPARAM) { return false; });
    std::string log;
    for (int action = 0; action < 500; ++action) {
      const int kind = below(9);
      const LPARAM at = MAKELPARAM(below(kWidth), below(kHeight));
      log += std::to_string(kind) + " ";
      switch (kind) {
        case 0:
        case 1: shown.send(kind == 0 ? WM_HSCROLL : WM_VSCROLL, static_cast<WPARAM>(below(4))); break;
        case 2: shown.send(WM_MOUSEWHEEL, MAKEWPARAM(below(2) ? MK_SHIFT : 0, 40 * (below(9) - 4))); break;
        case 3: shown.send(WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, below(2) ? 120 : -120), at); break;
        case 4:
          shown.send(WM_LBUTTONDOWN, MK_LBUTTON, at);
          shown.send(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(below(kWidth), below(kHeight)));
          shown.send(WM_LBUTTONUP, 0, at);
          break;
        case 5: MoveWindow(window, 0, 0, 100 + below(400), 80 + below(300), TRUE); break;
        case 6:
          for (int i = 0; i < 3; ++i)
            SetWindowPos(other.get(), HWND_TOP, 20 + below(400), 30 + below(300), 0, 0, SWP_NOSIZE | SWP_NOACTIVATE), pump();
          break;
        case 7: shown.canvas.change([&](View& view) { view.set_sizing(static_cast<Sizing>(below(4))); }); break;
        default: shown.canvas.change([&](View& view) { view.toggle(below(2) ? IMG_DISPLAY_INVERTED : IMG_DISPLAY_CENTRE); });
      }
      ShowWindow(other.get(), kind == 6 ? SW_SHOWNOACTIVATE : SW_HIDE);
      if (kind == 6) continue;
      const Pixels now = shown.shown();
      ASSERT_EQ(differing_pixels(now, shown.repainted()), 0) << depth << " bits, after " << log;
    }
  }
}

// ---- Commands ----

std::vector<std::wstring> letters_of(const std::vector<std::wstring>& names) {
  std::vector<std::wstring> letters;
  for (const std::wstring& name : names)
    if (const size_t at = name.find(L'&'); at != std::wstring::npos)
      letters.emplace_back(1, static_cast<wchar_t>(towupper(name[at + 1])));
  return letters;
}

// Everything is reached by keyboard: each row of a menu by a letter of its own, and no key stands for two commands.
TEST(ViewerCommands, HaveLettersAndKeysOfTheirOwn) {
  std::map<std::wstring, std::vector<std::wstring>> menus;
  std::vector<std::wstring> keys;
  for (const Command& command : commands()) {
    if (command.name.empty()) continue;
    std::vector<std::wstring>& menu = menus[command.menu];
    if (!command.submenu.empty()) {
      menus[command.menu + command.submenu].push_back(command.name);
      if (std::ranges::find(menu, command.submenu) == menu.end()) menu.push_back(command.submenu);
    } else {
      menu.push_back(command.name);
    }
    if (command.key.code != 0) keys.push_back(key_text(command.key));
  }
  for (const auto& [menu, names] : menus) {
    std::vector<std::wstring> letters = letters_of(names);
    EXPECT_EQ(letters.size(), names.size()) << narrowed(menu);
    std::ranges::sort(letters);
    const auto twice = std::ranges::adjacent_find(letters);
    EXPECT_TRUE(twice == letters.end()) << narrowed(menu) << ": " << narrowed(*twice);
  }
  std::ranges::sort(keys);
  EXPECT_TRUE(std::ranges::adjacent_find(keys) == keys.end());
}

// ---- Files ----

class Folder {
 public:
  Folder() { std::filesystem::create_directories(path_); }
  ~Folder() { std::filesystem::remove_all(path_); }
  std::filesystem::path add(const char* name, int depth) const {
    const auto file = path_ / name;
    programs::save_page(file.string(), picture_of(depth)->picture, {.format = format_of(IMG_FORMAT_BITMAP)}, 1);
    return file;
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_ = std::filesystem::temp_directory_path() / "viewer_test";
};

bool load(ViewerWindow& viewer, const std::filesystem::path& path) {
  viewer.open(path, ViewerWindow::Telling::kStatus);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (viewer.is_loading() && std::chrono::steady_clock::now() < end) pump();
  pump();
  return viewer.document().is_open() && viewer.document().path() == path;
}

DWORD open_handles() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return count;
}

TEST(ViewerWindow, LeavesNothingBehindOfAThousandFiles) {
  const Folder folder;
  const std::filesystem::path files[] = {folder.add("a.bmp", 1), folder.add("b.bmp", 4), folder.add("c.bmp", 24)};
  ViewerWindow viewer;
  ASSERT_TRUE(viewer.create(SW_SHOWNOACTIVATE));
  size_t objects = 0;
  DWORD handles = 0;
  for (int i = 0; i < 1020; ++i) {
    if (i == 20) objects = gdi_objects(), handles = open_handles();
    ASSERT_TRUE(load(viewer, files[i % 3])) << i;
  }
  EXPECT_LE(gdi_objects(), objects);
  EXPECT_LE(open_handles(), handles);
  DestroyWindow(viewer.window());
  pump();
}

TEST(ViewerWindow, SaysWhatIsWrongWithWhichFile) {
  const Folder folder;
  std::ofstream(folder.path() / "text.png") << "no picture";
  const auto failure_of = [](const std::filesystem::path& path) -> std::wstring {
    try {
      load_page({path, 1});
    } catch (const Failure& failure) {
      return failure.text();
    }
    return L"loaded";
  };
  EXPECT_EQ(failure_of(folder.path() / "gone.tif").find(L"\"gone.tif\" is not found"), 0u);
  EXPECT_EQ(failure_of(folder.path() / "text.png").find(L"\"text.png\" cannot be loaded: "), 0u);
}

}  // namespace
