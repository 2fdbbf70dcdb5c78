// The picture that is open: where it comes from, and the one before the last change.
#pragma once

#include <filesystem>

#include "common/picture.h"
#include "core/file_formats.h"
#include "viewer/logic/texts.h"

namespace vorel::viewer {

class Document {
 public:
  Document() = default;  // none

  // Throws Failure.
  static Document from_file(const std::filesystem::path& path, int page);
  // A picture that is in no file yet.
  static Document untitled(programs::Picture picture);

  bool is_open() const { return static_cast<bool>(current_.picture); }
  bool is_changed() const { return current_.is_changed; }
  bool can_undo() const { return static_cast<bool>(previous_.picture); }
  const programs::Picture& picture() const { return current_.picture; }
  const std::filesystem::path& path() const { return path_; }  // empty for a picture that is in no file
  int page() const { return page_; }
  int pages() const { return pages_; }

  // For the title and the status bar; the scale is the view's to add.
  PictureFacts facts() const;

  // Another picture takes the place of this one, which undo brings back; undone, a change can be undone again.
  void change(programs::Picture picture);
  void undo();

  // Throws Failure. The document goes by the new file from then on.
  void save_as(const std::filesystem::path& path, const FileFormat& format);

 private:
  struct Version {
    programs::Picture picture;
    bool is_changed = false;  // since it was loaded or saved
  };

  std::filesystem::path path_;
  int page_ = 1, pages_ = 1;
  Version current_, previous_;
};

}  // namespace vorel::viewer
