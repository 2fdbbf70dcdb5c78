// The viewer's window: title, menu, thumbnails, the canvas with the picture, and a status bar.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "viewer/canvas.h"
#include "viewer/document.h"
#include "viewer/full_screen.h"
#include "viewer/logic/recent_files.h"
#include "viewer/operations.h"
#include "viewer/page_loader.h"
#include "viewer/printing.h"
#include "viewer/side_bar.h"
#include "viewer/status_bar.h"
#include "viewer/system.h"

namespace vorel::viewer {

// What the thumbnails beside the picture are of.
enum class Thumbnails { kNone, kPages, kFolder };

class ViewerWindow {
 public:
  ViewerWindow();
  bool create(int show);
  HWND window() const { return window_; }
  // Whether a message was a key of a command.
  bool take_key(MSG& message);

  // What the commands do. Reasons why something is not done come up as Failure, which `attempt` tells: in the status bar or, where
  // nothing else on the screen shows that it was not done, in a box.
  enum class Telling { kStatus, kBox };
  void attempt(const std::function<void()>& action, Telling telling = Telling::kStatus);
  void ask_and_open();
  void open(const std::filesystem::path& path, Telling telling);
  void open_recent(size_t number);
  void load_again();
  void stop_loading();
  void delete_file();
  void save_as();
  void print();
  void preview();
  void set_up_printer();

  void open_neighbour(View::Way way);
  void go_by_screen(View::Way way);
  void go_by_page(View::Way way);
  void go_to_end(View::Way way);
  void ask_for_page();
  void toggle_slide_show();

  void paste();
  void copy();
  void undo();
  void redo();
  void process(size_t operation);
  void save_steps();
  void run_steps_of_file();
  void run_batch();
  void tell_facts();

  void take_page_out();
  void put_pages_in();
  void move_page(int way);
  void turn_all_pages(const char* step);

  void toggle_band_mode();
  void toggle_thumbnails(Thumbnails thumbnails);
  void switch_focus();
  void toggle_full_screen();

  void close();
  void explain_keys();
  void tell_about();

  const Document& document() const { return document_; }
  Canvas& canvas() { return canvas_; }
  const Canvas& canvas() const { return canvas_; }
  const RecentFiles& recent_files() const { return recent_files_; }
  Thumbnails thumbnails() const { return thumbnails_; }
  bool has_place() const { return !place_.empty(); }
  bool is_loading() const { return loader_.wanted().has_value(); }
  bool is_full_screen() const { return full_screen_.is_on(); }
  bool has_slide_show() const { return has_slide_show_; }

  void attach(HWND window) { window_ = window; }
  LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  bool create_parts();
  void lay_out();
  void run_command(WORD id);
  void take_dropped(HDROP drop);
  void follow_dpi(const RECT& suggested);
  void show_icons();

  // How a page that is loaded comes to be shown.
  struct Landing {
    enum class Kind { kNewFile, kPage, kSameFile } kind = Kind::kNewFile;
    int page = 1;                     // of the document, for kPage
    View::Way from = View::Way::kOn;  // kBack: at its end
    Telling telling = Telling::kStatus;
  };
  void open_page(const PagePlace& place, const Landing& landing);
  void fetch(const PagePlace& place, const Landing& landing);
  void take_arrival();
  void land(const PagePlace& place, const LoadedPage& loaded, const Landing& landing);
  void remember(const std::filesystem::path& path);
  void go_to_page(int page, View::Way from = View::Way::kOn);
  void show_new(Document document);
  void step_in_history(void (Document::*step)(), void (Document::*back)());
  void open_neighbour(View::Way way, int page, View::Way from);
  void read_ahead(const Landing& landing);
  void escape();

  bool advance(View::Way way);
  void show_next_slide();
  void end_slide_show();
  void start_slide_timer();

  void update_thumbnails();
  void choose_thumbnail();

  void apply(const std::string& steps);
  void change(SharedPicture picture, const std::string& step, const std::wstring& report);
  void restore_view();
  SharedPicture picture_of(int page) { return DocumentPages(document_, loader_).page(page); }
  void change_pages(std::vector<Document::Page> pages, int current);
  void keep_pages(const std::filesystem::path& target, const FileFormat& format) const;
  bool may_lose_changes();
  bool confirms(const std::wstring& question) const;
  void update_facts();
  void tell(const std::wstring& text);
  void tell_loading();
  void tell_pixel(std::optional<POINT> pixel);
  void complain(const std::wstring& text, Telling telling);

  HWND window_ = nullptr;
  StatusBar status_;
  HACCEL accelerators_ = nullptr;
  PageLoader loader_;
  SideBar side_bar_;
  Canvas canvas_;
  FullScreen full_screen_;
  Document document_;
  std::filesystem::path place_;          // the file that was tried last, from where neighbours are looked for
  View::Way last_way_ = View::Way::kOn;  // to the file that was tried last
  Landing landing_;                      // of the page that is loading
  RecentFiles recent_files_;
  Thumbnails thumbnails_ = Thumbnails::kNone;
  bool has_slide_show_ = false, was_full_screen_ = false;
  std::vector<Numbers> last_numbers_;  // of each operation
  PrintSettings print_settings_;
};

}  // namespace vorel::viewer
