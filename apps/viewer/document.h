// What is open: the pages of a file or a picture that is in no file, with their changes.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "viewer/logic/history.h"
#include "viewer/logic/texts.h"
#include "viewer/picture_file.h"

namespace vorel::viewer {

class Document {
 public:
  // A page stays in its file until it is changed.
  struct Page {
    PagePlace file;
    SharedPicture picture = nullptr;  // of a changed page; null for one as it is in the file
    std::string steps = {};           // that changed it, as the command line tool takes them
    bool operator==(const Page&) const = default;
  };

  Document() = default;  // none
  static Document of_file(const std::filesystem::path& path, int pages);
  static Document untitled(SharedPicture picture);

  bool is_open() const { return shown_ != nullptr; }
  bool is_changed() const { return is_open() && !history_.is_saved(); }
  bool can_undo() const { return is_open() && history_.can_undo(); }
  bool can_redo() const { return is_open() && history_.can_redo(); }
  const std::filesystem::path& path() const { return path_; }  // empty for a picture that is in no file

  // Pages count from 1. One is on view.
  int page() const { return now().current; }
  int pages() const { return static_cast<int>(now().pages.size()); }
  const Page& page_at(int number) const { return now().pages[static_cast<size_t>(number - 1)]; }
  const programs::Picture& picture() const { return shown_->picture; }
  const SharedPicture& shared() const { return shown_; }

  // For the title and the status bar; the scale is the view's to add.
  PictureFacts facts() const;

  void go_to(int number, SharedPicture picture);

  // Steps that undo() takes back. Afterwards page() is on view once go_to() brings its picture.
  void change(SharedPicture picture, const std::string& step);
  void change_pages(std::vector<Page> pages, int current);
  const std::vector<Page>& all_pages() const { return now().pages; }
  void undo() { history_.undo(); }
  void redo() { history_.redo(); }

  // The document goes by the new file from then on.
  void set_saved(const std::filesystem::path& path);
  const std::string& steps() const { return page_at(page()).steps; }

 private:
  struct State {
    std::vector<Page> pages;
    int current = 1;
  };

  const State& now() const { return history_.now(); }

  std::filesystem::path path_;
  History<State> history_;
  SharedPicture shown_;
};

}  // namespace vorel::viewer
