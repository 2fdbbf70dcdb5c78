// Thumbnails beside the picture, as a list to choose from.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "viewer/gdi.h"
#include "viewer/logic/recently_used.h"
#include "viewer/logic/work_queue.h"
#include "viewer/picture_file.h"

namespace vorel::viewer {

class SideBar {
 public:
  // A page of a file or, with a picture, what it has become.
  struct Item {
    PagePlace place;
    std::wstring name;
    SharedPicture picture;
    bool operator==(const Item&) const = default;
  };

  // `arrived` is called on another thread when collect() has something to show. The queue must outlive the thumbnails' making.
  SideBar(WorkQueue& queue, std::function<void()> arrived);

  bool create(HWND parent, WORD id);
  HWND window() const { return window_; }
  int width() const;  // for the monitor that it is on

  void show(std::vector<Item> items, int current);
  int chosen() const;  // counted from 0; negative for none
  const Item& item(int number) const { return items_[static_cast<size_t>(number)]; }

  // Of the owner's messages.
  void draw(const DRAWITEMSTRUCT& drawn);
  void collect();
  void follow_dpi();

 private:
  struct Thumbnail;
  struct Finished;
  using SharedThumbnail = std::shared_ptr<const Thumbnail>;

  Size room() const;  // for a picture
  SharedThumbnail thumbnail_of(const Item& item);

  WorkQueue& queue_;
  std::shared_ptr<Finished> finished_;
  HWND window_ = nullptr;
  OwnedFont font_;
  std::vector<Item> items_;
  std::vector<PagePlace> requested_;
  RecentlyUsed<PagePlace, SharedThumbnail> thumbnails_;
};

}  // namespace vorel::viewer
