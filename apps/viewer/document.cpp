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
  document.dib_ = std::move(loaded.dib);
  return document;
}

Document Document::untitled(Dib dib) {
  Document document;
  document.dib_ = std::move(dib);
  document.is_changed_ = true;
  return document;
}

PictureFacts Document::facts() const {
  if (!is_open()) return {};
  const BITMAPINFOHEADER header = header_of(dib_);
  return {.name = path_.empty() ? L"Untitled" : path_.filename().wstring(),
          .page = page_,
          .pages = pages_,
          .width = header.biWidth,
          .height = header.biHeight,
          .depth = header.biBitCount,
          .changed = is_changed_};
}

void Document::change(Dib dib) {
  undo_ = std::exchange(dib_, std::move(dib));
  is_changed_ = true;
}

void Document::undo() {
  std::swap(dib_, undo_);
  is_changed_ = true;
}

void Document::save_as(const std::filesystem::path& path, const Format& format) {
  save_picture(path, dib_, format);
  path_ = path;
  page_ = pages_ = 1;
  is_changed_ = false;
}

}  // namespace vorel::viewer
