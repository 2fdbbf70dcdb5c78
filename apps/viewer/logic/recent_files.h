// The files that were opened last.
#pragma once

#include <string>
#include <vector>

namespace vorel::viewer {

class RecentFiles {
 public:
  static constexpr size_t kMost = 9;

  // Text of a line for each file, the last opened first, as text() gives it.
  static RecentFiles parse(const std::string& utf8);
  std::string text() const;

  const std::vector<std::string>& paths() const { return paths_; }  // in UTF-8
  void add(const std::string& path);
  void remove(const std::string& path);

 private:
  std::vector<std::string> paths_;
};

}  // namespace vorel::viewer
