// The viewer's window: printing, operations, pages and the clipboard.
#include <algorithm>
#include <fstream>
#include <utility>

#include "viewer/batch_dialog.h"
#include "viewer/clipboard.h"
#include "viewer/failure.h"
#include "viewer/file_dialogs.h"
#include "viewer/info.h"
#include "viewer/logic/step_text.h"
#include "viewer/operation_preview.h"
#include "viewer/print_dialog.h"
#include "viewer/print_preview.h"
#include "viewer/viewer_window.h"

namespace vorel::viewer {
namespace fs = std::filesystem;

// ---- Printing ----

void ViewerWindow::print() {
  DocumentPages pages(document_, loader_);
  const std::vector<int> chosen = ask_how_to_print(window_, pages, print_settings_);
  if (chosen.empty()) return;
  const int sheets = print_pages(window_, print_settings_, pages, chosen);
  tell(L"Printed " + counted(sheets, L" sheet") + L" on " + print_settings_.printer.name());
}

void ViewerWindow::preview() {
  DocumentPages pages(document_, loader_);
  if (show_preview(window_, pages, print_settings_) == PreviewEnd::kPrint) print();
}

// Another default printer is the one to print on next.
void ViewerWindow::set_up_printer() {
  if (PrinterSetup(window_) != 0) print_settings_.printer = {};
}

// ---- Editing ----

// A step that leaves the page as it is, is no change: there is nothing to undo or to save.
void ViewerWindow::change(SharedPicture picture, const std::string& step, const std::wstring& report) {
  if (are_equal(picture->picture, document_.picture()))
    return tell(L"Nothing changed" + (report.empty() ? L"" : L": " + report));
  canvas_.change([&](View& view) {
    document_.change(std::move(picture), step);
    view.show_changed(document_.shared());
  });
  update_thumbnails();
  tell(report);
}

void ViewerWindow::undo() { step_in_history(&Document::undo, &Document::redo); }
void ViewerWindow::redo() { step_in_history(&Document::redo, &Document::undo); }

// A step belongs to a page, which may not be the one on view. If that cannot be loaded, the step is not taken.
void ViewerWindow::step_in_history(void (Document::*step)(), void (Document::*back)()) {
  (document_.*step)();
  try {
    const int number = document_.page();
    const Document::Page& page = document_.page_at(number);
    const SharedPicture picture = page.picture ? page.picture : loader_.load(page.file).picture;
    canvas_.change([&](View& view) {
      document_.go_to(number, picture);
      view.show_changed(picture);
    });
  } catch (...) {
    (document_.*back)();
    throw;
  }
  update_thumbnails();
}

void ViewerWindow::process(size_t number) {
  const Operation& operation = operations()[number];
  if (operation.parameters.empty()) return apply(operation.step);
  Numbers& numbers = last_numbers_[number];
  OperationPreview preview(operation, document_.shared(), loader_.queue(), [this](const SharedPicture& picture) {
    canvas_.change([&](View& view) { view.show_changed(picture); });
  });
  const auto chosen = ask_for_numbers(window_, plain_name(operation.name), operation.parameters, numbers, &preview);
  restore_view();
  if (!chosen) return;
  numbers = *chosen;
  const std::string step = step_of(operation, numbers);
  if (const auto made = preview.made(numbers)) return change(made->picture, step, made->report);
  apply(step);
}

void ViewerWindow::restore_view() {
  canvas_.change([this](View& view) { view.show_changed(document_.shared()); });
}

void ViewerWindow::apply(const std::string& steps) {
  Outcome outcome = run_steps(steps, document_.picture());
  change(share(std::move(outcome.picture)), steps, outcome.report);
}

// For "vorel run" and for other pages.
void ViewerWindow::save_steps() {
  const auto path = ask_for_steps_to_save(window_);
  if (!path) return;
  std::ofstream file(*path, std::ios::binary);
  file << as_lines(document_.steps());
  if (!file.flush()) throw Failure(quoted(*path) + L" cannot be written");
  tell(L"Steps saved as " + path->filename().wstring());
}

void ViewerWindow::run_steps_of_file() {
  if (const auto path = ask_for_steps_to_open(window_)) apply(steps_of_file(*path));
}

void ViewerWindow::run_batch() { viewer::run_batch(window_, place_.parent_path()); }

void ViewerWindow::tell_facts() { show_facts(window_, document_); }

// ---- Pages ----

void ViewerWindow::change_pages(std::vector<Document::Page> pages, int current) {
  document_.change_pages(std::move(pages), current);
  document_.undo();
  redo();
}

void ViewerWindow::take_page_out() {
  std::vector<Document::Page> pages = document_.all_pages();
  pages.erase(pages.begin() + document_.page() - 1);
  change_pages(std::move(pages), std::min(document_.page(), document_.pages() - 1));
}

// Behind the page on view.
void ViewerWindow::put_pages_in() {
  const auto path = ask_for_file_to_open(window_);
  if (!path) return;
  const LoadedPage first = loader_.load({*path, 1});
  std::vector<Document::Page> pages = document_.all_pages();
  for (int page = 0; page < first.pages; ++page) pages.insert(pages.begin() + document_.page() + page, {{*path, page + 1}});
  change_pages(std::move(pages), document_.page() + 1);
}

void ViewerWindow::move_page(int way) {
  const int other = document_.page() + way;
  if (other < 1 || other > document_.pages())
    throw Failure(way < 0 ? L"This is the first page of the file" : L"This is the last page of the file");
  std::vector<Document::Page> pages = document_.all_pages();
  std::swap(pages[static_cast<size_t>(document_.page() - 1)], pages[static_cast<size_t>(other - 1)]);
  change_pages(std::move(pages), other);
}

void ViewerWindow::turn_all_pages(const char* step) {
  const HCURSOR before = SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(32514)));  // the hourglass
  std::vector<Document::Page> pages = document_.all_pages();
  for (int number = 1; number <= document_.pages(); ++number) {
    Document::Page& page = pages[static_cast<size_t>(number - 1)];
    page.picture = share(run_steps(step, picture_of(number)->picture).picture);
    page.steps = chained(page.steps, step);
  }
  SetCursor(before);
  change_pages(std::move(pages), document_.page());
}

// ---- Clipboard ----

void ViewerWindow::copy() { copy_picture(window_, document_.picture()); }

void ViewerWindow::paste() {
  if (may_lose_changes()) show_new(Document::untitled(share(paste_picture(window_))));
}

}  // namespace vorel::viewer
