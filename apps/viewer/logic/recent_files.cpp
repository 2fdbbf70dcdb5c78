#include "viewer/logic/recent_files.h"

#include <algorithm>
#include <ranges>
#include <sstream>

namespace vorel::viewer {

RecentFiles RecentFiles::parse(const std::string& utf8) {
  RecentFiles files;
  std::istringstream lines(utf8);
  std::vector<std::string> paths;
  for (std::string line; std::getline(lines, line);)
    if (!line.empty()) paths.push_back(line);
  for (const std::string& path : paths | std::views::reverse) files.add(path);
  return files;
}

std::string RecentFiles::text() const {
  std::string text;
  for (const std::string& path : paths_) text += path + "\n";
  return text;
}

void RecentFiles::add(const std::string& path) {
  remove(path);
  paths_.insert(paths_.begin(), path);
  if (paths_.size() > kMost) paths_.pop_back();
}

void RecentFiles::remove(const std::string& path) { std::erase(paths_, path); }

}  // namespace vorel::viewer
