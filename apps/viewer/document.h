// The picture that is open: where it comes from, and the one before the last change.
#pragma once

#include <filesystem>

#include "common/dib.h"
#include "common/formats.h"
#include "viewer/logic/texts.h"

namespace vorel::viewer {

class Document {
 public:
  Document() = default;  // none

  // Throws Failure.
  static Document from_file(const std::filesystem::path& path, int page);
  // A picture that is in no file yet.
  static Document untitled(Dib dib);

  bool is_open() const { return current_.dib != nullptr; }
  bool is_changed() const { return current_.is_changed; }
  bool can_undo() const { return previous_.dib != nullptr; }
  const Dib& dib() const { return current_.dib; }
  const std::filesystem::path& path() const { return path_; }  // empty for a picture that is in no file
  int page() const { return page_; }
  int pages() const { return pages_; }

  // For the title and the status bar; the scale is the view's to add.
  PictureFacts facts() const;

  // Another picture takes the place of this one, which undo brings back; undone, a change can be undone again.
  void change(Dib dib);
  void undo();

  // Throws Failure. The document goes by the new file from then on.
  void save_as(const std::filesystem::path& path, const Format& format);

 private:
  struct Version {
    Dib dib;
    bool is_changed = false;  // since it was loaded or saved
  };

  std::filesystem::path path_;
  int page_ = 1, pages_ = 1;
  Version current_, previous_;
};

}  // namespace vorel::viewer
