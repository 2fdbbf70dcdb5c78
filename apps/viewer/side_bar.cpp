#include "viewer/side_bar.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <utility>

#include "common/picture_file.h"
#include "viewer/dpi.h"
#include "viewer/failure.h"
#include "viewer/gdi.h"
#include "viewer/usable_file.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

constexpr uint64_t kMostKept = uint64_t{32} << 20;    // bytes of thumbnails
constexpr uint64_t kMostPixels = uint64_t{64} << 20;  // of pictures that are loaded for a thumbnail

// Of the list and of what is in it, at the usual resolution.
constexpr int kListWidth = 170, kItemHeight = 132, kPictureWidth = 140, kPictureHeight = 104, kNameHeight = 18;

Size fitted(const programs::Picture& picture, Size room) {
  const double scale = std::min(
      {1.0, room.width / static_cast<double>(picture.width()), room.height / static_cast<double>(picture.height())});
  return {std::max(1, static_cast<int>(picture.width() * scale)), std::max(1, static_cast<int>(picture.height() * scale))};
}

}  // namespace

// Rows of 32-bit pixels from the top; none for what cannot be loaded.
struct SideBar::Thumbnail {
  Size size;
  std::vector<uint32_t> pixels;
  FileStamp stamp = {};  // of the file before it was read

  static Thumbnail of(const ShownPicture& shown, Size room) {
    Thumbnail result{fitted(shown.picture, room), {}};
    result.pixels.resize(static_cast<size_t>(result.size.width) * static_cast<size_t>(result.size.height));
    shown.reductions().draw(result.size, {0, 0, result.size.width, result.size.height}, result.pixels);
    return result;
  }

  static Thumbnail of(const PagePlace& place, Size room) {
    Thumbnail result{{}, {}, stamp_of(place.path)};
    try {
      const UsableFile usable(place.path);
      const DibHeader header = programs::PictureFile(usable.path()).header(place.page);
      if (programs::row_count(header) * static_cast<uint64_t>(std::max(header.width, 0)) > kMostPixels) return result;
      Thumbnail made = of(*load_page(place).picture, room);
      made.stamp = result.stamp;
      return made;
    } catch (const std::exception&) {
      return result;
    }
  }
};

struct SideBar::Finished {
  std::function<void()> arrived;

  void add(const PagePlace& place, Thumbnail thumbnail) {
    {
      const std::lock_guard lock(mutex);
      made.emplace_back(place, std::make_shared<const Thumbnail>(std::move(thumbnail)));
    }
    arrived();
  }
  auto take() {
    const std::lock_guard lock(mutex);
    return std::exchange(made, {});
  }

 private:
  std::mutex mutex;
  std::vector<std::pair<PagePlace, SharedThumbnail>> made;
};

SideBar::SideBar(WorkQueue& queue, std::function<void()> arrived)
    : queue_(queue), finished_(std::make_shared<Finished>()), thumbnails_(kMostKept) {
  finished_->arrived = std::move(arrived);
}

bool SideBar::create(HWND parent, WORD id) {
  constexpr DWORD kStyle = WS_CHILD | WS_VSCROLL | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT;
  window_ = CreateWindowExW(0, L"LISTBOX", L"Thumbnails", kStyle, 0, 0, 0, 0, parent,
                            reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), this_program(), nullptr);
  if (window_ == nullptr) return false;
  follow_dpi();
  return true;
}

int SideBar::width() const { return scaled_for(window_, kListWidth); }

Size SideBar::room() const { return {scaled_for(window_, kPictureWidth), scaled_for(window_, kPictureHeight)}; }

void SideBar::follow_dpi() {
  OwnedFont font = text_font_for(window_);
  SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), FALSE);
  font_ = std::move(font);
  SendMessageW(window_, LB_SETITEMHEIGHT, 0, scaled_for(window_, kItemHeight));
  thumbnails_ = RecentlyUsed<PagePlace, SharedThumbnail>(kMostKept);
  requested_.clear();
}

int SideBar::chosen() const { return static_cast<int>(SendMessageW(window_, LB_GETCURSEL, 0, 0)); }

void SideBar::show(std::vector<Item> items, int current) {
  const bool are_others = items != items_;
  if (are_others) {
    queue_.drop(WorkQueue::Urgency::kSometime);
    requested_.clear();
    items_ = std::move(items);
    SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
    SendMessageW(window_, LB_RESETCONTENT, 0, 0);
    for (const Item& item : items_) SendMessageW(window_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item.name.c_str()));
    SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
  }
  InvalidateRect(window_, nullptr, are_others);
  if (chosen() != current) SendMessageW(window_, LB_SETCURSEL, static_cast<WPARAM>(current), 0);
}

// Asks for one that is not there yet. That of a file which was written since serves until the new one is made.
SideBar::SharedThumbnail SideBar::thumbnail_of(const Item& item) {
  if (item.picture) return std::make_shared<const Thumbnail>(Thumbnail::of(*item.picture, room()));
  const auto known = thumbnails_.find(item.place);
  if (known && (*known)->stamp == stamp_of(item.place.path)) return *known;
  if (std::ranges::find(requested_, item.place) == requested_.end()) {
    requested_.push_back(item.place);
    queue_.add(WorkQueue::Urgency::kSometime, [place = item.place, room = room(), finished = finished_] {
      finished->add(place, Thumbnail::of(place, room));
    });
  }
  return known.value_or(nullptr);
}

void SideBar::collect() {
  for (auto& [place, thumbnail] : finished_->take()) {
    std::erase(requested_, place);
    thumbnails_.keep(place, thumbnail, sizeof(Thumbnail) + thumbnail->pixels.size() * sizeof(uint32_t));
  }
  InvalidateRect(window_, nullptr, FALSE);
}

void SideBar::draw(const DRAWITEMSTRUCT& drawn) {
  if (drawn.itemID >= items_.size()) return;
  const Item& item = items_[drawn.itemID];
  const bool is_chosen = (drawn.itemState & ODS_SELECTED) != 0;
  FillRect(drawn.hDC, &drawn.rcItem, GetSysColorBrush(is_chosen ? COLOR_HIGHLIGHT : COLOR_WINDOW));
  SetBkMode(drawn.hDC, TRANSPARENT);
  SetTextColor(drawn.hDC, GetSysColor(is_chosen ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
  RECT text = drawn.rcItem;
  text.top = text.bottom - scaled_for(window_, kNameHeight);
  DrawTextW(drawn.hDC, item.name.c_str(), -1, &text, DT_CENTER | DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
  const SharedThumbnail thumbnail = thumbnail_of(item);
  if (thumbnail && !thumbnail->pixels.empty()) {
    const POINT corner = {(drawn.rcItem.left + drawn.rcItem.right - thumbnail->size.width) / 2,
                          (drawn.rcItem.top + text.top - thumbnail->size.height) / 2};
    put_pixels(drawn.hDC, corner, thumbnail->size, thumbnail->pixels);
  }
  if (drawn.itemState & ODS_FOCUS) DrawFocusRect(drawn.hDC, &drawn.rcItem);
}

}  // namespace vorel::viewer
