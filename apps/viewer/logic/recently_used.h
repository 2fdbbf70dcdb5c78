// Values that were used last, up to a number of bytes.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <utility>

namespace vorel::viewer {

template <class Key, class Value>
class RecentlyUsed {
 public:
  explicit RecentlyUsed(uint64_t most_bytes) : most_bytes_(most_bytes) {}

  bool has(const Key& key) const {
    for (const Entry& entry : entries_)
      if (entry.key == key) return true;
    return false;
  }

  std::optional<Value> find(const Key& key) {
    for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
      if (!(entry->key == key)) continue;
      entries_.splice(entries_.begin(), entries_, entry);
      return entries_.front().value;
    }
    return std::nullopt;
  }

  // Takes the place of a value under the same key. Values that were not used for longest make room; one that is too large alone
  // is not kept.
  void keep(Key key, Value value, uint64_t bytes) {
    drop(key);
    entries_.push_front({std::move(key), std::move(value), bytes});
    for (bytes_ += bytes; bytes_ > most_bytes_; entries_.pop_back()) bytes_ -= entries_.back().bytes;
  }

  void drop(const Key& key) {
    entries_.remove_if([&](const Entry& entry) {
      const bool is_meant = entry.key == key;
      if (is_meant) bytes_ -= entry.bytes;
      return is_meant;
    });
  }

 private:
  struct Entry {
    Key key;
    Value value;
    uint64_t bytes;
  };

  uint64_t most_bytes_, bytes_ = 0;
  std::list<Entry> entries_;  // last used first
};

}  // namespace vorel::viewer
