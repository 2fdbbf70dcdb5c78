#include "viewer/document.h"

#include <algorithm>
#include <utility>

#include "viewer/logic/step_text.h"

namespace vorel::viewer {

Document Document::of_file(const std::filesystem::path& path, int pages) {
  State state;
  for (int page = 1; page <= pages; ++page) state.pages.push_back({{path, page}});
  Document document;
  document.path_ = path;
  document.history_ = History(std::move(state));
  return document;
}

Document Document::untitled(SharedPicture picture) {
  Document document;
  document.history_ = History(State{{{{}, picture, {}}}, 1}, false);
  document.shown_ = std::move(picture);
  return document;
}

PictureFacts Document::facts() const {
  if (!is_open()) return {};
  const DibHeader& header = picture().header();
  return {.name = path_.empty() ? L"Untitled" : path_.filename().wstring(),
          .page = page(),
          .pages = pages(),
          .width = picture().width(),
          .height = picture().height(),
          .depth = picture().depth(),
          .x_per_metre = header.x_per_metre,
          .y_per_metre = header.y_per_metre,
          .changed = is_changed()};
}

void Document::go_to(int number, SharedPicture picture) {
  State state = now();
  state.current = number;
  history_.amend(std::move(state));
  shown_ = std::move(picture);
}

// The state before keeps the picture as it was, so that undoing needs no file that may have changed since.
void Document::change(SharedPicture picture, const std::string& step) {
  State state = now();
  Page& page = state.pages[static_cast<size_t>(state.current - 1)];
  page.picture = shown_;
  history_.amend(state);
  page.picture = picture;
  page.steps = chained(page.steps, step);
  history_.change(std::move(state));
  shown_ = std::move(picture);
}

void Document::change_pages(std::vector<Page> pages, int current) { history_.change({std::move(pages), current}); }

// States that count on pages of a file which is another one now cannot be kept.
void Document::set_saved(const std::filesystem::path& path) {
  path_ = path;
  const auto is_in_file = [&](const Page& page) {
    std::error_code ignored;
    return !page.picture && std::filesystem::equivalent(page.file.path, path, ignored);
  };
  const bool is_replaced = history_.any([&](const State& state) { return std::ranges::any_of(state.pages, is_in_file); });
  if (!is_replaced) return history_.set_saved();
  State state;
  for (int page = 1; page <= pages(); ++page) state.pages.push_back({{path, page}});
  state.current = page();
  history_ = History(std::move(state));
}

}  // namespace vorel::viewer
