#include "viewer/page_loader.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

#include "viewer/failure.h"

namespace vorel::viewer {
namespace {

constexpr uint64_t kMostKept = uint64_t{500} << 20;  // bytes, of the 2 GB that a process of 32 bits has

uint64_t bytes_of(const ShownPicture& picture) { return picture.picture.bytes().size() + picture.reductions().bytes(); }

}  // namespace

struct PageLoader::Finished {
  struct Load {
    Arrival arrival;
    FileStamp stamp;
  };
  std::function<void()> arrived;

  bool is_under_way(const PagePlace& place) {
    const std::lock_guard lock(mutex);
    return std::ranges::find(under_way, place) != under_way.end();
  }
  void begin(const PagePlace& place) {
    const std::lock_guard lock(mutex);
    under_way.push_back(place);
  }
  void end(Load load) {
    {
      const std::lock_guard lock(mutex);
      loads.push_back(std::move(load));
    }
    arrived();
  }
  std::vector<Load> take() {
    const std::lock_guard lock(mutex);
    for (const Load& load : loads) under_way.erase(std::ranges::find(under_way, load.arrival.place));
    return std::exchange(loads, {});
  }

 private:
  std::mutex mutex;
  std::vector<PagePlace> under_way;  // until it is collected
  std::vector<Load> loads;
};

PageLoader::PageLoader(std::function<void()> arrived) : finished_(std::make_shared<Finished>()), pages_(kMostKept) {
  finished_->arrived = std::move(arrived);
}

PageLoader::~PageLoader() = default;

std::optional<LoadedPage> PageLoader::ready(const PagePlace& place) {
  const auto known = pages_.find(numbered(place));
  if (known && known->stamp == stamp_of(place.path)) return known->page;
  return std::nullopt;
}

void PageLoader::want(const PagePlace& place) {
  queue_.drop(WorkQueue::Urgency::kNow);
  read_ahead({});
  wanted_ = place;
  begin(WorkQueue::Urgency::kNow, place);
}

void PageLoader::read_ahead(const std::vector<PagePlace>& places) {
  queue_.drop(WorkQueue::Urgency::kSoon);
  for (const PagePlace& place : places)
    if (!ready(place)) begin(WorkQueue::Urgency::kSoon, place);
}

// Nothing may be thrown on the other thread.
void PageLoader::begin(WorkQueue::Urgency urgency, const PagePlace& place) {
  if (finished_->is_under_way(place)) return;
  queue_.add(urgency, [place, finished = finished_] {
    finished->begin(place);
    Finished::Load load{{place, {}, {}}, stamp_of(place.path)};
    try {
      load.arrival.page = load_page(place);
      load.arrival.page.picture->reductions();  // here rather than when the window waits
    } catch (const Failure& failure) {
      load.arrival.failure = failure.text();
    } catch (const std::bad_alloc&) {
      load.arrival.failure = quoted(place.path) + L" cannot be loaded: there is not enough memory";
    } catch (const std::exception&) {
      load.arrival.failure = quoted(place.path) + L" cannot be loaded: the system does not take this path";
    }
    finished->end(std::move(load));
  });
}

std::optional<PageLoader::Arrival> PageLoader::collect() {
  std::optional<Arrival> result;
  for (Finished::Load& load : finished_->take()) {
    if (load.arrival.page.picture) keep(load.arrival.place, load.arrival.page, load.stamp);
    if (wanted_ != load.arrival.place) continue;
    wanted_.reset();
    result = std::move(load.arrival);
  }
  return result;
}

void PageLoader::keep(const PagePlace& place, const LoadedPage& page, const FileStamp& stamp) {
  if (place.page == PagePlace::kLast) page_counts_[place.path] = page.pages;
  pages_.keep({place.path, page.number(place)}, {page, stamp}, bytes_of(*page.picture));
}

PagePlace PageLoader::numbered(const PagePlace& place) const {
  const auto known = page_counts_.find(place.path);
  return place.page == PagePlace::kLast && known != page_counts_.end() ? PagePlace{place.path, known->second} : place;
}

LoadedPage PageLoader::load(const PagePlace& place) {
  if (auto page = ready(place)) return *page;
  const FileStamp stamp = stamp_of(place.path);
  LoadedPage page = load_page(place);
  keep(place, page, stamp);
  return page;
}

void PageLoader::forget(const PagePlace& place) { pages_.drop(place); }

}  // namespace vorel::viewer
