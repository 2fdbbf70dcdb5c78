#include "viewer/document.h"

#include <cstdlib>
#include <utility>

#include "viewer/picture.h"
#include "viewer/picture_file.h"

namespace vorel::viewer {

Document Document::from_file(const std::filesystem::path& path, int page) {
  LoadedPage loaded = load_page(path, page);
  Document document;
  document.path_ = std::filesystem::absolute(path);
  document.page_ = page;
  document.pages_ = loaded.pages;
  document.current_.dib = std::move(loaded.dib);
  return document;
}

Document Document::untitled(Dib dib) {
  Document document;
  document.current_ = {std::move(dib), true};
  return document;
}

PictureFacts Document::facts() const {
  if (!is_open()) return {};
  const BITMAPINFOHEADER header = header_of(current_.dib);
  return {.name = path_.empty() ? L"Untitled" : path_.filename().wstring(),
          .page = page_,
          .pages = pages_,
          .width = header.biWidth,
          .height = header.biHeight,
          .depth = header.biBitCount,
          .changed = current_.is_changed};
}

void Document::change(Dib dib) { previous_ = std::exchange(current_, Version{std::move(dib), true}); }

void Document::undo() { std::swap(current_, previous_); }

void Document::save_as(const std::filesystem::path& path, const Format& format) {
  save_picture(path, current_.dib, format);
  path_ = path;
  page_ = pages_ = 1;
  current_.is_changed = false;
  previous_.is_changed = true;
}

}  // namespace vorel::viewer
