// The viewer's window: loading, files, pages, slide show and thumbnails.
#include <algorithm>
#include <utility>

#include "viewer/failure.h"
#include "viewer/file_dialogs.h"
#include "viewer/logic/neighbours.h"
#include "viewer/settings.h"
#include "viewer/viewer_window.h"

namespace vorel::viewer {
namespace fs = std::filesystem;
namespace {

constexpr UINT_PTR kSlideTimer = 1;
constexpr UINT kSlideMilliseconds = 4000;

// By the system itself: the runtime's search takes no long paths.
std::vector<std::wstring> picture_names_in(const fs::path& folder) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW((folder / L"*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    const bool is_folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!is_folder && format_by_name(found.cFileName) != nullptr) names.emplace_back(found.cFileName);
  } while (FindNextFileW(search, &found));
  FindClose(search);
  return names;
}

// The picture before or behind another in its folder.
std::optional<fs::path> neighbour_of(const fs::path& path, View::Way way) {
  const auto name =
      neighbour(picture_names_in(path.parent_path()), path.filename().wstring(), way == View::Way::kOn ? 1 : -1);
  return name ? std::optional(path.parent_path() / *name) : std::nullopt;
}

}  // namespace

// ---- Loading ----

// Shows a page at once if it is there; else the window goes on while it loads.
void ViewerWindow::fetch(const PagePlace& place, const Landing& landing) {
  if (const auto ready = loader_.ready(place)) {
    loader_.stop();
    return land(place, *ready, landing);
  }
  landing_ = landing;
  loader_.want(place);
  tell_loading();
}

void ViewerWindow::tell_loading() { tell(L"Loading " + quoted(loader_.wanted()->path) + L"; Esc stops it"); }

void ViewerWindow::stop_loading() {
  const fs::path path = loader_.wanted()->path;
  loader_.stop();
  if (document_.is_open() && !document_.path().empty()) place_ = document_.path();
  update_thumbnails();
  tell(L"Loading of " + quoted(path) + L" was stopped");
}

void ViewerWindow::take_arrival() {
  const auto arrival = loader_.collect();
  if (!arrival) return;
  if (arrival->page.picture) return land(arrival->place, arrival->page, landing_);
  if (has_slide_show_) start_slide_timer();
  complain(arrival->failure, landing_.telling);
}

void ViewerWindow::land(const PagePlace& place, const LoadedPage& loaded, const Landing& landing) {
  tell(L"");
  if (landing.kind == Landing::Kind::kPage) {
    canvas_.change([&](View& view) {
      document_.go_to(landing.page, loaded.picture);
      view.show_next(document_.shared());
      if (landing.from == View::Way::kBack) view.scroll_to_end(View::Way::kOn);
    });
  } else {
    Document document = Document::of_file(place.path, loaded.pages);
    document.go_to(loaded.number(place), loaded.picture);
    const bool starts_anew = landing.kind == Landing::Kind::kNewFile && !has_slide_show_;
    canvas_.change([&](View& view) {
      document_ = std::move(document);
      starts_anew ? view.show_first(document_.shared()) : view.show_next(document_.shared());
      if (landing.from == View::Way::kBack) view.scroll_to_end(View::Way::kOn);
    });
    if (landing.telling == Telling::kBox) remember(place.path);
  }
  update_thumbnails();
  read_ahead(landing);
  if (has_slide_show_) start_slide_timer();
}

// What was asked for by name, rather than passed by.
void ViewerWindow::remember(const fs::path& path) {
  recent_files_.add(narrowed(path));
  save_recent_files(recent_files_);
}

// The pages beside this one, and the next file on the way: its last page for those who read backwards.
void ViewerWindow::read_ahead(const Landing& landing) {
  std::vector<PagePlace> places;
  for (const int page : {document_.page() + 1, document_.page() - 1})
    if (page >= 1 && page <= document_.pages() && !document_.page_at(page).picture)
      places.push_back(document_.page_at(page).file);
  const bool reads_back = landing.from == View::Way::kBack;
  if (const auto next = neighbour_of(place_, reads_back ? View::Way::kBack : last_way_))
    places.push_back({*next, reads_back ? PagePlace::kLast : 1});
  loader_.read_ahead(places);
}

// ---- Files ----

void ViewerWindow::open(const fs::path& path, Telling telling) { open_page({path, 1}, {.telling = telling}); }

void ViewerWindow::open_page(const PagePlace& place, const Landing& landing) {
  if (!may_lose_changes()) return update_thumbnails();
  place_ = fs::absolute(place.path);
  fetch({place_, place.page}, landing);
}

void ViewerWindow::ask_and_open() {
  if (const auto path = ask_for_file_to_open(window_)) open(*path, Telling::kBox);
}

// A file that is gone leaves the list.
void ViewerWindow::open_recent(size_t number) {
  const std::string path = recent_files_.paths()[number];
  std::error_code ignored;
  if (!fs::exists(widened(path), ignored)) {
    recent_files_.remove(path);
    save_recent_files(recent_files_);
    throw Failure(L"\"" + widened(path) + L"\" is not found");
  }
  open(widened(path), Telling::kBox);
}

// A file that cannot be loaded does not stand in the way of those beyond it.
void ViewerWindow::open_neighbour(View::Way way) { open_neighbour(way, 1, View::Way::kOn); }

//   from  where reading goes on in it: kBack at its end
void ViewerWindow::open_neighbour(View::Way way, int page, View::Way from) {
  last_way_ = way;
  const auto next = neighbour_of(place_, way);
  if (!next)
    throw Failure(way == View::Way::kOn ? L"This is the last picture of the folder"
                                        : L"This is the first picture of the folder");
  open_page({*next, page}, {.from = from});
}

void ViewerWindow::load_again() {
  if (!may_lose_changes()) return;
  const PagePlace place = {document_.path(), document_.page()};
  loader_.forget(place);
  fetch(place, {.kind = Landing::Kind::kSameFile, .page = place.page});
}

// The recycle bin keeps what the system can keep there.
void ViewerWindow::delete_file() {
  const fs::path path = document_.path();
  if (!confirms(L"Delete " + quoted(path) + L"?")) return;
  auto next = neighbour_of(path, View::Way::kOn);
  if (!next) next = neighbour_of(path, View::Way::kBack);
  const std::wstring list = path.wstring() + std::wstring(2, L'\0');
  SHFILEOPSTRUCTW deletion{};
  deletion.wFunc = FO_DELETE;
  deletion.pFrom = list.c_str();
  deletion.fFlags = FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI;
  std::error_code ignored;
  if (SHFileOperationW(&deletion) != 0 || fs::exists(path, ignored))
    throw Failure(quoted(path) + L" cannot be deleted: it is in use, or protected");
  recent_files_.remove(narrowed(path));
  save_recent_files(recent_files_);
  show_new({});
  if (next) open(*next, Telling::kStatus);
}

void ViewerWindow::save_as() {
  const fs::path offered = document_.path().empty() ? fs::path(L"Untitled.bmp") : document_.path();
  const auto choice = ask_for_file_to_save(window_, offered);
  if (!choice) return;
  keep_pages(choice->path, *choice->format);
  const bool holds_all = choice->format->holds_pages || document_.pages() == 1;
  if (holds_all) {
    save_pages(choice->path, *choice->format, document_.pages(), [this](int page) { return picture_of(page); });
    document_.set_saved(choice->path);
  } else {
    save_pages(choice->path, *choice->format, 1, [this](int) { return document_.shared(); });
  }
  if (holds_all) place_ = choice->path;
  update_facts();
  update_thumbnails();
  tell((holds_all ? L"Saved as " : L"The page on view was saved as ") + choice->path.filename().wstring());
}

// One page would take the place of all.
void ViewerWindow::keep_pages(const fs::path& target, const FileFormat& format) const {
  std::error_code ignored;
  if (document_.pages() == 1 || format.holds_pages || !fs::equivalent(target, document_.path(), ignored)) return;
  throw Failure(L"The file has " + std::to_wstring(document_.pages()) +
                L" pages, and this one would replace them: choose another name");
}

bool ViewerWindow::may_lose_changes() {
  return !document_.is_changed() || confirms(L"The picture has changed since it was saved. Go on without saving it?");
}

void ViewerWindow::close() {
  if (may_lose_changes()) DestroyWindow(window_);
}

// A picture that is in no file, or none.
void ViewerWindow::show_new(Document document) {
  loader_.stop();
  canvas_.change([&](View& view) {
    document_ = std::move(document);
    view.show_first(document_.shared());
  });
  update_thumbnails();
}

// ---- Pages and screens ----

void ViewerWindow::go_to_page(int page, View::Way from) {
  const Document::Page& wanted = document_.page_at(page);
  const Landing landing = {.kind = Landing::Kind::kPage, .page = page, .from = from};
  if (!wanted.picture) return fetch(wanted.file, landing);
  loader_.stop();
  land(wanted.file, {wanted.picture, document_.pages()}, landing);
}

// A file of one page is read by screens.
void ViewerWindow::go_by_page(View::Way way) {
  if (document_.pages() == 1) return static_cast<void>(canvas_.scroll_by_screen(way));
  const int page = document_.page() + (way == View::Way::kOn ? 1 : -1);
  if (page < 1 || page > document_.pages())
    throw Failure(page < 1 ? L"This is the first page of the file" : L"This is the last page of the file");
  go_to_page(page);
}

void ViewerWindow::go_to_end(View::Way way) {
  if (document_.pages() == 1) return canvas_.scroll_to_end(way);
  go_to_page(way == View::Way::kOn ? document_.pages() : 1);
}

void ViewerWindow::ask_for_page() {
  const Parameter page = {L"&Page", 1, document_.pages(), 1};
  const auto number = ask_for_numbers(window_, L"Go to page", {&page, 1}, {document_.page()});
  if (number) go_to_page((*number)[0]);
}

// To the next page or the next file. False at the end.
bool ViewerWindow::advance(View::Way way) {
  const int step = way == View::Way::kOn ? 1 : -1;
  const int page = document_.is_open() ? document_.page() + step : 0;
  if (page >= 1 && page <= document_.pages()) return go_to_page(page, way), true;
  if (!neighbour_of(place_, way)) return false;
  return open_neighbour(way, way == View::Way::kBack ? PagePlace::kLast : 1, way), true;
}

void ViewerWindow::go_by_screen(View::Way way) {
  if (is_loading() || canvas_.scroll_by_screen(way)) return;
  if (!advance(way))
    throw Failure(way == View::Way::kOn ? L"This is the end of the folder" : L"This is the beginning of the folder");
}

// ---- Slide show ----

void ViewerWindow::toggle_slide_show() {
  if (has_slide_show_) return end_slide_show();
  has_slide_show_ = true;
  was_full_screen_ = is_full_screen();
  if (!was_full_screen_) toggle_full_screen();
  canvas_.change([](View& view) { view.set_sizing(Sizing::kFit); });
  start_slide_timer();
}

void ViewerWindow::start_slide_timer() { SetTimer(window_, kSlideTimer, kSlideMilliseconds, nullptr); }

// After the last picture of the folder comes the first.
void ViewerWindow::show_next_slide() {
  if (is_loading()) return;
  if (document_.is_changed()) return end_slide_show();
  if (advance(View::Way::kOn)) return;
  const auto names = in_order(picture_names_in(place_.parent_path()));
  if (!names.empty()) open(place_.parent_path() / names.front(), Telling::kStatus);
}

void ViewerWindow::end_slide_show() {
  KillTimer(window_, kSlideTimer);
  has_slide_show_ = false;
  if (!was_full_screen_ && is_full_screen()) toggle_full_screen();
}

// ---- Thumbnails ----

void ViewerWindow::toggle_thumbnails(Thumbnails thumbnails) {
  thumbnails_ = thumbnails_ == thumbnails ? Thumbnails::kNone : thumbnails;
  update_thumbnails();
  lay_out();
  if (thumbnails_ == Thumbnails::kNone) SetFocus(canvas_.window());
}

void ViewerWindow::switch_focus() { SetFocus(GetFocus() == side_bar_.window() ? canvas_.window() : side_bar_.window()); }

void ViewerWindow::update_thumbnails() {
  std::vector<SideBar::Item> items;
  int current = -1;
  if (thumbnails_ == Thumbnails::kPages && document_.is_open()) {
    for (int page = 1; page <= document_.pages(); ++page)
      items.push_back({document_.page_at(page).file, std::to_wstring(page), document_.page_at(page).picture});
    current = document_.page() - 1;
  } else if (thumbnails_ == Thumbnails::kFolder && has_place()) {
    for (const std::wstring& name : in_order(picture_names_in(place_.parent_path()))) {
      if (name == place_.filename().wstring()) current = static_cast<int>(items.size());
      items.push_back({{place_.parent_path() / name, 1}, name, nullptr});
    }
  }
  side_bar_.show(std::move(items), current);
}

void ViewerWindow::choose_thumbnail() {
  const int chosen = side_bar_.chosen();
  if (chosen < 0) return;
  attempt([&] {
    if (thumbnails_ == Thumbnails::kPages) {
      go_to_page(chosen + 1);
    } else {
      open(fs::path(side_bar_.item(chosen).place.path), Telling::kStatus);
    }
  });
}

}  // namespace vorel::viewer
