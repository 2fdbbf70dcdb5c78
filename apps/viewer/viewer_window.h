// The viewer's window: title, menu, the canvas with the picture, and a status bar.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "viewer/canvas.h"
#include "viewer/document.h"
#include "viewer/operations.h"
#include "viewer/printing.h"
#include "viewer/system.h"

namespace vorel::viewer {

class ViewerWindow {
 public:
  bool create(int show);
  HWND window() const { return window_; }
  HACCEL accelerators() const { return accelerators_; }

  // What the commands do. Reasons why something is not done come up as Failure, which `attempt` tells in the status bar.
  void attempt(const std::function<void()>& action);
  void ask_and_open();
  void open(const std::filesystem::path& path);
  void open_neighbour(int step);
  void load_again();
  void go_to_page(int page);
  void save_as();
  void print();
  void preview();
  void set_up_printer();
  void paste();
  void copy();
  void undo();
  void process(size_t operation);
  void close();
  void explain_mouse();
  void tell_about();

  const Document& document() const { return document_; }
  Canvas& canvas() { return canvas_; }
  const Canvas& canvas() const { return canvas_; }

  void attach(HWND window) { window_ = window; }
  LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  bool create_parts();
  void lay_out();
  void run_command(WORD id);
  void show_command_states(HMENU menu) const;
  void take_dropped(HDROP drop);
  void follow_dpi(const RECT& suggested);

  enum class Beginning { kFirst, kNext };
  void show(Document document, Beginning beginning);
  void change(programs::Picture picture);
  void keep_pages(const std::filesystem::path& target) const;
  bool may_lose_changes();
  void update_facts();
  void tell(const std::wstring& text);

  HWND window_ = nullptr;
  HWND status_ = nullptr;
  HACCEL accelerators_ = nullptr;
  Canvas canvas_;
  Document document_;
  std::filesystem::path place_;        // the file that was tried last, from where neighbours are looked for
  std::vector<Numbers> last_numbers_;  // of each operation
  PrintSettings print_settings_;
};

}  // namespace vorel::viewer
