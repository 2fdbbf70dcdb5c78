// Loads pages on other threads, ahead of being asked for where possible.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "viewer/logic/recently_used.h"
#include "viewer/logic/work_queue.h"
#include "viewer/picture_file.h"

namespace vorel::viewer {

class PageLoader {
 public:
  // A loaded page, or the reason why there is no picture.
  struct Arrival {
    PagePlace place;
    LoadedPage page;
    std::wstring failure;
  };

  // `arrived` is called on another thread when collect() has something to look at.
  explicit PageLoader(std::function<void()> arrived);
  ~PageLoader();

  // A page in memory, unless its file was written since.
  std::optional<LoadedPage> ready(const PagePlace& place);

  // Starts loading a page that replaces the one wanted before. Loading cannot be interrupted, but nothing waits for its end.
  void want(const PagePlace& place);
  void stop() { wanted_.reset(); }
  const std::optional<PagePlace>& wanted() const { return wanted_; }

  // Pages to load in advance, instead of the ones named before. Failures are ignored.
  void read_ahead(const std::vector<PagePlace>& places);

  // The wanted page, once loaded. Stores the other loaded pages.
  std::optional<Arrival> collect();

  // Loads while the caller waits. Throws Failure.
  LoadedPage load(const PagePlace& place);

  void forget(const PagePlace& place);

  WorkQueue& queue() { return queue_; }

 private:
  struct Finished;  // shared with work that may outlive a request
  struct Stamped {
    LoadedPage page;
    FileStamp stamp;
  };

  void begin(WorkQueue::Urgency urgency, const PagePlace& place);  // unless it is under way
  PagePlace numbered(const PagePlace& place) const;                // the last page by its number, once that is known
  void keep(const PagePlace& place, const LoadedPage& page, const FileStamp& stamp);

  std::shared_ptr<Finished> finished_;
  std::optional<PagePlace> wanted_;
  RecentlyUsed<PagePlace, Stamped> pages_;
  std::map<std::filesystem::path, int> page_counts_;  // of files whose last page was asked for
  WorkQueue queue_;                                   // ends first
};

}  // namespace vorel::viewer
