#include "viewer/document.h"

#include <cstdlib>
#include <utility>

#include "viewer/picture_file.h"

namespace vorel::viewer {

Document Document::from_file(const std::filesystem::path& path, int page) {
  LoadedPage loaded = load_page(path, page);
  Document document;
  document.path_ = std::filesystem::absolute(path);
  document.page_ = page;
  document.pages_ = loaded.pages;
  document.current_.picture = std::move(loaded.picture);
  return document;
}

Document Document::untitled(programs::Picture picture) {
  Document document;
  document.current_ = {std::move(picture), true};
  return document;
}

PictureFacts Document::facts() const {
  if (!is_open()) return {};
  return {.name = path_.empty() ? L"Untitled" : path_.filename().wstring(),
          .page = page_,
          .pages = pages_,
          .width = current_.picture.width(),
          .height = current_.picture.height(),
          .depth = current_.picture.depth(),
          .changed = current_.is_changed};
}

void Document::change(programs::Picture picture) { previous_ = std::exchange(current_, Version{std::move(picture), true}); }

void Document::undo() { std::swap(current_, previous_); }

void Document::save_as(const std::filesystem::path& path, const FileFormat& format) {
  save_picture(path, current_.picture, format);
  path_ = path;
  page_ = pages_ = 1;
  current_.is_changed = false;
  previous_.is_changed = true;
}

}  // namespace vorel::viewer
